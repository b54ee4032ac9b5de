// Every operation of the interface with every step of it failing: its system calls, each in turn
// and in each way, and its allocations. It does its work all the same, or says no; then the files
// and the objects are as they were, but where the header says otherwise, nothing is left open,
// beside the files or on the heap, nothing is thrown, and the same objects work again.
#include <algorithm>
#include <new>
#include <optional>

#include "faults/Operations.h"
#include "support/Allocations.h"
#include "support/FolderNames.h"
#include "support/ImageBuilder.h"
#include "support/SystemCalls.h"

namespace {

using vkcl::testing::AllocationFailsAt;
using vkcl::testing::Attempt;
using vkcl::testing::Bytes;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::Faults;
using vkcl::testing::FilesLeft;
using vkcl::testing::FoldersInMemory;
using vkcl::testing::Group;
using vkcl::testing::LiveAllocations;
using vkcl::testing::NamedGroup;
using vkcl::testing::ObjectsLeft;
using vkcl::testing::OpenHandles;
using vkcl::testing::Operation;
using vkcl::testing::ReadFile;
using vkcl::testing::Shortage;
using vkcl::testing::TempDir;
using vkcl::testing::WriteFile;

namespace fs = std::filesystem;

using Files = std::map<std::string, Bytes>;

// All files below a folder. The date of a profile that was made just now is left out.
Files FilesBelow(const fs::path& folder) {
  Files files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    Bytes bytes = ReadFile(entry.path());
    constexpr std::size_t kCreator = 80;
    const bool ours = bytes.size() >= 128 &&
                      std::equal(bytes.begin() + kCreator, bytes.begin() + kCreator + 4, "QXCR");
    if (ours) std::fill_n(bytes.begin() + 24, 12, 0);
    files[entry.path().lexically_relative(folder).generic_string()] = std::move(bytes);
  }
  return files;
}

// How many failures the running test has by now.
int FailuresSoFar() {
  return ::testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count();
}

// How an operation came out.
enum class Answer { Yes, No, Threw };

Answer Run(const Attempt& attempt) {
  try {
    return attempt.run() ? Answer::Yes : Answer::No;
  } catch (const std::bad_alloc&) {
    return Answer::Threw;
  }
}

// A folder with an operation's files, as they are before it and as it makes them.
class Site {
 public:
  Site(const Group& group, const Operation& operation) : group_(group), operation_(operation) {
    group_.lay(dir_);
    before_ = FilesBelow(dir_.path());
    for (int i = 0; i < 2; ++i) {  // the first one fills what is kept for the life of the program
      Restore();
      const Attempt attempt = operation_.begin(dir_);
      EXPECT_EQ(Run(attempt), Answer::Yes) << "without any fault";
      seen_ = attempt.seen();
      after_ = FilesBelow(dir_.path());
    }
  }

  // One attempt in which `Failure`, made of `arguments`, lives while the operation runs. Whether
  // the failure was reached.
  template <class Failure, class... Arguments>
  bool Try(Faults faults, bool mustSucceed, Arguments... arguments) {
    Restore();
    const int handles = OpenHandles();
    const std::int64_t live = LiveAllocations();
    const int failures = FailuresSoFar();
    Answer answer = Answer::No;
    bool reached = false;
    {
      const Attempt attempt = operation_.begin(dir_);
      const std::string seenBefore = attempt.seen();
      const int open = OpenHandles();  // the objects may hold some
      {
        const Failure failure(arguments...);
        answer = Run(attempt);
        reached = Failure::Reached();
      }
      EXPECT_EQ(OpenHandles(), open);
      if (answer == Answer::Yes) {
        CheckDone(attempt, faults);
      } else {
        EXPECT_TRUE(reached) << "it says no without a fault";
        EXPECT_FALSE(mustSucceed) << "a transfer that can be gone on with is no failure";
        EXPECT_TRUE(answer == Answer::No || faults == Faults::Throw) << "it throws";
        CheckRefused(attempt, seenBefore);
      }
    }
    EXPECT_EQ(OpenHandles(), handles);
    // What is told of a failure stays on the heap.
    if (FailuresSoFar() == failures) {
      EXPECT_EQ(LiveAllocations(), live) << "something is left on the heap";
    }
    ++runs_;
    refusals_ += answer == Answer::Yes ? 0u : 1u;
    return reached;
  }

  std::size_t runs() const { return runs_; }
  std::size_t refusals() const { return refusals_; }

 private:
  void Restore() {
    if (FilesBelow(dir_.path()) == before_) return;
    for (const auto& entry : fs::directory_iterator(dir_.path())) fs::remove_all(entry.path());
    group_.lay(dir_);
  }

