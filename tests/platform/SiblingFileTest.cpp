// New files beside old ones, and what becomes of them.
#include "platform/plinth/SiblingFile.h"

#include <memory>
#include <set>
#include <thread>

#include "support/FolderNames.h"
#include "support/OtherProcess.h"
#include "support/SystemCalls.h"
#include "support/TempDir.h"

#if !defined(_WIN32)
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

using vkcl::SiblingFile;
using vkcl::testing::ActionAt;
using vkcl::testing::ActionAtLocks;
using vkcl::testing::Bytes;
using vkcl::testing::CallKind;
using vkcl::testing::CallLog;
using vkcl::testing::CurrentFolder;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::FoldersInMemory;
using vkcl::testing::Names;
using vkcl::testing::NamesIn;
using vkcl::testing::OpenHandles;
using vkcl::testing::ReadFile;
using vkcl::testing::TempDir;
using vkcl::testing::UnfinishedIn;
using vkcl::testing::WriteFile;

const Bytes kOld = {'o', 'l', 'd'};
const Bytes kNew = {'n', 'e', 'w', 'e', 'r'};

bool Fill(SiblingFile& sibling) {
  return sibling.file().write(kNew.data(), kNew.size()) == kNew.size();
}

std::filesystem::path PathOf(const SiblingFile& sibling) { return sibling.path().str(); }

TEST(SiblingFile, IsEmptyAndBesideThePlace) {
  const TempDir dir;
  const std::string place = dir.Write("f", kOld);
  SiblingFile sibling{AFilePath(place)};
  ASSERT_TRUE(sibling.exists());
  EXPECT_TRUE(sibling.isTaken());
  EXPECT_TRUE(sibling.place().isSameFile(AFilePath(place)));
  EXPECT_TRUE(sibling.file().isOpen());
  EXPECT_EQ(sibling.file().length(), 0);
  EXPECT_TRUE(std::filesystem::equivalent(PathOf(sibling).parent_path(), dir.path()));
  const std::string name = PathOf(sibling).filename().string();
  EXPECT_EQ(NamesIn(dir.path()), (Names{name, "f"}));
  EXPECT_EQ(UnfinishedIn(dir.path()), Names{name});
  EXPECT_EQ(ReadFile(place), kOld);
}

TEST(SiblingFile, TakesThePlace) {
  const TempDir dir;
  const std::string place = dir.Write("f", kOld);
  {
    SiblingFile sibling{AFilePath(place)};
    ASSERT_TRUE(Fill(sibling));
    EXPECT_EQ(ReadFile(place), kOld);
    EXPECT_TRUE(sibling.takePlace());
    EXPECT_EQ(ReadFile(place), kNew);
    EXPECT_EQ(NamesIn(dir.path()), Names{"f"});
  }
  EXPECT_EQ(ReadFile(place), kNew);
  EXPECT_EQ(NamesIn(dir.path()), Names{"f"});
}

TEST(SiblingFile, TakesThePlaceAlsoWhenItWasClosed) {
  const TempDir dir;
  const std::string place = dir.Write("f", kOld);
  SiblingFile sibling{AFilePath(place)};
  ASSERT_TRUE(Fill(sibling));
  ASSERT_TRUE(sibling.file().close());
  EXPECT_TRUE(sibling.takePlace());
  EXPECT_EQ(ReadFile(place), kNew);
  EXPECT_EQ(NamesIn(dir.path()), Names{"f"});
}

TEST(SiblingFile, ThatIsClosedAndCannotBeOpenedAgainIsNotSettled) {
  const TempDir dir;
  const std::string place = dir.Write("f", kOld);
  SiblingFile sibling{AFilePath(place)};
  ASSERT_TRUE(Fill(sibling));
  ASSERT_TRUE(sibling.file().close());
  {
    const FaultAt at(1, Fault::Error);  // behind the permissions
    EXPECT_FALSE(sibling.settle());
    EXPECT_TRUE(FaultAt::Reached());
  }
  EXPECT_EQ(ReadFile(place), kOld);
  EXPECT_TRUE(sibling.settle());
  EXPECT_TRUE(sibling.takePlace());
  EXPECT_EQ(ReadFile(place), kNew);
}

TEST(SiblingFile, GoesWithItsObject) {
  const TempDir dir;
  const std::string place = dir.Write("f", kOld);
  const int open = OpenHandles();
  for (const bool closed : {false, true}) {
    SiblingFile sibling{AFilePath(place)};
    ASSERT_TRUE(Fill(sibling));
    if (closed) sibling.file().close();
    EXPECT_EQ(NamesIn(dir.path()).size(), 2u);
  }
  EXPECT_EQ(NamesIn(dir.path()), Names{"f"});
  EXPECT_EQ(ReadFile(place), kOld);
  EXPECT_EQ(OpenHandles(), open);
}

