// The lock of a profile's colour settings, held against a model of the rules.
#include <cstdint>
#include <cstring>
#include <filesystem>

#include "handler/VKCLProfileHandler.h"
#include "support/SystemCalls.h"
#include "support/TagFile.h"

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::CallKind;
using vkcl::testing::CallLog;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::FileHead;
using vkcl::testing::FileTag;
using vkcl::testing::ImageOf;
using vkcl::testing::OpenHandles;
using vkcl::testing::Pattern;
using vkcl::testing::Payload;
using vkcl::testing::PayloadOf;
using vkcl::testing::ProfileFile;
using vkcl::testing::ReadFile;
using vkcl::testing::SameBytes;
using vkcl::testing::TempDir;
using vkcl::testing::WriteFile;

constexpr int kRgbMode = 512;
constexpr int kCmyMode = 16;

/// The 1068 bytes of colour parameters, every field of its own value.
struct Settings {
  int status = 9;
  int colorMode = 1;
  std::string make = "Maker";
  std::string makeTail = {};  ///< bytes of the field behind the make's terminator
  std::string media = "Glossy";
  int size = 1068;
  unsigned seed = 1;

  Bytes Image() const {
    Payload payload;
    payload.Int(1).Int(size).Int(status).Int(4711);
    payload.Field(makeTail.empty() ? make : make + '\0' + makeTail, 128);
    payload.Field("Model", 128).Field(media, 128);
    payload.Int(3).Float(720.0f).Float(1440.0f).Int(colorMode).Int(5).Int(6).Int(7);
    payload.Raw(Pattern(256, seed)).Raw(Pattern(3 * 128, seed + 1));
    EXPECT_EQ(payload.size(), 1068u);
    return payload;
  }

  VKColorParam Record() const {
    const Bytes image = Image();
    VKColorParam record;
    std::memcpy(static_cast<void*>(&record), image.data(), sizeof record);
    return record;
  }
};

Bytes WithStatus(Bytes payload, int status) {
  const Bytes word = Payload().Int(status);
  std::copy(word.begin(), word.end(), payload.begin() + 8);
  return payload;
}

/// Tags that make a finished state. Where `tags` say QX53, the colour parameters go.
struct State {
  const char* name;
  int number;
  std::vector<FileTag> tags;
};

FileTag Limits(std::size_t size = 140) { return {"QX51", Pattern(size, 51)}; }
FileTag Short(const char* signature) { return {signature, Pattern(7, 3)}; }

const std::vector<State>& States() {
  static const std::vector<State> states = {
      {"not one of the system's own", 0, {Short("B2A0"), Short("QX53")}},
      {"with a tag of a newer system",
       0,
       {Limits(), Short("QX53"), Short("QX54"), Short("QX59"), Short("B2A0"), Short("QX77")}},
      {"ink limits", 1, {Limits(), Short("QX53")}},
      {"ink split", 2, {Short("QX50"), Limits(), Short("QX53"), Short("QX55")}},
      {"linearisation by its list", 3, {Short("desc"), Limits(), Short("QX53"), Short("QX54")}},
      {"linearisation by longer limits", 3, {Limits(141), Short("QX53"), Short("QX50")}},
      {"multiple ink limits", 4, {Short("QX52"), Limits(), Short("QX53")}},
      {"gray balance", 5, {Limits(), Short("QX56"), Short("QX53")}},
      {"characterisation", 6, {Limits(), Short("QX53"), Short("QX59"), Short("wtpt")}},
      {"first table", 7, {Limits(), Short("QX53"), Short("B2A0")}},
      {"second table", 7, {Short("B2A1"), Limits(), Short("QX53")}},
      {"third table of a whole profile",
       7,
       {Short("desc"), Limits(), Short("QX52"), Short("QX53"), Short("QX54"), Short("QX56"),
        Short("QX59"), Short("B2A2")}},
  };
  return states;
}

const State& StateOf(int number) {
  for (const State& state : States()) {
    if (state.number == number) return state;
  }
  ADD_FAILURE() << number;
  return States().front();
}