  void CheckDone(const Attempt& attempt, Faults faults) {
    if (faults != Faults::Tell) {
      EXPECT_TRUE(FilesBelow(dir_.path()) == after_) << "it says yes, and the files are others";
      EXPECT_TRUE(attempt.seen() == seen_) << "it says yes, and the objects are others";
    } else {
      ExpectOthersUntouched(FilesBelow(dir_.path()));
      static_cast<void>(attempt.seen());
    }
  }

  // Files that the operation does not write are as they were, and none has come that it does not
  // make.
  void ExpectOthersUntouched(const Files& now) const {
    for (const auto& [name, content] : before_) {
      const auto after = after_.find(name);
      const auto found = now.find(name);
      if (after == after_.end() || after->second != content) continue;
      EXPECT_TRUE(found != now.end() && found->second == content) << name;
    }
    for (const auto& [name, content] : now) EXPECT_TRUE(after_.contains(name)) << name;
  }

  void CheckRefused(const Attempt& attempt, const std::string& seenBefore) {
    const Files files = FilesBelow(dir_.path());
    EXPECT_TRUE(files == before_ || IsAllowed(files)) << "it says no, and the files are others";
    const std::string seenNow = attempt.seen();
    if (operation_.objectsLeft == ObjectsLeft::Old) {
      EXPECT_TRUE(seenNow == seenBefore) << "it says no, and the objects are others";
    }
    if (!operation_.again) return;
    if (operation_.filesLeft >= FilesLeft::OldOrGone) Restore();
    EXPECT_EQ(Run(attempt), Answer::Yes) << "the second time";
    EXPECT_TRUE(FilesBelow(dir_.path()) == after_) << "the second time";
    if (operation_.objectsLeft == ObjectsLeft::Old) {
      EXPECT_TRUE(attempt.seen() == seen_) << "the second time";
    }
  }

  bool IsAllowed(const Files& files) const {
    if (operation_.filesLeft == FilesLeft::OldOrNew) return files == after_;
    if (operation_.filesLeft == FilesLeft::Any) return true;
    if (operation_.filesLeft == FilesLeft::Old) return false;
    return std::all_of(files.begin(), files.end(), [&](const auto& file) {
      const auto found = before_.find(file.first);
      return found != before_.end() && found->second == file.second;
    });
  }

  const Group& group_;
  const Operation& operation_;
  const TempDir dir_;
  Files before_;
  Files after_;
  std::string seen_;
  std::size_t runs_ = 0;
  std::size_t refusals_ = 0;
};

class EveryOperation : public ::testing::TestWithParam<NamedGroup> {
 protected:
  // Calls `with` for each operation, at a site of its own.
  template <class WithSite>
  void ForEach(WithSite with) {
    const FoldersInMemory memory;
    const Group group = GetParam().make();
    std::size_t runs = 0;
    std::size_t refusals = 0;
    for (const Operation& operation : group.operations) {
      SCOPED_TRACE(operation.names + " " + operation.what);
      Site site(group, operation);
      with(site, operation);
      runs += site.runs();
      refusals += site.refusals();
    }
    RecordProperty("operations", static_cast<int>(group.operations.size()));
    RecordProperty("runs", static_cast<int>(runs));
    RecordProperty("refusals", static_cast<int>(refusals));
  }
};

TEST_P(EveryOperation, WithstandsSystemCallsThatFail) {
  ForEach([](Site& site, const Operation& operation) {
    const int failures = FailuresSoFar();
    for (const Fault fault :
         {Fault::Error, Fault::Short, Fault::FullDisk, Fault::Interrupted, Fault::FailedClose}) {
      const bool continued = fault == Fault::Short || fault == Fault::Interrupted;
      bool reached = true;
      for (std::size_t which = 0; reached; ++which) {
        SCOPED_TRACE(::testing::Message()
                     << "fault " << static_cast<int>(fault) << " at call " << which);
        ASSERT_LT(which, 1000u);
        const Faults faults = continued ? Faults::Refuse : operation.systemFaults;
        reached = site.Try<FaultAt>(faults, continued, which, fault);
        if (FailuresSoFar() > failures) return;
      }
    }
  });
}

TEST_P(EveryOperation, WithstandsShortageOfMemory) {
  ForEach([](Site& site, const Operation& operation) {
    const int failures = FailuresSoFar();
    for (const Shortage shortage : {Shortage::Once, Shortage::Lasting}) {
      bool reached = true;
      for (std::size_t which = 0; reached; ++which) {
        SCOPED_TRACE(::testing::Message()
                     << (shortage == Shortage::Once ? "allocation " : "allocations from ")
                     << which);
        ASSERT_LT(which, 100000u);
        reached = site.Try<AllocationFailsAt>(operation.shortages, false, which, shortage);
        if (FailuresSoFar() > failures) return;
      }
    }
  });
}

std::string NameOf(const ::testing::TestParamInfo<NamedGroup>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Faults, EveryOperation, ::testing::ValuesIn(vkcl::testing::kGroups),
                         NameOf);

}  // namespace