TEST(SiblingFile, TakesAPlaceWhereNothingIs) {
  const TempDir dir;
  const std::string place = dir.File("f");
  {
    SiblingFile sibling{AFilePath(place)};
    ASSERT_TRUE(sibling.exists());
    EXPECT_FALSE(sibling.isTaken());
    EXPECT_FALSE(std::filesystem::exists(place));
  }
  EXPECT_EQ(NamesIn(dir.path()), Names{});
  SiblingFile sibling{AFilePath(place)};
  ASSERT_TRUE(Fill(sibling));
  EXPECT_TRUE(sibling.takePlace());
  EXPECT_EQ(ReadFile(place), kNew);
  EXPECT_EQ(NamesIn(dir.path()), Names{"f"});
}

TEST(SiblingFile, NeedsAPlaceForAFile) {
  const TempDir dir;
  std::filesystem::create_directory(dir.path() / "folder");
  dir.Write("f", kOld);
  for (const std::string& place :
       {dir.File("folder"), dir.File("absent/f"), dir.File("f/g"), std::string()}) {
    SCOPED_TRACE(place);
    EXPECT_FALSE(SiblingFile(AFilePath(place)).exists());
    EXPECT_EQ(NamesIn(dir.path()), (Names{"f", "folder"}));
    EXPECT_EQ(NamesIn(dir.path() / "folder"), Names{});
  }
}

TEST(SiblingFile, ManyOfOnePlaceAreDifferentFiles) {
  const FoldersInMemory memory;
  const TempDir dir;
  const AFilePath place(dir.Write("f", kOld));
  std::vector<std::unique_ptr<SiblingFile>> siblings;
  std::set<std::string> paths;
  for (int i = 0; i < 100; ++i) {
    siblings.push_back(std::make_unique<SiblingFile>(place));
    ASSERT_TRUE(siblings.back()->exists());
    paths.insert(siblings.back()->path().str());
  }
  EXPECT_EQ(paths.size(), 100u);
  EXPECT_EQ(SiblingFile::RemoveLeftovers(place), 0);
  EXPECT_EQ(NamesIn(dir.path()).size(), 101u);
  siblings.clear();
  EXPECT_EQ(NamesIn(dir.path()), Names{"f"});
}

TEST(SiblingFile, IsOnTheMediumBeforeItTakesThePlace) {
  const TempDir dir;
  SiblingFile sibling{AFilePath(dir.Write("f", kOld))};
  ASSERT_TRUE(Fill(sibling));
  const CallLog log;
  ASSERT_TRUE(sibling.takePlace());
  std::vector<CallKind> steps;
  for (const CallKind kind : log.Kinds()) {
    if (kind != CallKind::Close && kind != CallKind::Look && kind != CallKind::Length) {
      steps.push_back(kind);
    }
  }
  // Its permissions, the file, its name, the folder.
  EXPECT_EQ(steps, (std::vector<CallKind>{CallKind::Permissions, CallKind::Sync, CallKind::Rename,
                                          CallKind::Sync}));
}

TEST(SiblingFile, AFailureLeavesTheOldFileAndNothingElse) {
  const FoldersInMemory memory;
  for (const Fault fault :
       {Fault::Error, Fault::Short, Fault::FullDisk, Fault::Interrupted, Fault::FailedClose}) {
    const TempDir dir;
    const int open = OpenHandles();
    bool reached = true;
    for (std::size_t k = 0; reached; ++k) {
      SCOPED_TRACE(::testing::Message() << "fault " << static_cast<int>(fault) << " at " << k);
      ASSERT_LT(k, 100u);
      const std::string place = dir.Write("f", kOld);
      bool done = false;
      {
        const FaultAt at(k, fault);
        SiblingFile sibling{AFilePath(place)};
        done = sibling.exists() && Fill(sibling) && sibling.takePlace();
        reached = FaultAt::Reached();
      }
      EXPECT_EQ(ReadFile(place), done ? kNew : kOld);
      EXPECT_EQ(NamesIn(dir.path()), Names{"f"});
      EXPECT_EQ(OpenHandles(), open);
      if (fault == Fault::Short || fault == Fault::Interrupted || !reached) {
        EXPECT_TRUE(done);
      }
    }
  }
}

TEST(SiblingFile, ANewFileThatCannotBeNamedIsRemoved) {
  const TempDir dir;
  const std::string place = dir.Write("f", kOld);
  for (const CallKind step : {CallKind::Sync, CallKind::Rename}) {
    const auto find = [&] {
      SiblingFile sibling{AFilePath(place)};
      Fill(sibling);
      const CallLog log;
      sibling.takePlace();
      std::size_t at = 0;
      while (log.calls().at(at).kind != step) ++at;
      return at;
    };
    const std::size_t at = find();
    dir.Write("f", kOld);
    {
      SiblingFile sibling{AFilePath(place)};
      ASSERT_TRUE(Fill(sibling));
      const FaultAt fault(at, Fault::Error);
      EXPECT_FALSE(sibling.takePlace());
      EXPECT_TRUE(FaultAt::Reached());
      EXPECT_EQ(ReadFile(place), kOld);
    }
    EXPECT_EQ(ReadFile(place), kOld);
    EXPECT_EQ(NamesIn(dir.path()), Names{"f"});
  }
}