Bytes FileOf(const State& state, const Bytes& settings, const char* colorSpace = "CMYK") {
  std::vector<FileTag> tags = state.tags;
  for (FileTag& tag : tags) {
    if (tag.signature == "QX53") tag.payload = settings;
  }
  return ProfileFile(tags, FileHead{.colorSpace = colorSpace});
}

/// A profile file and a handler on it.
class OnFile {
 public:
  explicit OnFile(const Bytes& file)
      : path_(dir_.Write("profile.icc", file)), handler(AFilePath(path_), 0) {}
  OnFile(const State& state, const Settings& settings) : OnFile(FileOf(state, settings.Image())) {}

  Bytes File() const { return ReadFile(path_); }
  Bytes Stored() const { return PayloadOf(File(), "QX53").value_or(Bytes()); }
  int StoredStatus() const {
    const Bytes payload = Stored();
    std::int32_t status = -4711;
    if (payload.size() >= 12) std::memcpy(&status, payload.data() + 8, 4);
    return status;
  }
  void Remove() const { std::filesystem::remove(path_); }
  bool Exists() const { return std::filesystem::exists(path_); }
  const std::string& path() const { return path_; }

 private:
  TempDir dir_;
  std::string path_;

 public:
  VKCLProfileHandler handler;
};

enum class Operation { Ask, Unlock, Modify, Lock };
constexpr Operation kOperations[] = {Operation::Ask, Operation::Unlock, Operation::Modify,
                                     Operation::Lock};

std::string NameOf(Operation operation) {
  switch (operation) {
    case Operation::Ask: return "ask";
    case Operation::Unlock: return "unlock";
    case Operation::Modify: return "modify";
    case Operation::Lock: return "lock";
  }
  return "?";
}

int Apply(Operation operation, VKCLProfileHandler& handler, VKColorParam& settings) {
  switch (operation) {
    case Operation::Ask: return handler.isVKCLUnLockedProfile();
    case Operation::Unlock: return handler.UnLockVKCLProfile();
    case Operation::Modify: return handler.ModifyUnLockedColorSettings(settings);
    case Operation::Lock: return handler.LockUnLockedVKCLProfile();
  }
  return -1;
}

/// What an operation does: its result, and the status that it writes, if it writes.
struct Outcome {
  int result = 0;
  bool writes = false;
  int status = 0;
};

Outcome OutcomeOf(Operation operation, int status, int state) {
  const bool unlocked = status == 10 || status == 12;
  if (operation == Operation::Ask) return {.result = unlocked ? 1 : 0};
  if (state < 3) return {};
  switch (operation) {
    case Operation::Unlock:
      if (unlocked) return {.result = 1};
      return {.result = 1, .writes = true, .status = status == 9 ? 12 : 10};
    case Operation::Modify:
      if (!unlocked) return {};
      return {.result = 1, .writes = true, .status = status};
    default:
      if (!unlocked) return {};
      return {.result = 1, .writes = true, .status = status == 10 ? 11 : 13};
  }
}

