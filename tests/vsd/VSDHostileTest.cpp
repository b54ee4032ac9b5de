// VSD documents that others wrote, that were damaged, or that were made to do harm; and long random
// lives of a document beside a simple model.
#include <algorithm>
#include <array>
#include <map>
#include <random>

#include "support/SystemCalls.h"
#include "vsd/VSDDocuments.h"

namespace {

using vkcl::testing::BitsOf;
using vkcl::testing::BytesOf;
using vkcl::testing::Cat;
using vkcl::testing::EverythingText;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::FilesIn;
using vkcl::testing::FileText;
using vkcl::testing::LimitsOf;
using vkcl::testing::ListElements;
using vkcl::testing::MakeList;
using vkcl::testing::MemoryLimit;
using vkcl::testing::OpenHandles;
using vkcl::testing::Outline;
using vkcl::testing::Repeated;
using vkcl::testing::SampleParam;
using vkcl::testing::SampleParamElements;
using vkcl::testing::Sidecar;
using vkcl::testing::SingleLimits;
using vkcl::testing::TempDir;
using vkcl::testing::Utf8Host;
using vkcl::testing::VsdText;
using vkcl::testing::WriteEverything;

/// Reads every part of a document and uses what came of it. The results, in a fixed order.
std::vector<int> ReadEverything(VSDProfileHandler& handler) {
  std::vector<int> results;
  VKColorParam param;
  std::memset(param.reservedText1, 'g', sizeof param.reservedText1);
  results.push_back(handler.ReadVKColorParam(param));
  for (const auto* field : {&param.Make, &param.Model, &param.MediaName}) {
    EXPECT_EQ((*field)[127], 0);
  }
  EXPECT_EQ(param.reservedText1[0], 'g');
  for (int size = -1; size <= 3; ++size) {
    for (const auto read :
         {&VSDProfileHandler::ReadVSDReferenceData, &VSDProfileHandler::ReadVSDMeasurementData,
          &VSDProfileHandler::ReadVSDInvertedData}) {
      ProfileDataList list = MakeList(1, 1, 1, 1, 1, {1.0});
      results.push_back((handler.*read)(size, list));
      const ProfileDataList copy(list);  // walks over its values
      EXPECT_EQ(list.GetDataSize(), copy.GetDataSize());
    }
  }
  for (const auto read : {&VSDProfileHandler::ReadVerifyReferenceData,
                          &VSDProfileHandler::ReadVerifyMeasurementData}) {
    ProfileDataList list = MakeList(1, 1, 1, 1, 1, {1.0});
    results.push_back((handler.*read)(list));
    const ProfileDataList copy(list);
    EXPECT_EQ(list.GetDataSize(), copy.GetDataSize());
  }
  double medium[2] = {};
  double large[2] = {};
  int count = 0;
  results.push_back(handler.ReadMediumAndLargeStart(medium, large, 2, count));
  results.push_back(handler.ReadLargeDotScale(medium, 2, count));
  VKSingleInkLimitWithLinRef single;
  results.push_back(handler.ReadVKSingleInkLimits(single));
  EXPECT_EQ(single.size, 140);
  VKSpotSingleInkLimit spot;
  results.push_back(handler.ReadVKSpotSIL(spot));
  if (results.back() == 1) {
    EXPECT_STREQ(spot.name + std::strlen(spot.name) - 1, "\t");
    if (spot.count > 0) {
      EXPECT_FALSE(spot.limits == nullptr);
    }
  }
  results.push_back(handler.IsComplete());
  return results;
}

/// Fails unless the document says what WriteEverything wrote.
void ExpectEverything(VSDProfileHandler& handler) {
  ASSERT_EQ(handler.IsValid(), 1);
  EXPECT_EQ(handler.IsComplete(), 1);
  VKColorParam param;
  EXPECT_EQ(handler.ReadVKColorParam(param), 1);
  EXPECT_STREQ(param.Make, "Some Maker");
  EXPECT_STREQ(param.Model, "Model <9> & \"more\"");
  EXPECT_STREQ(param.MediaName, "Gloss paper");
  EXPECT_EQ(param.MediaID, 17);
  EXPECT_EQ(param.PrintMode, -3);
  EXPECT_EQ(param.ResolutionID, 5);
  EXPECT_EQ(param.ResolutionX, 720.0f);
  EXPECT_EQ(param.ResolutionY, 1440.5f);
  EXPECT_EQ(param.ColorMode, -2147483647);
  EXPECT_EQ(param.DriverColorMode, 2);
  EXPECT_EQ(param.DitherMethod, 3);
  EXPECT_EQ(param.DriverOption[0], 0x00);
  EXPECT_EQ(param.DriverOption[1], 0xAB);
  EXPECT_EQ(param.DriverOption[255], 0x5C);
  const auto expect = [&](int result, const ProfileDataList& list, double first, int measured) {
    EXPECT_EQ(result, 1);
    EXPECT_EQ(list.Measured, measured);
    EXPECT_TRUE(list == MakeList(0x4C616220, 2, 4, 1, 0, {first, -2.0})) << first;
    EXPECT_NE(list.DataList, nullptr);
  };
  ProfileDataList list;
  for (int size = 0; size < 3; ++size) {
    expect(handler.ReadVSDReferenceData(size, list), list, 1.0, 0);
    expect(handler.ReadVSDMeasurementData(size, list), list, 0.5, 2);
    expect(handler.ReadVSDInvertedData(size, list), list, 0.25, 0);
  }
  expect(handler.ReadVerifyReferenceData(list), list, 4.0, 0);
  expect(handler.ReadVerifyMeasurementData(list), list, 8.0, 1);
  double medium[2] = {};
  double large[2] = {};
  int count = 0;
  EXPECT_EQ(handler.ReadMediumAndLargeStart(medium, large, 2, count), 1);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(medium[0], 1.0);
  EXPECT_EQ(medium[1], 2.0);
  EXPECT_EQ(large[0], 3.0);
  EXPECT_EQ(large[1], 4.0);
  EXPECT_EQ(handler.ReadLargeDotScale(medium, 2, count), 1);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(medium[0], 0.5);
  VKSingleInkLimitWithLinRef single;
  EXPECT_EQ(handler.ReadVKSingleInkLimits(single), 1);
  EXPECT_EQ(single.count, 3);
  EXPECT_EQ(LimitsOf(single)[1], 95.5);
  EXPECT_EQ(LimitsOf(single)[2], 80);
  VKSpotSingleInkLimit spot;
  ASSERT_EQ(handler.ReadVKSpotSIL(spot), 1);
  EXPECT_STREQ(spot.name, "Spot 1\t");
  ASSERT_EQ(spot.count, 2);
  EXPECT_EQ(spot.limits[0], 75.25);
  EXPECT_EQ(spot.limits[1], 60);
}

/// A new file in the place of the old one. Some file systems carry a file that is written over to
/// the medium at once, which takes time.
void WriteAnew(const std::string& path, const std::string& content) {
  std::filesystem::remove(path);
  vkcl::testing::WriteFile(path, BytesOf(content));
}

/// Every operation on whatever a file gives; the last save replaces it when it was a document.
void CallEverything(const std::string& path) {
  VSDProfileHandler handler(AFilePath(path), 1);
  ReadEverything(handler);
  WriteEverything(handler);
  ReadEverything(handler);
  EXPECT_EQ(handler.SaveToFile(), 1);
  if (handler.IsValid() != 0) {
    VSDProfileHandler again(AFilePath(path), 1);
    EXPECT_EQ(again.IsValid(), 1) << "what is saved can be opened";
  }
}

std::string Replaced(std::string text, const std::string& what, const std::string& with) {
  for (std::size_t at = text.find(what); at != std::string::npos;
       at = text.find(what, at + with.size())) {
    text.replace(at, what.size(), with);
  }
  return text;
}

/// The text in UTF-16; it must be ASCII.
std::string Utf16(const std::string& text, bool bigEndian) {
  std::string wide = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
  for (const char c : text) {
    if (bigEndian) wide += '\0';
    wide += c;
    if (!bigEndian) wide += '\0';
  }
  return wide;
}

// Documents of others.

TEST(VSDDocumentOfOthers, IsReadAsItStands) {
  Sidecar file(EverythingText());
  ExpectEverything(file.handler);
}

TEST(VSDDocumentOfOthers, MayBeLaidOutInAnyWay) {
  const std::string text = EverythingText();
  for (const std::string blank : {"\n", "\r\n", "\r", "\t", "   \n\t\t  ", "\n\n\n"}) {
    std::string laidOut = Replaced(text, "><", Cat(">", blank, "<"));
    // Digits are wrapped, too, as a program that lays out text anew leaves them.
    for (const std::string digits :
         {"5c5c5c5c5c5c5c5c", "00000000000000c0", "0000000000000040", "0000000000001040"}) {
      laidOut = Replaced(laidOut, digits, Cat(blank, digits, blank));
    }
    laidOut = Replaced(laidOut, "<NumOfSamples>", Cat("<NumOfSamples>", blank));
    laidOut = Replaced(laidOut, "</Num_of_Channels>", Cat(blank, "</Num_of_Channels>"));
    laidOut = Replaced(laidOut, ";95.50", Cat(";", blank, "95.50"));
    Sidecar file(laidOut);
    ExpectEverything(file.handler);
  }
}

TEST(VSDDocumentOfOthers, MayHaveCommentsAndInstructions) {
  std::string text = EverythingText();
  text = Replaced(text, "<VK_VSD_PROFILE>",
                  "<?sheet a?><!-- <VK_VSD_PROFILE> --><VK_VSD_PROFILE><!-- first -->");
  text = Replaced(text, "<Small>", "<!-- <Small/> --><Small><?pi <DataFormat>7</DataFormat> ?>");
  text = Replaced(text, "Some Maker", "Some<!-- <&> - --> Maker<?end?>");
  text = Replaced(text, "720.000000", "7<!--9-->20.0<?x 1?>00000");
  text = Replaced(text, "5c5c5c5c5c5c5c5c", "5c5<!-- 0123 -->c5c5c5c5c5c5c");
  text = Replaced(text, "95.50;", "95<!--;-->.50<?x ;?>;");
  Sidecar file(text + "<!-- the end --><?end?>\n");
  ExpectEverything(file.handler);
}

TEST(VSDDocumentOfOthers, MayHaveCharacterDataSections) {
  std::string text = EverythingText();
  text = Replaced(text, "Model &lt;9&gt; &amp; \"more\"", "<![CDATA[Model <9> & \"more\"]]>");
  text = Replaced(text, "Some Maker", "Some<![CDATA[ ]]>Ma<![CDATA[k]]><![CDATA[]]>er");
  text = Replaced(text, "Spot 1", "<![CDATA[Spot 1]]>");
  text = Replaced(text, "<NumOfSamples>2<", "<NumOfSamples><![CDATA[2]]><");
  text = Replaced(text, "100.00;95.50", "<![CDATA[100.00;95]]>.50");
  text = Replaced(text, "00ab5c5c", "<![CDATA[00]]>ab<![CDATA[5c]]>5c");
  Sidecar file(text);
  ExpectEverything(file.handler);
}

TEST(VSDDocumentOfOthers, MayHaveEntitiesAndCharacterReferences) {
  std::string text = EverythingText();
  text = Replaced(text, "Model &lt;9&gt; &amp; \"more\"",
                  "&#77;&#x6f;del &#60;9&#x3E; &#38; &quot;more&quot;");
  text = Replaced(text, "Some Maker", "Some&#x20;Maker");
  text = Replaced(text, "720.000000", "72&#48;.0");
  text = Replaced(text, "00ab5c5c", "0&#x30;ab5&#99;5c");
  Sidecar file(text);
  ExpectEverything(file.handler);
}

TEST(VSDDocumentOfOthers, MayHaveAByteOrderMark) {
  Sidecar file("\xEF\xBB\xBF" + EverythingText());
  ExpectEverything(file.handler);
}

TEST(VSDDocumentOfOthers, MayBeInUtf16) {
  for (const bool bigEndian : {false, true}) {
    Sidecar file(Utf16(Replaced(EverythingText(), "UTF-8", "UTF-16"), bigEndian));
    ExpectEverything(file.handler);
    ASSERT_EQ(file.handler.WriteVKSingleInkLimits(SingleLimits({1})), 1);
    ASSERT_EQ(file.handler.SaveToFile(), 1);
    EXPECT_TRUE(Outline(file.Text()).starts_with("VK_VSD_PROFILE=\n")) << "saved in UTF-8";
    VSDProfileHandler again(AFilePath(file.path), 1);
    ExpectEverything(again);
  }
}

TEST(VSDDocumentOfOthers, MayBeInLatin1) {
  const Utf8Host host;
  std::string text = Replaced(EverythingText(), "UTF-8", "ISO-8859-1");
  Sidecar file(Replaced(text, "Gloss paper", "Papier mat\xE9riel"));
  VKColorParam param;
  ASSERT_EQ(file.handler.ReadVKColorParam(param), 1);
  EXPECT_STREQ(param.MediaName, "Papier mat\xC3\xA9riel");
}

TEST(VSDDocumentOfOthers, NeedsNoDeclaration) {
  const std::string text = EverythingText();
  Sidecar file(text.substr(text.find("<VK_VSD_PROFILE>")));
  ExpectEverything(file.handler);
}

TEST(VSDDocumentOfOthers, MayHaveAttributesAndOtherElements) {
  const std::string other = "<Unasked a=\"1\"><Small>5</Small><Make>no</Make></Unasked>";
  std::string text = EverythingText();
  for (const std::string name :
       {"Small", "Large", "VK_VSD_PROFILE", "VK_VSD_COLORPARAM", "MeasurementData",
        "ReferenceDataVerify", "MediumStart", "LargeStart", "VK_VSD_SPOT_SINGLE_INKLIMITS"}) {
    text = Replaced(text, Cat("<", name, ">"),
                    Cat("<", name, " xmlns='urn:other' b=\"&lt;>\" >", other));
  }
  text = Replaced(text, "<DataList>", "<DataList size=\"1\">");
  Sidecar file(text);
  ExpectEverything(file.handler);
  // What nobody asks for is kept.
  ASSERT_EQ(file.handler.WriteVKSingleInkLimits(SingleLimits({1})), 1);
  ASSERT_EQ(file.handler.SaveToFile(), 1);
  const std::string saved = file.Text();
  std::size_t kept = 0;
  for (std::size_t at = saved.find("<Unasked"); at != std::string::npos;
       at = saved.find("<Unasked", at + 1)) {
    ++kept;
  }
  EXPECT_EQ(kept, 13u);
  VSDProfileHandler again(AFilePath(file.path), 1);
  ExpectEverything(again);
}

TEST(VSDDocumentOfOthers, KeepsItsCommentsWhenSaved) {
  Sidecar file(
      VsdText("<!-- by hand --><?keep this?><MeasurementData><!-- inner -->"
              "</MeasurementData>"));
  ASSERT_EQ(file.handler.WriteVSDMeasurementData(0, MakeList(1, 0, 0, 0, 0, {})), 1);
  ASSERT_EQ(file.handler.SaveToFile(), 1);
  const std::string saved = file.Text();
  EXPECT_NE(saved.find("<!-- by hand -->"), std::string::npos);
  EXPECT_NE(saved.find("<!-- inner -->"), std::string::npos);
  EXPECT_NE(saved.find("<?keep this?>"), std::string::npos);
  EXPECT_EQ(Outline(saved),
            Outline(VsdText("<MeasurementData><Small>" + ListElements("1", "0", "0", "0", "0", "") +
                            "</Small></MeasurementData>")));
}

TEST(VSDDocumentOfOthers, MayHaveItsElementsInAnyOrder) {
  // The children of the root backwards, and those of the colour parameters.
  const std::string text = EverythingText();
  const std::string root = "<VK_VSD_PROFILE>";
  std::string inner = text.substr(text.find(root) + root.size());
  inner.resize(inner.find("</VK_VSD_PROFILE>"));
  const auto backwards = [](std::string elements) {
    std::string turned;
    while (!elements.empty()) {
      const std::string name = elements.substr(1, elements.find('>') - 1);
      const std::string close = Cat("</", name, ">");
      const std::size_t end = elements.find(close) + close.size();
      turned.insert(0, elements, 0, end);
      elements.erase(0, end);
    }
    return turned;
  };
  const std::string param = SampleParamElements();
  Sidecar file(VsdText(Replaced(backwards(inner), param, backwards(param))));
  ExpectEverything(file.handler);
}

TEST(VSDDocumentOfOthers, WhoseRootIsOfOtherCaseIsNone) {
  const std::string text = EverythingText();
  for (const std::string root : {"vk_vsd_profile", "VK_VSD_Profile", "Vk_vsd_profile"}) {
    const std::string other = Replaced(text, "VK_VSD_PROFILE", root);
    Sidecar file(other);
    EXPECT_EQ(file.handler.IsValid(), 0) << root;
    ASSERT_EQ(file.handler.WriteVKSingleInkLimits(SingleLimits({1})), 1);
    EXPECT_EQ(file.handler.SaveToFile(), 1);
    EXPECT_EQ(file.Text(), other);
  }
}

// Damaged documents.

TEST(VSDHostileDocument, CutAtEveryByteIsNoDocumentAndNoHarm) {
  const std::string text = EverythingText();
  const std::size_t end = text.rfind('>') + 1;
  const TempDir dir;
  const std::string path = dir.File("paper.icc");
  const int handles = OpenHandles();
  for (std::size_t length = 0; length < text.size(); ++length) {
    const std::string cut = text.substr(0, length);
    WriteAnew(path, cut);
    {
      VSDProfileHandler handler(AFilePath(path), 1);
      ASSERT_EQ(handler.IsValid(), length >= end ? 1 : 0) << length;
      const std::vector<int> results = ReadEverything(handler);
      if (length < end) {
        EXPECT_EQ(std::count(results.begin(), results.end(), 0),
                  static_cast<std::ptrdiff_t>(results.size()))
            << length;
        if (length % 50 == 0) {
          ASSERT_EQ(handler.WriteVKSingleInkLimits(SingleLimits({1})), 1);
          EXPECT_EQ(handler.SaveToFile(), 1);
        }
      }
    }
    if (length % 50 == 0) {
      ASSERT_EQ(FileText(path), cut);
    }
  }
  EXPECT_EQ(OpenHandles(), handles);
  EXPECT_EQ(FilesIn(dir), 1u);
}

TEST(VSDHostileDocument, WithElementsCutOffInsideIsNoHarm) {
  // Well-formed throughout: every text of the document is cut at every length.
  const std::string text = EverythingText();
  const TempDir dir;
  const std::string path = dir.File("paper.icc");
  for (const std::string element : {"NumOfSamples", "DataFormat", "Values", "ChannelS",
                                    "ResolutionX", "ColorMode", "Num_of_Channels"}) {
    const std::string open = "<" + element + ">";
    const std::size_t from = text.find(open) + open.size();
    const std::size_t to = text.find('<', from);
    for (std::size_t keep = 0; keep <= to - from; ++keep) {
      WriteAnew(path, text.substr(0, from + keep) + text.substr(to));
      VSDProfileHandler handler(AFilePath(path), 1);
      EXPECT_EQ(handler.IsValid(), 1);
      for (const int result : ReadEverything(handler)) EXPECT_GE(result, 0);
    }
  }
}

TEST(VSDHostileDocument, WithAnyByteChangedIsNoHarm) {
  const std::string text = EverythingText();
  std::mt19937 random(20240611);
  const TempDir dir;
  const std::string path = dir.File("paper.icc");
  const std::string_view likely = "<>/&;\"'-!?[]09afAF. \n";
  for (int round = 0; round < 200; ++round) {
    std::string changed = text;
    for (int i = 0; i < 1 + round % 4; ++i) {
      const std::size_t at = random() % changed.size();
      switch (random() % 4) {
        case 0: changed[at] = static_cast<char>(random() % 256); break;
        case 1: changed[at] = likely[random() % likely.size()]; break;
        case 2: changed.erase(at, 1 + random() % 20); break;
        default:
          changed.insert(at, changed.substr(random() % changed.size(), random() % 40));
          break;
      }
    }
    WriteAnew(path, changed);
    CallEverything(path);
  }
}

TEST(VSDHostileDocument, OfRandomBytesIsNoHarm) {
  std::mt19937 random(7);
  const TempDir dir;
  const std::string path = dir.File("paper.icc");
  for (std::size_t length : {1u, 2u, 3u, 4u, 16u, 1000u, 100000u}) {
    std::string bytes(length, 0);
    for (char& c : bytes) c = static_cast<char>(random() % 256);
    WriteAnew(path, bytes);
    VSDProfileHandler handler(AFilePath(path), 1);
    EXPECT_EQ(handler.IsValid(), 0);
    ReadEverything(handler);
  }
}

// Documents that were made to do harm.

TEST(VSDHostileDocument, WithEntitiesThatGrowIsRefused) {
  const MemoryLimit limit;
  std::string bomb = "<!DOCTYPE VK_VSD_PROFILE [<!ENTITY a0 \"ha\">";
  for (int i = 1; i < 40; ++i) {
    const std::string before = "&a" + std::to_string(i - 1) + ";";
    bomb += "<!ENTITY a" + std::to_string(i) + " \"" + Repeated(before, 10) + "\">";
  }
  bomb +=
      "]><VK_VSD_PROFILE><VK_VSD_COLORPARAM><Make>&a39;</Make></VK_VSD_COLORPARAM>"
      "</VK_VSD_PROFILE>";
  const std::string quadratic = "<!DOCTYPE VK_VSD_PROFILE [<!ENTITY a \"" +
                                std::string(100000, 'a') + "\">]><VK_VSD_PROFILE><Make>" +
                                Repeated("&a;", 100000) + "</Make></VK_VSD_PROFILE>";
  const std::string outside =
      "<!DOCTYPE VK_VSD_PROFILE [<!ENTITY a SYSTEM \"file:///etc/passwd\">]>"
      "<VK_VSD_PROFILE><VK_VSD_COLORPARAM><Make>&a;</Make></VK_VSD_COLORPARAM></VK_VSD_PROFILE>";
  for (const std::string& text : {bomb, quadratic, outside}) {
    Sidecar file(text);
    EXPECT_EQ(file.handler.IsValid(), 0);
    VKColorParam param;
    EXPECT_EQ(file.handler.ReadVKColorParam(param), 0);
    EXPECT_STREQ(param.Make, "");
    ASSERT_EQ(file.handler.WriteVKSingleInkLimits(SingleLimits({1})), 1);
    EXPECT_EQ(file.handler.SaveToFile(), 1);
    EXPECT_EQ(file.Text(), text);
  }
}

TEST(VSDHostileDocument, WithEndlessNestingIsRefused) {
  const MemoryLimit limit;
  for (const std::size_t depth : {1000u, 100000u, 1000000u}) {
    Sidecar whole("<VK_VSD_PROFILE>" + Repeated("<a>", depth) + Repeated("</a>", depth) +
                  "</VK_VSD_PROFILE>");
    EXPECT_EQ(whole.handler.IsValid(), 0);
    Sidecar open("<VK_VSD_PROFILE>" + Repeated("<a>", depth));
    EXPECT_EQ(open.handler.IsValid(), 0);
  }
}

TEST(VSDHostileDocument, OfManyElementsIsSearchedInReasonableTime) {
  std::string text = Repeated("<a/>", 100000) + "<MeasurementData>" + Repeated("<b/>", 100000) +
                     "</MeasurementData>" + Repeated("<ReferenceData/>", 100000);
  Sidecar file(VsdText(text));
  ASSERT_EQ(file.handler.IsValid(), 1);
  EXPECT_EQ(file.handler.IsComplete(), 0);
  ReadEverything(file.handler);
  WriteEverything(file.handler);
  VKColorParam param;
  EXPECT_EQ(file.handler.ReadVKColorParam(param), 1);
  EXPECT_STREQ(param.Make, "Some Maker");
  EXPECT_EQ(file.handler.SaveToFile(), 1);
}

TEST(VSDHostileDocument, OfHugeTextsIsNoHarm) {
  const std::string huge(4 << 20, '9');
  Sidecar file(VsdText("<VK_VSD_COLORPARAM>" + Replaced(SampleParamElements(), "17", huge) +
                       "</VK_VSD_COLORPARAM>" +
                       "<VK_VSD_SINGLE_INKLIMITS><Num_of_Channels>3</Num_of_Channels><Values>" +
                       huge + "</Values></VK_VSD_SINGLE_INKLIMITS>"));
  VKColorParam param;
  EXPECT_EQ(file.handler.ReadVKColorParam(param), 1);
  EXPECT_EQ(param.DitherMethod, 3);
  VKSingleInkLimitWithLinRef limits;
  EXPECT_EQ(file.handler.ReadVKSingleInkLimits(limits), 1);
  EXPECT_EQ(LimitsOf(limits)[0], 100);
}

TEST(VSDHostileDocument, ThatAnnouncesMoreThanItHoldsTakesNoMemory) {
  const char* const numbers[] = {"2147483647", "-2147483648",  "-1", "1000000000", "4294967296",
                                 "65536",      "999999999999", "0",  "536870913",  "0x7fffffff"};
  const std::string text = EverythingText();
  for (const std::string element : {"NumOfSamples", "NumOfColors", "Num_of_Channels", "Measured"}) {
    for (const std::string number : numbers) {
      const MemoryLimit limit;
      std::string changed;
      std::size_t from = 0;
      const std::string open = "<" + element + ">";
      for (std::size_t at = text.find(open); at != std::string::npos; at = text.find(open, from)) {
        changed += text.substr(from, at + open.size() - from) + number;
        from = text.find('<', at + open.size());
      }
      Sidecar file(changed + text.substr(from));
      ASSERT_EQ(file.handler.IsValid(), 1);
      ReadEverything(file.handler);
    }
  }
  for (const std::string number : numbers) {
    const MemoryLimit limit;
    Sidecar file(VsdText(
        "<MeasurementData><Small>" + ListElements(number, number, number, number, number, "00") +
        "</Small></MeasurementData><InvertedData><Large>" +
        ListElements(number, number, number, number, number, "") + "</Large></InvertedData>"));
    ASSERT_EQ(file.handler.IsValid(), 1);
    ReadEverything(file.handler);
  }
}

TEST(VSDHostileDocument, OtherDocumentsOfTheWorldAreNone) {
  for (const std::string text :
       {"<html><body>VK_VSD_PROFILE</body></html>", "<svg xmlns='http://www.w3.org/2000/svg'/>",
        "<x:VK_VSD_PROFILE xmlns:x='urn:x'/>", "{\"VK_VSD_PROFILE\": 1}", "VK_VSD_PROFILE",
        "<VK_VSD_PROFILE/><VK_VSD_PROFILE/>", "<VK_VSD_PROFILE><Make></Model></VK_VSD_PROFILE>",
        "< VK_VSD_PROFILE/>"}) {
    Sidecar file(text);
    EXPECT_EQ(file.handler.IsValid(), 0) << text;
    ReadEverything(file.handler);
  }
  for (const std::string text :
       {"<VK_VSD_PROFILE/>", "<VK_VSD_PROFILE />\n\n", "<VK_VSD_PROFILE></VK_VSD_PROFILE\n>",
        "<VK_VSD_PROFILE xmlns='urn:x'>text</VK_VSD_PROFILE>"}) {
    const Sidecar file(text);
    EXPECT_EQ(file.handler.IsValid(), 1) << text;
  }
}

// Text outside the root, what stands behind a reference to the character 0, and one of two
// attributes of a name would be lost, here or by the next reader: such a document is refused.
TEST(VSDHostileDocument, ThatWouldLoseTextIsNone) {
  for (const std::string text :
       {"text <VK_VSD_PROFILE/>", "<VK_VSD_PROFILE/> text", "<VK_VSD_PROFILE/><![CDATA[text]]>",
        "<VK_VSD_PROFILE a='1' a='2'/>", "<VK_VSD_PROFILE>a&#0;b</VK_VSD_PROFILE>",
        "<VK_VSD_PROFILE>a&#x000;b</VK_VSD_PROFILE>"}) {
    const Sidecar file(text);
    EXPECT_EQ(file.handler.IsValid(), 0) << text;
  }
}

// Slips that lose nothing are forgiven; what is no reference is text.
TEST(VSDHostileDocument, WithSlipsThatLoseNothingIsRead) {
  for (const auto& [written, read] :
       {std::pair<std::string, std::string>{"<Make>a & b</Make>", "a & b"},
        {"<Make>&unknown;</Make>", "&unknown;"},
        {"<Make>&#;&#x;&#10</Make>", "&#;&#x;&#10"}}) {
    Sidecar file("<VK_VSD_PROFILE><VK_VSD_COLORPARAM>" + written +
                 "</VK_VSD_COLORPARAM></VK_VSD_PROFILE>");
    EXPECT_EQ(file.handler.IsValid(), 1) << written;
    VKColorParam param;
    EXPECT_EQ(file.handler.ReadVKColorParam(param), 0) << "the other elements are missing";
    EXPECT_EQ(std::string(param.Make), read);
  }
}

// Random lives of a document.

using Values = std::vector<double>;

/// What a document says: the first of each name that was written.
struct Model {
  std::optional<std::int32_t> mediaID;
  std::map<std::pair<int, int>, Values> lists;  ///< by kind (0 to 2 by size, 3 and 4) and size
  std::map<std::pair<int, int>, int> measured;
  std::optional<std::pair<Values, Values>> starts;
  std::optional<Values> scale;
  std::optional<Values> limits;
  std::optional<std::pair<std::string, Values>> spot;
  int elements = 0;  ///< that were written