// Between its creation and its lock a new file looks like a leftover. Whoever loses it then has to
// notice, and create another one.
TEST(SiblingFile, OthersMayClearUpAtAnyMoment) {
  const FoldersInMemory memory;
  const TempDir dir;
  const AFilePath place(dir.File("f"));
  for (const bool taken : {true, false}) {
    int removed = 0;
    bool reached = true;
    for (std::size_t k = 0; reached; ++k) {
      SCOPED_TRACE(k);
      ASSERT_LT(k, 100u);
      if (taken) {
        dir.Write("f", kOld);
      } else {
        std::filesystem::remove(place.str());
      }
      const int open = OpenHandles();
      {
        const ActionAt at(k, [&] { removed += SiblingFile::RemoveLeftovers(place); });
        SiblingFile sibling{place};
        ASSERT_TRUE(sibling.exists());
        EXPECT_TRUE(std::filesystem::exists(sibling.path().str()));
        ASSERT_TRUE(Fill(sibling));
        EXPECT_TRUE(sibling.takePlace());
        reached = ActionAt::Reached();
      }
      EXPECT_EQ(ReadFile(place.str()), kNew);
      EXPECT_EQ(NamesIn(dir.path()), Names{"f"});
      EXPECT_EQ(OpenHandles(), open);
    }
    EXPECT_GE(removed, 1);
  }
}

TEST(SiblingFile, OneAtATimeHoldsThePlace) {
  const TempDir dir;
  const AFilePath place(dir.Write("f", kOld));
  SiblingFile first{place};
  SiblingFile second{place};
  ASSERT_TRUE(first.exists() && second.exists());
  EXPECT_TRUE(first.holdPlace());
  EXPECT_FALSE(second.holdPlace(std::chrono::milliseconds(5)));
  ASSERT_TRUE(Fill(first));
  ASSERT_TRUE(first.takePlace());
  // The place is that of another file now, and free, although the first object is still there.
  EXPECT_TRUE(second.holdPlace(std::chrono::milliseconds(0)));
  SiblingFile third{place};
  EXPECT_FALSE(third.holdPlace(std::chrono::milliseconds(0)));
}

// Of a file that cannot be opened for writing: some systems refuse that of a program that runs.
TEST(SiblingFile, APlaceThatIsOnlyReadIsHeldToo) {
  const TempDir dir;
  const AFilePath place(dir.Write("f", kOld));
  SiblingFile first{place};
  SiblingFile second{place};
  {
    const FaultAt at(0, Fault::Error);
    EXPECT_TRUE(first.holdPlace(std::chrono::milliseconds(0)));
    EXPECT_TRUE(FaultAt::Reached());
  }
  EXPECT_FALSE(second.holdPlace(std::chrono::milliseconds(0)));
}

TEST(SiblingFile, WithItsPlaceItHoldsNothingAnyMore) {
  const TempDir dir;
  const int open = OpenHandles();
  SiblingFile sibling{AFilePath(dir.Write("f", kOld))};
  ASSERT_TRUE(sibling.holdPlace());
  ASSERT_TRUE(Fill(sibling));
  EXPECT_GT(OpenHandles(), open);
  ASSERT_TRUE(sibling.takePlace());
  EXPECT_EQ(OpenHandles(), open);
}

TEST(SiblingFile, IsThereOrItSaysThatItIsNot) {
  const TempDir dir;
  const AFilePath place(dir.Write("f", kOld));
  bool reached = true;
  std::size_t refused = 0;
  for (std::size_t k = 0; reached; ++k) {
    ASSERT_LT(k, 50u);
    const FaultAt at(k, Fault::Error);
    const SiblingFile sibling{place};
    reached = FaultAt::Reached();
    EXPECT_EQ(sibling.exists(), UnfinishedIn(dir.path()).size() == 1) << k;
    refused += sibling.exists() ? 0u : 1u;
  }
  EXPECT_GT(refused, 2u);
  EXPECT_EQ(NamesIn(dir.path()), Names{"f"});
}

TEST(SiblingFile, ThePlaceIsFreeWhenTheNewFileIsGone) {
  const TempDir dir;
  const AFilePath place(dir.Write("f", kOld));
  {
    SiblingFile dropped{place};
    ASSERT_TRUE(dropped.holdPlace());
  }
  SiblingFile next{place};
  EXPECT_TRUE(next.holdPlace(std::chrono::milliseconds(0)));
}