TEST(Lock, FollowsItsTableForEveryStatusStateAndOperation) {
  int writes = 0;
  for (const State& state : States()) {
    for (int status = -1; status <= 20; ++status) {
      for (const Operation operation : kOperations) {
        SCOPED_TRACE(std::string(state.name) + ", status " + std::to_string(status) + ", " +
                     NameOf(operation));
        const Settings stored{.status = status, .colorMode = kRgbMode};
        OnFile file(state, stored);
        const Bytes before = file.File();
        const Outcome expected = OutcomeOf(operation, status, state.number);

        const Settings given{.status = 99, .colorMode = kCmyMode, .make = "Other", .seed = 60};
        VKColorParam settings = given.Record();
        {
          const CallLog log;
          EXPECT_EQ(Apply(operation, file.handler, settings), expected.result);
          if (!expected.writes) {
            EXPECT_EQ(log.Count(CallKind::Write), 0u);
            EXPECT_EQ(log.Count(CallKind::SetLength), 0u);
            EXPECT_EQ(log.Count(CallKind::Remove), 0u);
          } else {
            EXPECT_GE(log.Count(CallKind::Write), 1u);
          }
        }
        EXPECT_EQ(OpenHandles(), 0);

        const bool modifies = operation == Operation::Modify && expected.writes;
        EXPECT_TRUE(SameBytes(ImageOf(settings),
                              WithStatus(given.Image(), modifies ? expected.status : 99)));
        if (!expected.writes) {
          EXPECT_TRUE(SameBytes(file.File(), before));
          EXPECT_EQ(file.handler.GetColorSpace(), icSigCmykData);
          continue;
        }
        ++writes;
        const Bytes payload =
            WithStatus(modifies ? given.Image() : stored.Image(), expected.status);
        // The same length: nothing but the payload changes in the file, not even its header.
        EXPECT_TRUE(SameBytes(file.File(), FileOf(state, payload)));
        EXPECT_EQ(file.handler.GetColorSpace(), modifies ? icSigCmyData : icSigRgbData);
        const bool nowUnlocked = expected.status == 10 || expected.status == 12;
        EXPECT_EQ(file.handler.isVKCLUnLockedProfile(), nowUnlocked ? 1 : 0);
        EXPECT_EQ(VKCLProfileHandler(AFilePath(file.path()), 0).isVKCLUnLockedProfile(),
                  nowUnlocked ? 1 : 0);
      }
    }
  }
  // 8 sets of tags of state 3 or more: 20 statuses to unlock, 2 to modify and 2 to lock.
  EXPECT_EQ(writes, 8 * (20 + 2 + 2));
}

TEST(Lock, OfALockedFirstKindPassesThroughAllItsStatuses) {
  for (const bool anew : {false, true}) {
    OnFile file(StateOf(7), {.status = 9});
    std::vector<int> statuses;
    const auto step = [&](Operation operation) {
      VKColorParam unused;
      if (anew) {
        VKCLProfileHandler handler(AFilePath(file.path()), 0);
        EXPECT_EQ(Apply(operation, handler, unused), 1);
      } else {
        EXPECT_EQ(Apply(operation, file.handler, unused), 1);
      }
      statuses.push_back(file.StoredStatus());
    };
    for (int i = 0; i < 4; ++i) {
      step(Operation::Unlock);
      step(Operation::Lock);
    }
    // Once locked again, a profile never gets back to 12.
    EXPECT_EQ(statuses, (std::vector<int>{12, 13, 10, 11, 10, 11, 10, 11})) << anew;
    EXPECT_TRUE(SameBytes(file.File(), FileOf(StateOf(7), Settings{.status = 11}.Image())));
  }
}

TEST(Lock, OfAnyOtherKindPassesThroughTenAndEleven) {
  for (const int first : {-2147483647, -1, 0, 1, 8, 11, 13, 14, 2147483647}) {
    OnFile file(StateOf(3), {.status = first});
    EXPECT_EQ(file.handler.UnLockVKCLProfile(), 1) << first;
    EXPECT_EQ(file.StoredStatus(), 10) << first;
    EXPECT_EQ(file.handler.isVKCLUnLockedProfile(), 1) << first;
    EXPECT_EQ(file.handler.LockUnLockedVKCLProfile(), 1) << first;
    EXPECT_EQ(file.StoredStatus(), 11) << first;
    EXPECT_EQ(file.handler.isVKCLUnLockedProfile(), 0) << first;
  }
}

TEST(Lock, OfAProfileThatWasNeverUnlockedIsRefused) {
  OnFile file(StateOf(7), {.status = 9});
  const Bytes before = file.File();
  EXPECT_EQ(file.handler.LockUnLockedVKCLProfile(), 0);
  EXPECT_TRUE(SameBytes(file.File(), before));
}

TEST(Lock, IsNotTakenTwice) {
  OnFile file(StateOf(7), {.status = 12});
  EXPECT_EQ(file.handler.LockUnLockedVKCLProfile(), 1);
  EXPECT_EQ(file.handler.LockUnLockedVKCLProfile(), 0);
  EXPECT_EQ(file.StoredStatus(), 13);
}

