// The steps of the VSD document's operations: what a write that fails leaves, what a read leaves of
// what a record held, and what there is to do where there is no document.
#include <algorithm>
#include <climits>
#include <optional>

#include "support/Allocations.h"
#include "support/FolderNames.h"
#include "vsd/VSDDocuments.h"

namespace vkcl::testing {
namespace {

/// What the writes are given.
struct Given {
  Given() {
    SetText(param.Make, "A maker of a long name");
    SetText(param.Model, "A model of a long name");
    SetText(param.MediaName, "A medium of a long name");
    param.ResolutionX = 720.0f;
    param.DriverOption[0] = 0xAB;
    double spotLimits[] = {100, 95.5, 80};
    spot.SetData(3, CString("A spot colour of a long name"), spotLimits);
  }

  VKColorParam param;
  ProfileDataList list = MakeList(0x4C616220, 2, 4, 1, 1, {1.0, -2.0});
  VKSingleInkLimitWithLinRef single = SingleLimits({100, 95.5, 80});
  VKSpotSingleInkLimit spot;
  double starts[2] = {1.0, 2.0};
  double more[2] = {3.0, 4.0};
};

/// A write and the lines that it adds to the outline of an empty document.
struct Write {
  const char* what;
  int (*run)(VSDProfileHandler& handler, Given& given);
  std::string lines;
};

/// The six elements of the list that is given, behind this indent.
std::string ListLines(const std::string& indent) {
  return Cat(indent, "DataFormat=1281450528\n", indent, "NumOfSamples=2\n", indent, "ColorMode=4\n",
             indent, "NumOfColors=1\n", indent, "Measured=1\n", indent,
             "DataList=000000000000f03f00000000000000c0\n");
}

std::vector<Write> Writes() {
  using H = VSDProfileHandler;
  using G = Given;
  return {
      {"colour parameters", [](H& h, G& g) { return h.WriteVKColorParam(g.param); },
       "  VK_VSD_COLORPARAM=\n    Make=A maker of a long name\n    Model=A model of a long name\n"
       "    MediaName=A medium of a long name\n    MediaID=0\n    PrintMode=0\n    ResolutionID=0\n"
       "    ResolutionX=720.000000\n    ResolutionY=0.000000\n    ColorMode=0\n"
       "    DriverColorMode=0\n    DitherMethod=0\n"
       "    DriverOption=ab" +
           Repeated("00", 255) + "\n"},
      {"reference data", [](H& h, G& g) { return h.WriteVSDReferenceData(0, g.list); },
       "  ReferenceData=\n    Small=\n" + ListLines("      ")},
      {"measurement data", [](H& h, G& g) { return h.WriteVSDMeasurementData(1, g.list); },
       "  MeasurementData=\n    Medium=\n" + ListLines("      ")},
      {"inverted data", [](H& h, G& g) { return h.WriteVSDInvertedData(2, g.list); },
       "  InvertedData=\n    Large=\n" + ListLines("      ")},
      {"verified reference", [](H& h, G& g) { return h.WriteVerifyReferenceData(g.list); },
       "  ReferenceDataVerify=\n" + ListLines("    ")},
      {"verified measurement", [](H& h, G& g) { return h.WriteVerifyMeasurementData(g.list); },
       "  MeasurementDataVerify=\n" + ListLines("    ")},
      {"starts", [](H& h, G& g) { return h.WriteMediumAndLargeStart(g.starts, g.more, 2); },
       "  MediumStart=\n    NumOfColors=2\n    DataList=000000000000f03f0000000000000040\n"
       "  LargeStart=\n    DataList=00000000000008400000000000001040\n"},
      {"scale", [](H& h, G& g) { return h.WriteLargeDotScale(g.starts, 2); },
       "  LargeDotScale=\n    NumOfColors=2\n    DataList=000000000000f03f0000000000000040\n"},
      {"single ink limits", [](H& h, G& g) { return h.WriteVKSingleInkLimits(g.single); },
       "  VK_VSD_SINGLE_INKLIMITS=\n    Num_of_Channels=3\n    Values=100.00;95.50;80.00\n"},
      {"spot ink limits", [](H& h, G& g) { return h.WriteVKSpotSIL(g.spot); },
       "  VK_VSD_SPOT_SINGLE_INKLIMITS=\n    Num_of_Channels=3\n"
       "    ChannelS=A spot colour of a long name\n    Values=100.00;95.50;80.00\n"},
  };
}

/// A small write that makes a document modified, and its lines.
int WriteFifty(VSDProfileHandler& handler) {
  return handler.WriteVKSingleInkLimits(SingleLimits({50}));
}
constexpr std::string_view kFifty =
    "  VK_VSD_SINGLE_INKLIMITS=\n    Num_of_Channels=1\n    Values=50.00\n";

/// Writes before the one that is looked at, which only take room and do not make a document
/// modified: of scales without values, and of one with values.
struct Room {
  int scales = 0;
  int values = 0;