TEST(SiblingFile, WhatHasBeenReplacedMeanwhileIsNotThePlace) {
  const FoldersInMemory memory;
  const TempDir dir;
  const AFilePath place(dir.Write("f", kOld));
  SiblingFile sibling{place};
  ASSERT_TRUE(sibling.exists());
  {
    // Somebody replaces the file when it has been opened and is about to be locked.
    const ActionAt at(1, [&] {
      dir.Write("g", kNew);
      std::filesystem::rename(dir.File("g"), dir.File("f"));
    });
    EXPECT_TRUE(sibling.holdPlace());
    ASSERT_TRUE(ActionAt::Reached());
  }
  SiblingFile other{place};
  EXPECT_FALSE(other.holdPlace(std::chrono::milliseconds(0)));  // it is the new one that is held
}

TEST(SiblingFile, AllThatReplaceTheFileInTurnAreWaitedForOnce) {
  const FoldersInMemory memory;
  const TempDir dir;
  const AFilePath place(dir.Write("f", kOld));
  SiblingFile sibling{place};
  ASSERT_TRUE(sibling.exists());
  int replaced = 0;
  const ActionAtLocks at([&] {
    ++replaced;
    dir.Write("g", kNew);
    std::filesystem::rename(dir.File("g"), dir.File("f"));
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  });
  EXPECT_FALSE(sibling.holdPlace(std::chrono::milliseconds(0)));
  EXPECT_EQ(replaced, 1);
  replaced = 0;
  EXPECT_FALSE(sibling.holdPlace(std::chrono::milliseconds(50)));
  EXPECT_GE(replaced, 1);
  EXPECT_LE(replaced, 5);
}

TEST(SiblingFile, APlaceThatCannotBeOpenedIsNotHeld) {
  const TempDir dir;
  const AFilePath place(dir.Write("f", kOld));
  SiblingFile sibling{place};
  ASSERT_TRUE(sibling.exists());
  std::filesystem::remove(place.str());
  EXPECT_FALSE(sibling.holdPlace());
  // Where nothing was there is nothing to hold.
  SiblingFile fresh{AFilePath(dir.File("fresh"))};
  ASSERT_TRUE(fresh.exists());
  EXPECT_TRUE(fresh.holdPlace());
}

TEST(SiblingFile, TellsTheNamesOfNewFiles) {
  const TempDir dir;
  const SiblingFile sibling{AFilePath(dir.File("f"))};
  EXPECT_TRUE(SiblingFile::IsNameOfNew(sibling.path()));
  EXPECT_TRUE(SiblingFile::IsNameOfNew(AFilePath(".vkcl-0123456789abcdef-0.new")));
  for (const char* name :
       {"", "f", ".vkcl-.new", ".vkcl-0123456789abcdef-.new", ".vkcl-0123456789abcdeg-0.new",
        "x.vkcl-0123456789abcdef-0.new", ".vkcl-0123456789abcdef-0.new/f"}) {
    EXPECT_FALSE(SiblingFile::IsNameOfNew(AFilePath(name))) << name;
  }
}

TEST(SiblingFile, ThereIsNothingToRemoveWhereNothingWasLeft) {
  const TempDir dir;
  dir.Write("f", kOld);
  EXPECT_EQ(SiblingFile::RemoveLeftovers(AFilePath(dir.File("f"))), 0);
  EXPECT_EQ(SiblingFile::RemoveLeftovers(AFilePath(dir.File("absent/f"))), 0);
  EXPECT_EQ(SiblingFile::RemoveLeftovers(AFilePath(dir.File("f/g"))), 0);
  EXPECT_EQ(NamesIn(dir.path()), Names{"f"});
}

TEST(SiblingFile, StaysAsLongAsItIsWorkedOn) {
  const TempDir dir;
  const AFilePath place(dir.Write("f", kOld));
  SiblingFile sibling{place};
  EXPECT_EQ(SiblingFile::RemoveLeftovers(place), 0);
  EXPECT_EQ(UnfinishedIn(dir.path()).size(), 1u);
  ASSERT_TRUE(Fill(sibling));
  EXPECT_EQ(SiblingFile::RemoveLeftovers(place), 0);
  EXPECT_TRUE(sibling.takePlace());
  EXPECT_EQ(ReadFile(dir.File("f")), kNew);
}

// The name of an unfinished file, as the program makes them.
std::string UnfinishedName() {
  const TempDir dir;
  return PathOf(SiblingFile{AFilePath(dir.File("f"))}).filename().string();
}