TEST(Unlock, OfALockedFirstKindLooksAtTheTagsAlone) {
  // Status 9 holds a profile at ink limits when the status takes part; unlocking asks without it.
  const Settings locked{.status = 9};
  for (const int number : {4, 5, 6, 7}) {
    OnFile file(StateOf(number), locked);
    VKCLProfileFinishedState state = FinishedNone;
    ASSERT_EQ(file.handler.GetVKCLProfileFinishedState(state, 0), 1);
    ASSERT_EQ(state, FinishedInkLimit) << number;
    EXPECT_EQ(file.handler.UnLockVKCLProfile(), 1) << number;
    EXPECT_EQ(file.StoredStatus(), 12) << number;
  }
}

TEST(Unlock, OfAnUnlockedProfileSucceedsAndWritesNothing) {
  for (const int status : {10, 12}) {
    // Neither the clean-ups nor the colour space are a reason to write.
    OnFile file(StateOf(7), {.status = status,
                             .colorMode = kRgbMode,
                             .make = "Hewlett-Packard",
                             .media = "  Glossy  "});
    const Bytes before = file.File();
    const CallLog log;
    EXPECT_EQ(file.handler.UnLockVKCLProfile(), 1);
    EXPECT_EQ(file.handler.UnLockVKCLProfile(), 1);
    EXPECT_EQ(log.Count(CallKind::Write), 0u);
    EXPECT_EQ(log.Count(CallKind::SetLength), 0u);
    EXPECT_TRUE(SameBytes(file.File(), before));
    EXPECT_EQ(file.handler.GetColorSpace(), icSigCmykData);
  }
}

TEST(Unlock, TwiceWritesOnce) {
  OnFile file(StateOf(3), {.status = 9});
  EXPECT_EQ(file.handler.UnLockVKCLProfile(), 1);
  const Bytes unlocked = file.File();
  const CallLog log;
  EXPECT_EQ(file.handler.UnLockVKCLProfile(), 1);
  EXPECT_EQ(log.Count(CallKind::Write), 0u);
  EXPECT_TRUE(SameBytes(file.File(), unlocked));
}

TEST(UnlockedQuestion, IsAnsweredFromTheStatusAlone) {
  for (const int status : {9, 10, 11, 12, 13}) {
    const Bytes settings = Settings{.status = status}.Image();
    OnFile alone(ProfileFile({{"QX53", settings}}));
    EXPECT_EQ(alone.handler.IsVKCLProfile(), 0);
    EXPECT_EQ(alone.handler.isVKCLUnLockedProfile(), status == 10 || status == 12 ? 1 : 0);
    OnFile started(StateOf(1), {.status = status});
    EXPECT_EQ(started.handler.isVKCLUnLockedProfile(), status == 10 || status == 12 ? 1 : 0);
  }
}

TEST(UnlockedQuestion, IsNoWithoutReadableSettings) {
  EXPECT_EQ(OnFile(ProfileFile({Limits()})).handler.isVKCLUnLockedProfile(), 0);
  const Bytes unlocked = Settings{.status = 10}.Image();
  EXPECT_EQ(OnFile(ProfileFile({{"QX53", unlocked, "text"}})).handler.isVKCLUnLockedProfile(), 0);
  Bytes cut = ProfileFile({{"QX53", unlocked}});
  cut.erase(cut.end() - 4, cut.end());
  EXPECT_EQ(OnFile(cut).handler.isVKCLUnLockedProfile(), 0);
  EXPECT_EQ(OnFile(Bytes(50)).handler.isVKCLUnLockedProfile(), 0);
  // The first tag of a signature counts.
  const Bytes locked = Settings{.status = 11}.Image();
  EXPECT_EQ(
      OnFile(ProfileFile({{"QX53", locked}, {"QX53", unlocked}})).handler.isVKCLUnLockedProfile(),
      0);
}