  bool IsComplete() const {
    for (int size = 0; size < 3; ++size) {
      const auto found = lists.find({1, size});
      if (found == lists.end() || found->second.empty()) return false;
      if (measured.at({1, size}) < static_cast<int>(found->second.size())) return false;
    }
    return true;
  }
};

int WriteList(VSDProfileHandler& handler, int kind, int size, const ProfileDataList& list) {
  switch (kind) {
    case 0: return handler.WriteVSDReferenceData(size, list);
    case 1: return handler.WriteVSDMeasurementData(size, list);
    case 2: return handler.WriteVSDInvertedData(size, list);
    case 3: return handler.WriteVerifyReferenceData(list);
    default: return handler.WriteVerifyMeasurementData(list);
  }
}

int ReadList(VSDProfileHandler& handler, int kind, int size, ProfileDataList& list) {
  switch (kind) {
    case 0: return handler.ReadVSDReferenceData(size, list);
    case 1: return handler.ReadVSDMeasurementData(size, list);
    case 2: return handler.ReadVSDInvertedData(size, list);
    case 3: return handler.ReadVerifyReferenceData(list);
    default: return handler.ReadVerifyMeasurementData(list);
  }
}

/// One write of random content, to the document and to the model. True when it modifies.
bool WriteSomething(VSDProfileHandler& handler, Model& model, std::mt19937& random) {
  Values values(random() % 5);
  for (double& value : values) value = static_cast<double>(random() % 40000) / 4 - 5000;
  const int count = static_cast<int>(values.size());
  ++model.elements;
  switch (random() % 9) {
    case 0: {
      VKColorParam param = SampleParam();
      param.MediaID = static_cast<std::int32_t>(random());
      EXPECT_EQ(handler.WriteVKColorParam(param), 1);
      if (!model.mediaID) model.mediaID = param.MediaID;
      return true;
    }
    case 1: {
      Values large(values.rbegin(), values.rend());
      EXPECT_EQ(handler.WriteMediumAndLargeStart(values.data(), large.data(), count), 1);
      if (!model.starts) model.starts = {values, large};
      return false;
    }
    case 2:
      EXPECT_EQ(handler.WriteLargeDotScale(values.data(), count), 1);
      if (!model.scale) model.scale = values;
      return false;
    case 3:
      EXPECT_EQ(handler.WriteVKSingleInkLimits(SingleLimits(values)), 1);
      if (!model.limits) model.limits = values;
      return true;
    case 4: {
      const std::string name = "Spot " + std::to_string(random() % 100);
      VKSpotSingleInkLimit spot;
      values.push_back(1);
      spot.SetData(count + 1, CString(name.c_str()), values.data());
      EXPECT_EQ(handler.WriteVKSpotSIL(spot), 1);
      if (!model.spot) model.spot = {name + "\t", values};
      return true;
    }
    default: {
      const int kind = static_cast<int>(random() % 5);
      const int size = kind < 3 ? static_cast<int>(random() % 3) : 0;
      const int measured = static_cast<int>(random() % 8);
      EXPECT_EQ(WriteList(handler, kind, size, MakeList(1, count, 0, 1, measured, values)), 1);
      if (model.lists.try_emplace({kind, size}, values).second) {
        model.measured[{kind, size}] = measured;
      }
      return true;
    }
  }
}

void ExpectAsModel(VSDProfileHandler& handler, const Model& model) {
  VKColorParam param;
  ASSERT_EQ(handler.ReadVKColorParam(param), model.mediaID ? 1 : 0);
  if (model.mediaID) {
    EXPECT_EQ(param.MediaID, *model.mediaID);
  }
  for (int kind = 0; kind < 5; ++kind) {
    for (int size = 0; size < (kind < 3 ? 3 : 1); ++size) {
      ProfileDataList list;
      const auto found = model.lists.find({kind, size});
      ASSERT_EQ(ReadList(handler, kind, size, list), found != model.lists.end() ? 1 : 0);
      if (found == model.lists.end()) continue;
      const Values& values = found->second;
      ASSERT_EQ(list.NumOfSamples, static_cast<int>(values.size()));
      EXPECT_EQ(list.Measured, model.measured.at({kind, size}));
      if (values.empty()) continue;
      ASSERT_NE(list.DataList, nullptr);
      EXPECT_EQ(BitsOf(list.DataList, values.size()), BitsOf(values.data(), values.size()));
    }
  }
  std::array<double, 8> medium = {};
  std::array<double, 8> large = {};
  int count = -1;
  const auto front = [&](const std::array<double, 8>& all) {
    return Values(all.begin(), all.begin() + std::clamp(count, 0, 8));
  };
  ASSERT_EQ(handler.ReadMediumAndLargeStart(medium.data(), large.data(), count),
            model.starts ? 1 : 0);
  if (model.starts) {
    EXPECT_EQ(front(medium), model.starts->first);
    EXPECT_EQ(front(large), model.starts->second);
  }
  ASSERT_EQ(handler.ReadLargeDotScale(medium.data(), count), model.scale ? 1 : 0);
  if (model.scale) {
    EXPECT_EQ(front(medium), *model.scale);
  }
  VKSingleInkLimitWithLinRef limits;
  ASSERT_EQ(handler.ReadVKSingleInkLimits(limits), model.limits ? 1 : 0);
  if (model.limits) {
    ASSERT_EQ(limits.count, static_cast<int>(model.limits->size()));
    Values firstLimits = LimitsOf(limits);
    firstLimits.resize(model.limits->size());
    EXPECT_EQ(firstLimits, *model.limits);
  }
  VKSpotSingleInkLimit spot;
  ASSERT_EQ(handler.ReadVKSpotSIL(spot), model.spot ? 1 : 0);
  if (model.spot) {
    EXPECT_EQ(std::string(spot.name), model.spot->first);
    ASSERT_EQ(spot.count, static_cast<int>(model.spot->second.size()));
    EXPECT_EQ(Values(spot.limits, spot.limits + spot.count), model.spot->second);
  }
  EXPECT_EQ(handler.IsComplete(), model.IsComplete() ? 1 : 0);
}

/// A random life: writes, saves (some of which fail), reads, and reopenings with and without what
/// was not saved.
void Live(unsigned seed) {
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937 random(seed);
  const TempDir dir;
  const AFilePath path(dir.File("paper.icc"));
  Model now;
  std::optional<Model> saved;  // what the file says, when there is one
  bool modified = false;
  std::optional<VSDProfileHandler> handler(std::in_place, path, 0);
  const auto save = [&] {
    if (modified) saved = now;
    modified = false;
  };
  for (int step = 0; step < 60 && !testing::Test::HasFailure(); ++step) {
    switch (random() % 8) {
      case 0:
        EXPECT_EQ(handler->SaveToFile(), 1);
        save();
        break;
      case 1: {  // a save that fails is not tried again
        const FaultAt at(0, Fault::Error);
        EXPECT_EQ(handler->SaveToFile(), modified ? 0 : 1);
        modified = false;
        break;
      }
      case 2:  // closed, which saves, and opened again
        save();
        if (!saved) break;
        handler.reset();
        handler.emplace(path, 1);
        now = *saved;
        EXPECT_EQ(handler->IsValid(), 1);
        break;
      case 3:  // dropped without a save
        if (!saved || random() % 2 != 0) break;
        *handler = VSDProfileHandler(path, 1);
        now = *saved;
        modified = false;
        break;
      case 4: ExpectAsModel(*handler, now); break;
      case 5: {  // a copy writes into the same document, and saves it when it goes
        VSDProfileHandler copy(*handler);
        if (WriteSomething(copy, now, random) || modified) saved = now;
        break;
      }
      default:
        if (WriteSomething(*handler, now, random)) modified = true;
        break;
    }
    EXPECT_EQ(handler->IsValid(), 1);
    EXPECT_EQ(handler->IsComplete(), now.IsComplete() ? 1 : 0);
    EXPECT_EQ(FilesIn(dir), saved ? 1u : 0u) << step;
    if (saved) {
      const std::string outline = Outline(FileText(path.str()));
      int elements = 0;
      for (std::size_t at = 0; (at = outline.find("DataFormat=", at)) != std::string::npos; ++at) {
        ++elements;
      }
      for (const std::string name : {"VK_VSD_COLORPARAM=", "MediumStart=", "LargeDotScale=",
                                     "VK_VSD_SINGLE_INKLIMITS=", "VK_VSD_SPOT_SINGLE_INKLIMITS="}) {
        for (std::size_t at = 0; (at = outline.find("\n  " + name, at)) != std::string::npos;
             ++at) {
          ++elements;
        }
      }
      EXPECT_EQ(elements, saved->elements) << step;
    }
  }
  ExpectAsModel(*handler, now);
  save();
  handler.reset();
  if (saved) {
    VSDProfileHandler last(path, 1);
    EXPECT_EQ(last.IsValid(), 1);
    ExpectAsModel(last, *saved);
  }
}

TEST(VSDDocumentLives, AreAsTheModelSays) {
  for (unsigned seed = 1; seed <= 12; ++seed) Live(seed);
}

}  // namespace