TEST(SiblingFile, LeftoversAreKnownByTheirNames) {
  const TempDir dir;
  const std::string name = UnfinishedName();
  dir.Write(name, kNew);
  const std::string stem = name.substr(0, name.size() - 4);
  Names others = {"f",  name.substr(1), "x" + name,  name + "x", name + ".icc",
                  stem, stem + ".old",  ".vkcl.new", ".new",     ".vkcm" + name.substr(5)};
#if defined(__linux__)
  // Elsewhere these may be the same names.
  others.insert(others.end(), {stem + ".NEW", ".VKCL" + name.substr(5)});
#endif
  for (const std::string& other : others) dir.Write(other, kOld);
  EXPECT_EQ(SiblingFile::RemoveLeftovers(AFilePath(dir.File("f"))), 1);
  EXPECT_FALSE(std::filesystem::exists(dir.File(name)));
  for (const std::string& other : others) EXPECT_TRUE(std::filesystem::exists(dir.File(other)));
}

TEST(SiblingFile, OnlyFilesAreLeftovers) {
  const TempDir dir;
  const std::string name = UnfinishedName();
  std::filesystem::create_directory(dir.path() / name);
  EXPECT_EQ(SiblingFile::RemoveLeftovers(AFilePath(dir.File("f"))), 0);
  EXPECT_TRUE(std::filesystem::is_directory(dir.path() / name));
}

TEST(SiblingFile, LeftoversOfOtherFoldersStay) {
  const TempDir dir;
  const std::string name = UnfinishedName();
  std::filesystem::create_directory(dir.path() / "below");
  std::filesystem::create_directory(dir.path() / "here");
  dir.Write(name, kNew);
  std::filesystem::create_directory(dir.path() / "here" / "below");
  dir.Write("here/below/" + name, kNew);
  EXPECT_EQ(SiblingFile::RemoveLeftovers(AFilePath(dir.File("here/f"))), 0);
  EXPECT_TRUE(std::filesystem::exists(dir.path() / name));
  EXPECT_TRUE(std::filesystem::exists(dir.path() / "here" / "below" / name));
}

TEST(SiblingFile, APlaceWithoutAFolderIsInTheCurrentOne) {
  const TempDir dir;
  dir.Write("f", kOld);
  const std::string name = UnfinishedName();
  dir.Write(name, kNew);
  const CurrentFolder current(dir.path());
  EXPECT_EQ(SiblingFile::RemoveLeftovers(AFilePath("f")), 1);
  EXPECT_EQ(NamesIn(dir.path()), Names{"f"});
  SiblingFile sibling{AFilePath("f")};
  ASSERT_TRUE(sibling.exists());
  EXPECT_EQ(UnfinishedIn(dir.path()).size(), 1u);
  ASSERT_TRUE(Fill(sibling));
  EXPECT_TRUE(sibling.takePlace());
  EXPECT_EQ(ReadFile(dir.File("f")), kNew);
  EXPECT_EQ(NamesIn(dir.path()), Names{"f"});
}

#if !defined(_WIN32)

using vkcl::testing::AsOrdinaryUser;
using vkcl::testing::GiveToOrdinaryUser;
using vkcl::testing::InChild;
using vkcl::testing::ModeOf;
using vkcl::testing::OtherProcess;

TEST(SiblingFile, HasThePermissionsOfThePlace) {
  for (const mode_t mask : {mode_t{0}, mode_t{022}, mode_t{077}}) {
    const mode_t before = ::umask(mask);
    for (const unsigned mode : {0600u, 0640u, 0644u, 0664u, 0666u, 0755u}) {
      const TempDir dir;
      const std::string place = dir.Write("f", kOld);
      ASSERT_EQ(::chmod(place.c_str(), mode), 0);
      SiblingFile sibling{AFilePath(place)};
      EXPECT_EQ(ModeOf(PathOf(sibling)), mode);
      ASSERT_TRUE(Fill(sibling));
      EXPECT_TRUE(sibling.takePlace());
      EXPECT_EQ(ModeOf(place), mode);
    }
    ::umask(before);
  }
}

TEST(SiblingFile, HasTheOwnerOfThePlaceWhereThatIsAllowed) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root gives files away";
  const TempDir dir;
  const std::string place = dir.Write("f", kOld);
  ASSERT_EQ(::chown(place.c_str(), 1234, 2345), 0);
  ASSERT_EQ(::chmod(place.c_str(), 0640), 0);
  SiblingFile sibling{AFilePath(place)};
  ASSERT_TRUE(Fill(sibling));
  EXPECT_TRUE(sibling.takePlace());
  struct stat status = {};
  ASSERT_EQ(::stat(place.c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, 1234u);
  EXPECT_EQ(status.st_gid, 2345u);
  EXPECT_EQ(ModeOf(place), 0640u);
}