TEST(LockOperations, WithoutReadableSettingsAreRefused) {
  // Three ways in which a finished profile's settings cannot be read.
  const Bytes unlocked = Settings{.status = 10}.Image();
  std::vector<Bytes> files = {
      ProfileFile({Limits(), {"QX53", unlocked, "text"}, Short("B2A0")}),
      ProfileFile({Limits(), {"QX53", {}}, Short("B2A0")}),
      ProfileFile({Limits(), Short("B2A0"), {"QX53", unlocked}}),
  };
  files[2].erase(files[2].end() - 4, files[2].end());
  for (std::size_t i = 0; i < files.size(); ++i) {
    for (const Operation operation : {Operation::Modify, Operation::Lock}) {
      SCOPED_TRACE(NameOf(operation) + " " + std::to_string(i));
      OnFile file(files[i]);
      VKColorParam settings = Settings{.status = 99}.Record();
      EXPECT_EQ(Apply(operation, file.handler, settings), 0);
      EXPECT_EQ(settings.status, 99);
      EXPECT_TRUE(SameBytes(file.File(), files[i]));
    }
  }
  for (const std::size_t i : {std::size_t{0}, std::size_t{2}}) {
    OnFile file(files[i]);
    EXPECT_EQ(file.handler.UnLockVKCLProfile(), 0) << i;
    EXPECT_TRUE(SameBytes(file.File(), files[i])) << i;
  }
}

TEST(LockOperations, OnAMissingFileAreRefusedAndCreateNothing) {
  for (const Operation operation : kOperations) {
    OnFile file(StateOf(7), {.status = 10, .colorMode = kRgbMode});
    file.Remove();
    VKColorParam settings = Settings{.status = 99}.Record();
    EXPECT_EQ(Apply(operation, file.handler, settings), 0) << NameOf(operation);
    EXPECT_EQ(settings.status, 99) << NameOf(operation);
    EXPECT_EQ(file.handler.GetColorSpace(), icSigCmykData) << NameOf(operation);
    EXPECT_FALSE(file.Exists()) << NameOf(operation);
  }
}

// What is written.

TEST(LockOperations, WriteTheMakersNameShort) {
  const Settings stored{.make = "Hewlett-Packard", .makeTail = "left as it was"};
  for (const auto& [operation, from, to] :
       {std::tuple(Operation::Unlock, 9, 12), std::tuple(Operation::Unlock, 11, 10),
        std::tuple(Operation::Lock, 10, 11), std::tuple(Operation::Lock, 12, 13)}) {
    Settings before = stored;
    before.status = from;
    OnFile file(StateOf(3), before);
    VKColorParam unused;
    EXPECT_EQ(Apply(operation, file.handler, unused), 1);
    // Three bytes are replaced; the others of the field stay.
    Bytes expected = WithStatus(before.Image(), to);
    std::memcpy(expected.data() + 16, "HP", 3);
    EXPECT_TRUE(SameBytes(file.Stored(), expected));
    EXPECT_EQ(std::memcmp(file.Stored().data() + 16, "HP\0lett-Packard\0left as it was", 31), 0);
  }
}

TEST(LockOperations, KeepALongerOrOtherMakersName) {
  for (const char* make :
       {"Hewlett-Packard Company", "hewlett-packard", " Hewlett-Packard", "HP"}) {
    const Settings stored{.make = make};
    OnFile file(StateOf(3), stored);
    EXPECT_EQ(file.handler.UnLockVKCLProfile(), 1);
    EXPECT_TRUE(SameBytes(file.Stored(), WithStatus(stored.Image(), 12))) << make;
  }
}

TEST(LockOperations, WriteTheMediaNameTrimmed) {
  const Settings stored{.status = 12, .media = "  Fine  Art  "};
  OnFile file(StateOf(3), stored);
  EXPECT_EQ(file.handler.LockUnLockedVKCLProfile(), 1);
  Bytes expected = WithStatus(stored.Image(), 13);
  // The bytes behind the new terminator stay.
  std::memcpy(expected.data() + 272, "Fine  Art\0t  ", 13);
  EXPECT_TRUE(SameBytes(file.Stored(), expected));

  OnFile blank(StateOf(3), {.status = 9, .media = "   "});
  EXPECT_EQ(blank.handler.UnLockVKCLProfile(), 1);
  EXPECT_EQ(blank.Stored().at(272), 0);
}