  void Take(VSDProfileHandler& handler) const {
    std::vector<double> zeros(static_cast<std::size_t>(values));
    for (int i = 0; i < scales; ++i) EXPECT_EQ(handler.WriteLargeDotScale(nullptr, 0), 1);
    EXPECT_EQ(handler.WriteLargeDotScale(zeros.data(), values), 1);
  }
  std::string Lines() const {
    const std::string head = "  LargeDotScale=\n    NumOfColors=";
    return Repeated(head + "0\n    DataList=\n", static_cast<std::size_t>(scales)) + head +
           std::to_string(values) +
           "\n    DataList=" + std::string(static_cast<std::size_t>(16 * values), '0') + "\n";
  }
};

/// The lines of a document after those of the room and before those of its last write, WriteFifty.
std::string LinesBetween(Sidecar& file, const Room& room) {
  const std::string before = "VK_VSD_PROFILE=\n" + room.Lines();
  const std::string outline = file.SavedOutline();
  EXPECT_TRUE(outline.starts_with(before) && outline.ends_with(kFifty)) << outline;
  if (outline.size() < before.size() + kFifty.size()) return "too short";
  return outline.substr(before.size(), outline.size() - before.size() - kFifty.size());
}

/// Rooms after which the document asks for another block of memory within the write, at any place
/// of it: there an append itself can fail, and not just the making of its text.
std::vector<Room> RoomsBeforeABlock(const Write& write) {
  const TempDir dir;
  const VSDProfileHandler none(AFilePath(dir.File("missing.icc")), 1);
  const auto asks = [&](const Room& room) {
    Sidecar file;
    Given given;
    room.Take(file.handler);
    const std::int64_t live = LiveAllocations();
    EXPECT_EQ(write.run(file.handler, given), 1);
    const bool more = LiveAllocations() > live;
    file.handler = none;  // so that nothing is saved
    return more;
  };
  Room room;
  while (room.scales < 1000 && !asks(room)) ++room.scales;
  room.scales = std::max(room.scales - 2, 0);
  std::vector<Room> rooms;
  for (; room.values < 1000; room.values += 4) {
    if (asks(room)) {
      rooms.push_back(room);
    } else if (!rooms.empty()) {
      break;
    }
  }
  return rooms;
}

/// A list that holds something of everything.
ProfileDataList UsedList() {
  ProfileDataList list = MakeList(0x11111111, 3, 0x22, 1, 2, {7, 8, 9});
  list.PerSample = new std::int32_t[3]{4, 5, 6};
  return list;
}

/// A document with these elements as its small measurements and its verified reference.
std::string ListText(const std::string& elements) {
  return VsdText(Element("MeasurementData", Element("Small", elements)) +
                 Element("ReferenceDataVerify", elements));
}

using ReadList = int (*)(VSDProfileHandler& handler, ProfileDataList& list);
constexpr ReadList kListReads[] = {
    [](VSDProfileHandler& h, ProfileDataList& list) { return h.ReadVSDMeasurementData(0, list); },
    [](VSDProfileHandler& h, ProfileDataList& list) { return h.ReadVerifyReferenceData(list); },
};

// Writes that fail.

/// Has each allocation of a write fail. The length of the most lines that a failed one left.
std::size_t MostKept(const Write& write, const Room& room) {
  std::size_t most = 0;
  bool reached = true;
  for (std::size_t which = 0; reached && which < 1000; ++which) {
    SCOPED_TRACE(::testing::Message() << write.what << " after " << room.scales << " and "
                                      << room.values << ", allocation " << which);
    Sidecar file;
    Given given;
    room.Take(file.handler);
    int written = -1;
    {
      const AllocationFailsAt shortage(which);
      written = write.run(file.handler, given);
      reached = AllocationFailsAt::Reached();
    }
    if (written != 1) {
      EXPECT_EQ(written, 0);
      EXPECT_TRUE(reached);
      EXPECT_EQ(file.handler.SaveToFile(), 1);
      EXPECT_FALSE(file.Exists()) << "it counts as modified";
    }
    // What was appended before the failure stays, and is saved with another write.
    EXPECT_EQ(WriteFifty(file.handler), 1);
    const std::string kept = LinesBetween(file, room);
    EXPECT_TRUE(write.lines.starts_with(kept)) << kept;
    EXPECT_EQ(kept.size() == write.lines.size(), written == 1) << kept;
    if (written != 1) most = std::max(most, kept.size());
  }
  EXPECT_FALSE(reached);
  return most;
}

TEST(VSDSteps, AnAppendThatFailsEndsTheWriteAndDoesNotModify) {
  const FoldersInMemory folders;
  for (const Write& write : Writes()) {
    EXPECT_GT(MostKept(write, Room()), write.lines.find('\n') + 1) << write.what;
    const std::vector<Room> rooms = RoomsBeforeABlock(write);
    EXPECT_FALSE(rooms.empty()) << write.what;
    for (const Room& room : rooms) MostKept(write, room);
  }
}

TEST(VSDSteps, WithoutARootEveryOperationFails) {
  const TempDir dir;
  int without = 0;
  bool reached = true;
  for (std::size_t which = 0; reached; ++which) {
    ASSERT_LT(which, 100u);
    SCOPED_TRACE(which);
    const AFilePath path(dir.File("paper.icc"));
    std::optional<VSDProfileHandler> handler;
    {
      const AllocationFailsAt shortage(which, Shortage::Lasting);
      handler.emplace(path, 0);
      reached = AllocationFailsAt::Reached();
    }
    if (handler->IsValid() == 1) continue;
    ++without;
    Given given;
    for (const Write& write : Writes()) EXPECT_EQ(write.run(*handler, given), 0) << write.what;
    VKColorParam param;
    EXPECT_EQ(handler->ReadVKColorParam(param), 0);
    ProfileDataList list = UsedList();
    for (int size = 0; size < 3; ++size) {
      EXPECT_EQ(handler->ReadVSDReferenceData(size, list), 0);
      EXPECT_EQ(handler->ReadVSDMeasurementData(size, list), 0);
      EXPECT_EQ(handler->ReadVSDInvertedData(size, list), 0);
    }
    EXPECT_EQ(handler->ReadVerifyReferenceData(list), 0);
    EXPECT_EQ(handler->ReadVerifyMeasurementData(list), 0);
    EXPECT_EQ(list.NumOfSamples, 3);
    EXPECT_NE(list.DataList, nullptr);
    int count = 99;
    EXPECT_EQ(handler->ReadMediumAndLargeStart(given.starts, given.more, count), 0);
    EXPECT_EQ(handler->ReadLargeDotScale(given.starts, count), 0);
    EXPECT_EQ(count, 99);
    EXPECT_EQ(handler->ReadVKSingleInkLimits(given.single), 0);
    EXPECT_EQ(handler->ReadVKSpotSIL(given.spot), 0);
    EXPECT_EQ(given.single.count, 3);
    EXPECT_EQ(given.spot.count, 3);
    EXPECT_EQ(handler->IsComplete(), 0);
    EXPECT_EQ(handler->SaveToFile(), 1);
    handler.reset();
    EXPECT_EQ(FilesIn(dir), 0u);
  }
  EXPECT_GT(without, 1);
}

// Opening and assigning.

TEST(VSDSteps, AnyArgumentButZeroOpensAndBeginsNoDocument) {
  for (const int openExisting : {1, 2, -1, 256, INT_MAX, INT_MIN}) {
    SCOPED_TRACE(openExisting);
    const TempDir dir;
    const std::string good = dir.Write("good.icc", BytesOf(EverythingText()));
    const std::string other = dir.Write("other.icc", BytesOf("<RootElement/>"));
    {
      VSDProfileHandler opened(AFilePath(good), openExisting);
      EXPECT_EQ(opened.IsValid(), 1);
      EXPECT_EQ(opened.IsComplete(), 1);
      VSDProfileHandler wrong(AFilePath(other), openExisting);
      EXPECT_EQ(wrong.IsValid(), 0);
      VSDProfileHandler missing(AFilePath(dir.File("missing.icc")), openExisting);
      EXPECT_EQ(missing.IsValid(), 0);
      EXPECT_EQ(WriteFifty(wrong), 1);
      EXPECT_EQ(WriteFifty(missing), 1);
    }
    EXPECT_EQ(FileText(good), EverythingText());
    EXPECT_EQ(FileText(other), "<RootElement/>");
    EXPECT_EQ(FilesIn(dir), 2u);
  }
}

// What says that it is valid can be written to.
TEST(VSDSteps, WhereMemoryIsShortADocumentIsWholeOrInvalid) {
  int invalid = 0;
  bool reached = true;
  for (std::size_t which = 0; reached && which < 100; ++which) {
    const TempDir dir;
    std::optional<VSDProfileHandler> handler;
    const AFilePath path(dir.File("f.xml"));
    {
      const AllocationFailsAt shortage(which);
      handler.emplace(path, 0);
      reached = AllocationFailsAt::Reached();
    }
    EXPECT_EQ(handler->IsValid(), WriteFifty(*handler)) << which;
    invalid += handler->IsValid() == 0 ? 1 : 0;
  }
  EXPECT_GT(invalid, 0);
}

TEST(VSDSteps, AnInvalidDocumentThatIsAssignedToTakesOverEverything) {
  Sidecar file;
  ASSERT_EQ(WriteFifty(file.handler), 1);
  const TempDir dir;
  {
    VSDProfileHandler target(AFilePath(dir.File("missing.icc")), 1);
    ASSERT_EQ(target.IsValid(), 0);
    target = file.handler;
    EXPECT_EQ(target.IsValid(), 1);
    VKSingleInkLimitWithLinRef limits;
    EXPECT_EQ(target.ReadVKSingleInkLimits(limits), 1);
    EXPECT_EQ(LimitsOf(limits)[0], 50);
    EXPECT_FALSE(file.Exists());
  }
  EXPECT_TRUE(file.Exists()) << "its end saves to the path that it took over";
  EXPECT_EQ(FilesIn(dir), 0u);
}

// What a read leaves.

TEST(VSDSteps, BytesAfterTheTerminatorOfATextStay) {
  const std::string medium(126, 'm');
  Sidecar file(VsdText(Element(
      "VK_VSD_COLORPARAM", Element("Make", "A make") + "<Model/>" + Element("MediaName", medium))));
  VKColorParam param;
  std::memset(param.Make, 'x', sizeof param.Make);
  std::memset(param.Model, 'y', sizeof param.Model);
  std::memset(param.MediaName, 'z', sizeof param.MediaName);
  EXPECT_EQ(file.handler.ReadVKColorParam(param), 0) << "there are no other elements";
  const std::string end(1, '\0');
  EXPECT_EQ(std::string(param.Make, 128), "A make" + end + std::string(121, 'x'));
  EXPECT_EQ(std::string(param.Model, 128), end + std::string(127, 'y'));
  EXPECT_EQ(std::string(param.MediaName, 128), medium + end + "z");
}

TEST(VSDSteps, AFailedReadKeepsTheArraysThatFitTheCounters) {
  const char* const names[] = {"DataFormat",  "NumOfSamples", "ColorMode",
                               "NumOfColors", "Measured",     "DataList"};
  std::vector<std::string> rows = {ListElements("-9", "3", "10", "1", "1", "no digits")};
  for (const char* const missing : names) {
    std::string elements = ListElements("-9", "3", "10", "1", "1", Repeated("00", 24));
    const std::string open = Cat("<", missing, ">");
    const std::string close = Cat("</", missing, ">");
    elements.replace(elements.find(open), open.size(), "<Unasked>");
    elements.replace(elements.find(close), close.size(), "</Unasked>");
    rows.push_back(elements);
  }
  for (const std::string& row : rows) {
    Sidecar file(ListText(row));
    ASSERT_EQ(file.handler.IsValid(), 1);
    for (const ReadList read : kListReads) {
      ProfileDataList list = UsedList();
      const double* const values = list.DataList;
      const std::int32_t* const perSample = list.PerSample;
      EXPECT_EQ(read(file.handler, list), 0) << row;
      ASSERT_EQ(list.DataList, values) << row;
      ASSERT_EQ(list.PerSample, perSample) << row;
      EXPECT_EQ(std::vector<double>(values, values + 3), (std::vector<double>{7, 8, 9}));
      EXPECT_EQ(perSample[2], 6);
    }
  }
}

TEST(VSDSteps, PerSampleIntegersStayAsLongAsTheNumberOfSamples) {
  const std::string digits = Repeated("000000000000f03f", 6);
  const std::string cut = "<DataFormat>1</DataFormat><NumOfSamples>";
  const struct {
    std::string elements;
    int result;
    bool stay;
  } rows[] = {
      {ListElements("1", "3", "0", "1", "0", digits), 1, true},
      {ListElements("1", "3", "0", "2", "0", digits), 1, true},
      {ListElements("1", "2", "0", "1", "0", digits), 1, false},
      {ListElements("1", "4", "0", "1", "0", digits), 1, false},
      {ListElements("1", "0", "0", "1", "0", ""), 1, false},
      // Reads that fail before the values, and at them.
      {"<NumOfSamples>2</NumOfSamples>", 0, true},
      {cut + "3</NumOfSamples>", 0, true},
      {cut + "2</NumOfSamples>", 0, false},
      {ListElements("1", "3", "0", "2", "0", "no digits"), 0, true},
      {ListElements("1", "4", "0", "1", "0", "no digits"), 0, false},
  };
  for (const auto& row : rows) {
    Sidecar file(ListText(row.elements));
    for (const ReadList read : kListReads) {
      ProfileDataList list = UsedList();
      const std::int32_t* const perSample = list.PerSample;
      EXPECT_EQ(read(file.handler, list), row.result) << row.elements;
      EXPECT_EQ(list.PerSample, row.stay ? perSample : nullptr) << row.elements;
      if (row.stay && list.PerSample == perSample) {
        EXPECT_EQ(perSample[0], 4);
        EXPECT_EQ(perSample[2], 6);
      }
    }
  }
}

TEST(VSDSteps, AReadReleasesTheValuesThatItReplaces) {
  Sidecar file(ListText(ListElements("1", "4", "0", "1", "0", Repeated("00", 32))));
  for (const ReadList read : kListReads) {
    const std::int64_t live = LiveAllocations();
    {
      ProfileDataList list = UsedList();
      EXPECT_EQ(read(file.handler, list), 1);
      EXPECT_EQ(read(file.handler, list), 1);
    }
    EXPECT_EQ(LiveAllocations(), live);
  }
}

}  // namespace
}  // namespace vkcl::testing