TEST(SiblingFile, IsRefusedWhereThePlaceMayNotBeWritten) {
  const TempDir dir;
  const std::string place = dir.Write("f", kOld);
  ASSERT_EQ(::chmod(place.c_str(), 0444), 0);
  GiveToOrdinaryUser(place);
  GiveToOrdinaryUser(dir.path());
  AsOrdinaryUser([&] {
    EXPECT_FALSE(SiblingFile(AFilePath(place)).exists());
    EXPECT_EQ(NamesIn(dir.path()), Names{"f"});
    ::chmod(place.c_str(), 0644);
    ::chmod(dir.path().c_str(), 0555);
    EXPECT_FALSE(SiblingFile(AFilePath(place)).exists());
    EXPECT_FALSE(SiblingFile(AFilePath(dir.File("absent"))).exists());
    EXPECT_EQ(NamesIn(dir.path()), Names{"f"});
    ::chmod(dir.path().c_str(), 0755);
  });
}

TEST(SiblingFile, NeedsARegularFile) {
  const TempDir dir;
  const std::string fifo = dir.File("fifo");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_FALSE(SiblingFile(AFilePath(fifo)).exists());
  std::filesystem::create_symlink("b", dir.path() / "a");
  std::filesystem::create_symlink("a", dir.path() / "b");
  EXPECT_FALSE(SiblingFile(AFilePath(dir.File("a"))).exists());
  EXPECT_FALSE(SiblingFile(AFilePath("/dev/null")).exists());
  EXPECT_EQ(NamesIn(dir.path()), (Names{"a", "b", "fifo"}));
}

TEST(SiblingFile, LiesBehindSymbolicLinks) {
  const TempDir dir;
  std::filesystem::create_directory(dir.path() / "here");
  std::filesystem::create_directory(dir.path() / "there");
  dir.Write("there/f", kOld);
  std::filesystem::create_symlink("../there/f", dir.path() / "here" / "relative");
  std::filesystem::create_symlink(dir.path() / "there" / "f", dir.path() / "here" / "absolute");
  std::filesystem::create_symlink("relative", dir.path() / "here" / "chained");
  std::filesystem::create_directory_symlink("there", dir.path() / "folder");
  for (const char* name : {"here/relative", "here/absolute", "here/chained", "folder/f"}) {
    SCOPED_TRACE(name);
    dir.Write("there/f", kOld);
    SiblingFile sibling{AFilePath(dir.File(name))};
    ASSERT_TRUE(sibling.exists());
    EXPECT_TRUE(sibling.isTaken());
    EXPECT_TRUE(std::filesystem::equivalent(sibling.place().str(), dir.File("there/f")));
    EXPECT_EQ(UnfinishedIn(dir.path() / "there").size(), 1u);
    EXPECT_EQ(NamesIn(dir.path() / "here"), (Names{"absolute", "chained", "relative"}));
    ASSERT_TRUE(Fill(sibling));
    EXPECT_TRUE(sibling.takePlace());
    EXPECT_EQ(ReadFile(dir.File("there/f")), kNew);
    EXPECT_TRUE(std::filesystem::is_symlink(dir.path() / "here" / "relative"));
    EXPECT_TRUE(std::filesystem::is_symlink(dir.path() / "here" / "absolute"));
    EXPECT_TRUE(std::filesystem::is_symlink(dir.path() / "here" / "chained"));
    EXPECT_EQ(NamesIn(dir.path() / "there"), Names{"f"});
  }
}

TEST(SiblingFile, ALinkWithoutAFolderLeadsOutOfTheCurrentOne) {
  const TempDir dir;
  std::filesystem::create_directory(dir.path() / "here");
  dir.Write("f", kOld);
  std::filesystem::create_symlink("../f", dir.path() / "here" / "link");
  const CurrentFolder current(dir.path() / "here");
  SiblingFile sibling{AFilePath("link")};
  ASSERT_TRUE(Fill(sibling));
  EXPECT_TRUE(sibling.takePlace());
  EXPECT_EQ(ReadFile(dir.File("f")), kNew);
  EXPECT_TRUE(std::filesystem::is_symlink(dir.path() / "here" / "link"));
  EXPECT_EQ(NamesIn(dir.path()), (Names{"f", "here"}));
}

TEST(SiblingFile, ADanglingLinkStaysALink) {
  const TempDir dir;
  std::filesystem::create_symlink("f", dir.path() / "link");
  SiblingFile sibling{AFilePath(dir.File("link"))};
  if (sibling.exists()) {
    EXPECT_FALSE(sibling.isTaken());
    ASSERT_TRUE(Fill(sibling));
    EXPECT_TRUE(sibling.takePlace());
    EXPECT_EQ(ReadFile(dir.File("f")), kNew);
  }
  EXPECT_TRUE(std::filesystem::is_symlink(dir.path() / "link"));
}