TEST(Modify, WritesTheSettingsAsGivenWithTheStoredStatus) {
  for (const int status : {10, 12}) {
    // No clean-up: these are the caller's, not what was read.
    const Settings given{.status = 0, .make = "Hewlett-Packard", .media = "  x  ", .seed = 80};
    OnFile file(StateOf(5), {.status = status});
    VKColorParam settings = given.Record();
    EXPECT_EQ(file.handler.ModifyUnLockedColorSettings(settings), 1);
    EXPECT_TRUE(SameBytes(file.Stored(), WithStatus(given.Image(), status)));
    EXPECT_TRUE(SameBytes(ImageOf(settings), WithStatus(given.Image(), status)));
    EXPECT_EQ(file.handler.isVKCLUnLockedProfile(), 1);
    // Locking reads them back, with the clean-ups.
    EXPECT_EQ(file.handler.LockUnLockedVKCLProfile(), 1);
    EXPECT_EQ(file.StoredStatus(), status + 1);
    EXPECT_STREQ(reinterpret_cast<const char*>(file.Stored().data()) + 16, "HP");
    EXPECT_STREQ(reinterpret_cast<const char*>(file.Stored().data()) + 272, "x");
  }
}

TEST(Modify, OfALockedProfileLeavesTheSettingsAlone) {
  for (const int status : {9, 11, 13}) {
    OnFile file(StateOf(7), {.status = status});
    const Bytes before = file.File();
    VKColorParam settings = Settings{.status = 10, .colorMode = kRgbMode}.Record();
    EXPECT_EQ(file.handler.ModifyUnLockedColorSettings(settings), 0);
    EXPECT_EQ(settings.status, 10);
    EXPECT_TRUE(SameBytes(file.File(), before));
    EXPECT_EQ(file.handler.GetColorSpace(), icSigCmykData);
  }
}

TEST(LockOperations, SetTheColourSpaceFromTheModeThatIsWritten) {
  const std::pair<int, icColorSpaceSignature> modes[] = {{kCmyMode, icSigCmyData},
                                                         {kRgbMode, icSigRgbData},
                                                         {1, icSigCmykData},
                                                         {0, icSigCmykData},
                                                         {-512, icSigCmykData}};
  for (const auto& [mode, space] : modes) {
    for (const Operation operation : {Operation::Unlock, Operation::Modify, Operation::Lock}) {
      const int status = operation == Operation::Unlock ? 9 : 10;
      const bool modifies = operation == Operation::Modify;
      OnFile file(StateOf(4), {.status = status, .colorMode = modifies ? kRgbMode : mode});
      VKColorParam settings = Settings{.colorMode = mode}.Record();
      EXPECT_EQ(Apply(operation, file.handler, settings), 1);
      EXPECT_EQ(file.handler.GetColorSpace(), space) << mode << " " << NameOf(operation);
    }
  }
}

TEST(LockOperations, BringTheColourSpaceToTheFileWithTheNextRewrite) {
  // Settings of another length than a record make the file be written anew, header and all.
  const Settings stored{.status = 9, .colorMode = kRgbMode};
  const State& state = StateOf(6);
  Bytes longer = stored.Image();
  longer.insert(longer.end(), 40, 0xEE);
  OnFile file(FileOf(state, longer));
  EXPECT_EQ(file.handler.UnLockVKCLProfile(), 1);
  EXPECT_TRUE(SameBytes(file.File(), FileOf(state, WithStatus(stored.Image(), 12), "RGB ")));

  // And what was set by a write of the same length goes with it.
  OnFile same(state, stored);
  EXPECT_EQ(same.handler.UnLockVKCLProfile(), 1);
  EXPECT_TRUE(SameBytes(same.File(), FileOf(state, WithStatus(stored.Image(), 12))));
  EXPECT_EQ(same.handler.WriteVKChromaAdjust("new tag"), 1);
  EXPECT_EQ(VKCLProfileHandler(AFilePath(same.path()), 0).GetColorSpace(), icSigRgbData);
}

TEST(LockOperations, FillUpSettingsThatAreStoredShort) {
  const Settings stored{.status = 9};
  const State& state = StateOf(3);
  Bytes expected = stored.Image();
  std::fill(expected.begin() + 500, expected.end(), std::uint8_t{0});
  OnFile file(FileOf(state, Bytes(expected.begin(), expected.begin() + 500)));
  EXPECT_EQ(file.handler.UnLockVKCLProfile(), 1);
  EXPECT_TRUE(SameBytes(file.File(), FileOf(state, WithStatus(expected, 12))));

  // Version and size alone: the status is 0.
  OnFile head(FileOf(state, Payload().Int(1).Int(1068)));
  EXPECT_EQ(head.handler.isVKCLUnLockedProfile(), 0);
  EXPECT_EQ(head.handler.UnLockVKCLProfile(), 1);
  EXPECT_EQ(head.Stored().size(), 1068u);
  EXPECT_EQ(head.StoredStatus(), 10);
}

TEST(LockOperations, WriteAsManyBytesAsTheRecordStates) {
  const Settings stored{.status = 9, .size = 400};
  const State& state = StateOf(3);
  OnFile file(state, stored);
  EXPECT_EQ(file.handler.UnLockVKCLProfile(), 1);
  const Bytes all = WithStatus(stored.Image(), 12);
  EXPECT_TRUE(SameBytes(file.File(), FileOf(state, Bytes(all.begin(), all.begin() + 400))));
}

TEST(LockOperations, OfARecordThatCannotBeBuiltChangeNothing) {
  // A record that states more bytes than it has.
  for (const int size : {1069, 2000, -1}) {
    for (const Operation operation : {Operation::Unlock, Operation::Lock}) {
      OnFile file(
          StateOf(7),
          {.status = operation == Operation::Unlock ? 9 : 10, .colorMode = kRgbMode, .size = size});
      const Bytes before = file.File();
      VKColorParam unused;
      EXPECT_EQ(Apply(operation, file.handler, unused), 0) << size << NameOf(operation);
      EXPECT_TRUE(SameBytes(file.File(), before)) << size << NameOf(operation);
      EXPECT_EQ(file.handler.GetColorSpace(), icSigCmykData) << size << NameOf(operation);
    }
    OnFile file(StateOf(7), {.status = 10});
    const Bytes before = file.File();
    VKColorParam settings = Settings{.status = 99, .colorMode = kRgbMode, .size = size}.Record();
    EXPECT_EQ(file.handler.ModifyUnLockedColorSettings(settings), 0) << size;
    EXPECT_EQ(settings.status, 10) << "set before the record is built";
    EXPECT_TRUE(SameBytes(file.File(), before)) << size;
    EXPECT_EQ(file.handler.GetColorSpace(), icSigCmykData) << size;
  }
}

// Failing calls.

struct Attempt {
  Operation operation;
  Bytes before;
  Bytes after;
};

std::vector<Attempt> Attempts() {
  const State& state = StateOf(7);
  const Settings given{.status = 99, .colorMode = kRgbMode, .seed = 40};
  const auto stored = [](int status) {
    return Settings{.status = status, .colorMode = kRgbMode}.Image();
  };
  Bytes longer = stored(9);
  longer.insert(longer.end(), 40, 0xEE);
  return {
      {Operation::Unlock, FileOf(state, stored(9)), FileOf(state, stored(12))},
      {Operation::Modify, FileOf(state, stored(10)), FileOf(state, WithStatus(given.Image(), 10))},
      {Operation::Lock, FileOf(state, stored(12)), FileOf(state, stored(13))},
      {Operation::Unlock, FileOf(state, longer), FileOf(state, stored(12), "RGB ")},
  };
}

VKColorParam GivenSettings() {
  return Settings{.status = 99, .colorMode = kRgbMode, .seed = 40}.Record();
}