TEST(SiblingFile, LongNamesAndManyLinksAreNoObstacle) {
  const TempDir dir;
  for (const std::size_t length : {std::size_t{250}, std::size_t{255}}) {
    const std::string place = dir.Write(std::string(length, 'n'), kOld);
    SiblingFile sibling{AFilePath(place)};
    ASSERT_TRUE(sibling.exists()) << length;
    ASSERT_TRUE(Fill(sibling));
    EXPECT_TRUE(sibling.takePlace());
    EXPECT_EQ(ReadFile(place), kNew);
  }
  std::filesystem::create_symlink(std::string(255, 'n'), dir.path() / "l0");
  for (int i = 1; i < 41; ++i) {
    std::filesystem::create_symlink("l" + std::to_string(i - 1),
                                    dir.path() / ("l" + std::to_string(i)));
  }
  // Forty links, as many as Linux follows.
  SiblingFile sibling{AFilePath(dir.File("l39"))};
  EXPECT_TRUE(sibling.exists());
  EXPECT_TRUE(std::filesystem::equivalent(sibling.place().str(), dir.File(std::string(255, 'n'))));
  EXPECT_FALSE(SiblingFile(AFilePath(dir.File("l40"))).exists());
}

TEST(SiblingFile, IsLeftByAProgramThatDies) {
  const TempDir dir;
  const std::string place = dir.Write("f", kOld);
  // Left open and empty, left written, left closed.
  for (int step = 0; step < 3; ++step) {
    EXPECT_EQ(InChild([&] {
                auto* sibling = new SiblingFile{AFilePath(place)};
                if (step > 0) Fill(*sibling);
                if (step > 1) sibling->file().close();
                return sibling->exists() ? 0 : 1;
              }),
              0);
  }
  EXPECT_EQ(UnfinishedIn(dir.path()).size(), 3u);
  EXPECT_EQ(SiblingFile::RemoveLeftovers(AFilePath(place)), 3);
  EXPECT_EQ(NamesIn(dir.path()), Names{"f"});
  EXPECT_EQ(ReadFile(place), kOld);
}

TEST(SiblingFile, StaysAsLongAsAnotherProgramWorksOnIt) {
  const TempDir dir;
  const AFilePath place(dir.Write("f", kOld));
  const auto work = [&](const auto& wait) {
    SiblingFile sibling{place};
    const bool filled = Fill(sibling);
    wait();
    return filled && sibling.takePlace() ? 0 : 1;
  };
  OtherProcess other(work);
  ASSERT_TRUE(other.waits());
  ASSERT_EQ(UnfinishedIn(dir.path()).size(), 1u);
  EXPECT_EQ(SiblingFile::RemoveLeftovers(place), 0);
  EXPECT_EQ(UnfinishedIn(dir.path()).size(), 1u);
  {
    OtherProcess killed(work);
    ASSERT_TRUE(killed.waits());
    EXPECT_EQ(UnfinishedIn(dir.path()).size(), 2u);
    killed.Kill();
  }
  EXPECT_EQ(UnfinishedIn(dir.path()).size(), 2u);
  EXPECT_EQ(SiblingFile::RemoveLeftovers(place), 1);
  EXPECT_EQ(other.Finish(), 0);
  EXPECT_EQ(NamesIn(dir.path()), Names{"f"});
  EXPECT_EQ(ReadFile(dir.File("f")), kNew);
}

TEST(SiblingFile, StaysWhenItIsClosedBeforeItTakesThePlace) {
  const TempDir dir;
  const AFilePath place(dir.Write("f", kOld));
  SiblingFile sibling{place};
  ASSERT_TRUE(Fill(sibling));
  ASSERT_TRUE(sibling.file().close());
  EXPECT_EQ(InChild([&] { return SiblingFile::RemoveLeftovers(place); }), 0);
  EXPECT_EQ(UnfinishedIn(dir.path()).size(), 1u);
  EXPECT_TRUE(sibling.takePlace());
  EXPECT_EQ(ReadFile(dir.File("f")), kNew);
}

TEST(SiblingFile, LinksAndPipesOfSuchNamesAreNoLeftovers) {
  const TempDir dir;
  const Names names = {UnfinishedName(), UnfinishedName(), UnfinishedName()};
  dir.Write("f", kOld);
  std::filesystem::create_symlink("f", dir.path() / names[0]);
  std::filesystem::create_symlink("absent", dir.path() / names[1]);
  ASSERT_EQ(::mkfifo(dir.File(names[2]).c_str(), 0600), 0);
  EXPECT_EQ(SiblingFile::RemoveLeftovers(AFilePath(dir.File("f"))), 0);
  EXPECT_EQ(NamesIn(dir.path()).size(), 4u);
  EXPECT_EQ(ReadFile(dir.File("f")), kOld);
}