TEST(LockOperations, ReportEveryFailingCallAndLeaveTheFileWholeThen) {
  for (const Fault fault :
       {Fault::Error, Fault::Short, Fault::FullDisk, Fault::Interrupted, Fault::FailedClose}) {
    for (const Attempt& attempt : Attempts()) {
      int refused = 0;
      bool reached = true;
      for (std::size_t which = 0; reached && which < 200; ++which) {
        SCOPED_TRACE(NameOf(attempt.operation) + ", fault " +
                     std::to_string(static_cast<int>(fault)) + " at " + std::to_string(which));
        OnFile file(attempt.before);
        VKColorParam settings = GivenSettings();
        int result = -1;
        bool closing = false;
        {
          const CallLog log;
          const FaultAt at(which, fault);
          result = Apply(attempt.operation, file.handler, settings);
          reached = FaultAt::Reached();
          closing = reached && log.calls().at(which).kind == CallKind::Close;
        }
        EXPECT_EQ(OpenHandles(), 0);
        if (!reached) {
          EXPECT_EQ(result, 1);
        }
        if (result == 1) {
          EXPECT_TRUE(SameBytes(file.File(), attempt.after));
          continue;
        }
        EXPECT_EQ(result, 0);
        ++refused;
        // Whether bytes were lost at the close is not known; what was written may be there.
        const Bytes now = file.File();
        if (!(closing && now == attempt.after)) {
          EXPECT_TRUE(SameBytes(now, attempt.before));
        }
      }
      EXPECT_FALSE(reached) << "the calls have an end";
      if (fault == Fault::Error) {
        EXPECT_GE(refused, 3) << "to open, to read and to write at least";
      }
      if (fault == Fault::Interrupted) {
        EXPECT_EQ(refused, 0) << "what is interrupted is tried again";
      }
    }
  }
}

TEST(LockOperations, ThatFailToWriteKeepTheNewColourSpaceAndStatusInMemory) {
  for (const Attempt& attempt : Attempts()) {
    SCOPED_TRACE(NameOf(attempt.operation));
    std::size_t write = 0;
    {
      OnFile file(attempt.before);
      VKColorParam settings = GivenSettings();
      const CallLog log;
      ASSERT_EQ(Apply(attempt.operation, file.handler, settings), 1);
      const std::vector<CallKind> kinds = log.Kinds();
      while (write < kinds.size() && kinds[write] != CallKind::Write) ++write;
      ASSERT_LT(write, kinds.size());
    }
    OnFile file(attempt.before);
    VKColorParam settings = GivenSettings();
    {
      const FaultAt at(write, Fault::Error);
      EXPECT_EQ(Apply(attempt.operation, file.handler, settings), 0);
    }
    EXPECT_EQ(file.handler.GetColorSpace(), icSigRgbData);
    EXPECT_EQ(settings.status, attempt.operation == Operation::Modify ? 10 : 99);
    EXPECT_TRUE(SameBytes(file.File(), attempt.before));
    // Nothing stands in the way of a second try.
    EXPECT_EQ(Apply(attempt.operation, file.handler, settings), 1);
  }
}

// What a short payload lacks, the record that is written back has from its beginnings.
TEST(Lock, OfShortColourParametersWritesAWholeRecord) {
  for (const std::size_t length : {0u, 4u, 7u}) {
    Bytes payload = Payload().Int(6).Int(1068);
    payload.resize(length);
    const TempDir dir;
    const std::string path =
        dir.Write("p.icc", ProfileFile({Limits(141), {"QX53", payload}, {"QX54", Pattern(24, 1)}}));
    VKCLProfileHandler handler(AFilePath(path), 4);
    EXPECT_EQ(handler.UnLockVKCLProfile(), 1) << length;
    EXPECT_TRUE(SameBytes(PayloadOf(ReadFile(path), "QX53").value_or(Bytes()),
                          Payload().Int(length >= 4 ? 6 : 1).Int(1068).Int(10).Fill(1056)))
        << length;
  }
}

}  // namespace