TEST(SiblingFile, LeftoversOfReadOnlyFilesGoToo) {
  const TempDir dir;
  const std::string name = UnfinishedName();
  dir.Write("f", kOld);
  ASSERT_EQ(::chmod(dir.Write(name, kNew).c_str(), 0444), 0);
  GiveToOrdinaryUser(dir.File(name));
  GiveToOrdinaryUser(dir.File("f"));
  GiveToOrdinaryUser(dir.path());
  AsOrdinaryUser([&] {
    EXPECT_EQ(SiblingFile::RemoveLeftovers(AFilePath(dir.File("f"))), 1);
    EXPECT_EQ(NamesIn(dir.path()), Names{"f"});
  });
}

// The same by chance.
TEST(SiblingFile, IsMadeAnewAsOftenAsOthersClearItUp) {
  const FoldersInMemory memory;
  const TempDir dir;
  const AFilePath place(dir.Write("f", kOld));
  int removed = 0;
  const ActionAtLocks at([&] {
    if (removed < 20) removed += SiblingFile::RemoveLeftovers(place);
  });
  SiblingFile sibling{place};
  ASSERT_TRUE(sibling.exists());
  EXPECT_EQ(removed, 20);
  EXPECT_TRUE(std::filesystem::exists(sibling.path().str()));
  EXPECT_EQ(NamesIn(dir.path()).size(), 2u);
}

TEST(SiblingFile, IsGivenUpWhenOthersAlwaysClearItUp) {
  const FoldersInMemory memory;
  const TempDir dir;
  const AFilePath place(dir.Write("f", kOld));
  int removed = 0;
  const ActionAtLocks at([&] { removed += SiblingFile::RemoveLeftovers(place); });
  const SiblingFile sibling{place};
  EXPECT_FALSE(sibling.exists());
  EXPECT_EQ(removed, 100);
  EXPECT_EQ(NamesIn(dir.path()), Names{"f"});
}

TEST(SiblingFile, IsNotLostToOthersThatClearUp) {
  const FoldersInMemory memory;
  const TempDir dir;
  const AFilePath place(dir.Write("f", kOld));
  const std::string stop = dir.File("stop");
  const auto clearUp = [&](const auto& wait) {
    wait();
    while (!std::filesystem::exists(stop)) SiblingFile::RemoveLeftovers(place);
    return 0;
  };
  // Several, so that a new file is often taken for a leftover many times in a row.
  OtherProcess first(clearUp);
  OtherProcess second(clearUp);
  OtherProcess third(clearUp);
  for (OtherProcess* other : {&first, &second, &third}) other->Go();
  int lost = 0;
  for (int i = 0; i < 1000; ++i) {
    SiblingFile sibling{place};
    if (!sibling.exists() || !std::filesystem::exists(sibling.path().str())) {
      ++lost;
    } else if (i % 100 == 0) {
      EXPECT_TRUE(Fill(sibling));
      EXPECT_TRUE(sibling.takePlace());
    }
  }
  EXPECT_EQ(lost, 0);
  WriteFile(stop, {});
  for (OtherProcess* other : {&first, &second, &third}) EXPECT_EQ(other->Finish(), 0);
  EXPECT_EQ(NamesIn(dir.path()), (Names{"f", "stop"}));
  EXPECT_EQ(ReadFile(dir.File("f")), kNew);
}

TEST(SiblingFile, AProgramMayDieAtAnyMoment) {
  const FoldersInMemory memory;
  for (const Fault fault : {Fault::Death, Fault::DeathWithin}) {
    const TempDir dir;
    bool reached = true;
    std::size_t deaths = 0;
    for (std::size_t k = 0; reached; ++k) {
      SCOPED_TRACE(k);
      ASSERT_LT(k, 100u);
      const std::string place = dir.Write("f", kOld);
      const int code = InChild([&] {
        const FaultAt at(k, fault);
        {
          SiblingFile sibling{AFilePath(place)};
          if (!Fill(sibling) || !sibling.takePlace()) return 2;
        }
        return FaultAt::Reached() ? 1 : 0;
      });
      ASSERT_TRUE(code == 0 || code == 1 || code == 77) << code;
      reached = code != 0;
      deaths += code == 77 ? 1u : 0u;
      const Bytes left = ReadFile(place);
      EXPECT_TRUE(left == kOld || left == kNew);
      if (code != 77) {
        EXPECT_EQ(left, kNew);
      }
      const Names unfinished = UnfinishedIn(dir.path());
      EXPECT_EQ(NamesIn(dir.path()).size(), 1 + unfinished.size());
      EXPECT_EQ(SiblingFile::RemoveLeftovers(AFilePath(place)),
                static_cast<int>(unfinished.size()));
      EXPECT_EQ(NamesIn(dir.path()), Names{"f"});
    }
    EXPECT_GE(deaths, fault == Fault::Death ? 4u : 1u);
  }
}

#endif

}  // namespace
