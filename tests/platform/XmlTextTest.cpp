#include "platform/axml/XmlText.h"

#include <array>
#include <random>

#include "support/HostEncoding.h"

namespace {

using vkcl::IsXmlName;
using vkcl::XmlToHostText;
using vkcl::testing::MadeLocale;
using vkcl::testing::Utf8Host;

using namespace std::string_view_literals;

/// The text as a document holds it.
std::string HostTextToXml(std::string_view text) {
  std::string room = "used before";
  const std::string_view xml = vkcl::HostTextToXml(text, room);
  std::string back = "used before";
  EXPECT_EQ(XmlToHostText(xml, back), XmlToHostText(xml)) << "both forms give the same";
  return std::string(xml);
}

/// Length of the XML 1.0 character at the front of a text of UTF-8; 0 when there is none.
std::size_t XmlCharacter(std::string_view text) {
  const auto at = [&](std::size_t i) -> unsigned {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u;
  };
  const unsigned lead = at(0);
  std::size_t length = 1;
  unsigned code = lead;
  if (lead >= 0xF0) {
    length = 4;
    code = lead & 7;
  } else if (lead >= 0xE0) {
    length = 3;
    code = lead & 15;
  } else if (lead >= 0xC0) {
    length = 2;
    code = lead & 31;
  } else if (lead >= 0x80) {
    return 0;
  }
  for (std::size_t i = 1; i < length; ++i) {
    if ((at(i) & 0xC0) != 0x80) return 0;
    code = code << 6 | (at(i) & 63);
  }
  constexpr std::array<unsigned, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
  if (code < kSmallest[length]) return 0;
  const bool allowed = code == 9 || code == 10 || code == 13 || (code >= 0x20 && code <= 0xD7FF) ||
                       (code >= 0xE000 && code <= 0xFFFD) || (code >= 0x10000 && code <= 0x10FFFF);
  return allowed ? length : 0;
}

/// Whether a document can hold the text and give it back: characters of XML 1.0 in UTF-8.
bool IsForADocument(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = XmlCharacter(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

/// "fine" when the text stands in a document and comes back; else what is wrong.
std::string TheWayAndBack(std::string_view text) {
  const std::string xml = HostTextToXml(text);
  if (!IsForADocument(xml)) return "cannot stand in a document";
  return XmlToHostText(xml) == text ? "fine" : "comes back changed";
}

// What stands in a document as it is.

TEST(HostTextToXml, LeavesTextAsItIs) {
  const Utf8Host host;
  for (const std::string_view text :
       {""sv, "abc"sv, " a  b "sv, "\t\n"sv, "<&>\"']]>"sv, "&amp;"sv, "Gr\xC3\xBC\xC3\x9F"sv,
        "\xE5\x8D\xB0\xE5\x88\xB7"sv, "\xF0\x9F\x96\xA8"sv, "\xEF\xBB\xBF"sv, "\xEF\xBF\xBD"sv,
        "\xED\x9F\xBF\xEE\x80\x80"sv, "\xF4\x8F\xBF\xBD"sv}) {
    EXPECT_EQ(HostTextToXml(text), text);
    EXPECT_EQ(XmlToHostText(text), text);
  }
}

TEST(HostTextToXml, LeavesThePrivateCharactersAroundItsOwn) {
  const Utf8Host host;
  EXPECT_EQ(HostTextToXml("\xEE\xBB\xBF"), "\xEE\xBB\xBF") << "U+EEFF";
  EXPECT_EQ(HostTextToXml("\xEF\x80\x80"), "\xEF\x80\x80") << "U+F000";
  EXPECT_EQ(XmlToHostText("\xEE\xBB\xBF\xEF\x80\x80"), "\xEE\xBB\xBF\xEF\x80\x80");
}

// What gets a character of its own for each byte.

TEST(HostTextToXml, GivesControlCharactersACharacterEach) {
  const Utf8Host host;
  EXPECT_EQ(HostTextToXml("\0"sv), "\xEE\xBC\x80") << "U+EF00";
  EXPECT_EQ(HostTextToXml("\x01"), "\xEE\xBC\x81");
  EXPECT_EQ(HostTextToXml("\x08"), "\xEE\xBC\x88");
  EXPECT_EQ(HostTextToXml("\x0B\x0C"), "\xEE\xBC\x8B\xEE\xBC\x8C");
  EXPECT_EQ(HostTextToXml("\x1F"), "\xEE\xBC\x9F");
  EXPECT_EQ(HostTextToXml("a\0b\x1B"
                          "c"sv),
            "a\xEE\xBC\x80"
            "b\xEE\xBC\x9B"
            "c");
}

// A document is saved with references for them. Earlier ones have a character of the byte instead.
TEST(HostTextToXml, LeavesCarriageReturnsToTheReferenceThatIsWritten) {
  const Utf8Host host;
  EXPECT_EQ(HostTextToXml("\r"), "\r");
  EXPECT_EQ(HostTextToXml("a\r\nb\n\r"), "a\r\nb\n\r");
  EXPECT_EQ(HostTextToXml("a\r\x01"), "a\r\xEE\xBC\x81");
  EXPECT_EQ(XmlToHostText("\r"), "\r");
  EXPECT_EQ(XmlToHostText("a\xEE\xBC\x8D\nb"), "a\r\nb");
}

TEST(HostTextToXml, GivesBytesThatAreNoTextACharacterEach) {
  const Utf8Host host;
  EXPECT_EQ(HostTextToXml("\x80"), "\xEE\xBE\x80") << "U+EF80, a byte that continues nothing";
  EXPECT_EQ(HostTextToXml("\xFF"), "\xEE\xBF\xBF") << "U+EFFF";
  EXPECT_EQ(HostTextToXml("a\xE4"
                          "b"),
            "a\xEE\xBF\xA4"
            "b");
  EXPECT_EQ(HostTextToXml("\xE5\x8D"), "\xEE\xBF\xA5\xEE\xBE\x8D") << "cut";
  EXPECT_EQ(HostTextToXml("\xC0\x80"), "\xEE\xBF\x80\xEE\xBE\x80") << "overlong";
  EXPECT_EQ(HostTextToXml("\xE0\x9F\xBF"), "\xEE\xBF\xA0\xEE\xBE\x9F\xEE\xBE\xBF") << "overlong";
  EXPECT_EQ(HostTextToXml("\xED\xA0\x80"), "\xEE\xBF\xAD\xEE\xBE\xA0\xEE\xBE\x80") << "surrogate";
  EXPECT_EQ(HostTextToXml("\xF4\x90\x80\x80"), "\xEE\xBF\xB4\xEE\xBE\x90\xEE\xBE\x80\xEE\xBE\x80");
}

TEST(HostTextToXml, GivesCharactersThatXmlLacksACharacterForEachByte) {
  const Utf8Host host;
  EXPECT_EQ(HostTextToXml("\xEF\xBF\xBE"), "\xEE\xBF\xAF\xEE\xBE\xBF\xEE\xBE\xBE") << "U+FFFE";
  EXPECT_EQ(HostTextToXml("\xEF\xBF\xBF"), "\xEE\xBF\xAF\xEE\xBE\xBF\xEE\xBE\xBF") << "U+FFFF";
}

TEST(HostTextToXml, GivesItsOwnCharactersACharacterForEachByte) {
  const Utf8Host host;
  EXPECT_EQ(HostTextToXml("\xEE\xBD\x81"), "\xEE\xBF\xAE\xEE\xBE\xBD\xEE\xBE\x81") << "U+EF41";
  EXPECT_EQ(HostTextToXml("\xEE\xBC\x80"), "\xEE\xBF\xAE\xEE\xBE\xBC\xEE\xBE\x80") << "U+EF00";
  EXPECT_EQ(HostTextToXml("\xEE\xBF\xBF"), "\xEE\xBF\xAE\xEE\xBE\xBF\xEE\xBE\xBF") << "U+EFFF";
}

TEST(XmlToHostText, TurnsEachOfThoseCharactersIntoItsByte) {
  const Utf8Host host;
  for (unsigned byte = 0; byte < 256; ++byte) {
    const std::string xml = {'\xEE', static_cast<char>(0xBC + byte / 64),
                             static_cast<char>(0x80 + byte % 64)};
    EXPECT_EQ(XmlToHostText("<" + xml + ">"), (std::string{'<', static_cast<char>(byte), '>'}));
  }
}

TEST(XmlText, IsNotCopiedWhereNothingIsToBeChanged) {
  const Utf8Host host;
  const std::string text = "Gr\xC3\xBC\xC3\x9F <&> \xE5\x8D\xB0\n";
  std::string room;
  EXPECT_EQ(vkcl::HostTextToXml(text, room).data(), text.data());
  EXPECT_EQ(XmlToHostText(text, room).data(), text.data());
  const std::string_view changed = vkcl::HostTextToXml("a\x01", room);
  EXPECT_EQ(changed.data(), room.data());
  std::string other;
  EXPECT_EQ(XmlToHostText(changed, other).data(), other.data());
}

// Nothing is lost.

TEST(XmlText, GivesEveryByteBack) {
  const Utf8Host host;
  std::string all;
  for (int byte = 0; byte < 256; ++byte) {
    const std::string one(1, static_cast<char>(byte));
    EXPECT_EQ(TheWayAndBack(one), "fine") << byte;
    EXPECT_EQ(TheWayAndBack("a" + one + one + "\xC3\xA4"), "fine") << byte;
    all += one;
  }
  EXPECT_EQ(TheWayAndBack(all), "fine");
  EXPECT_EQ(TheWayAndBack(std::string(all.rbegin(), all.rend())), "fine");
}

TEST(XmlText, GivesEveryPairOfBytesBack) {
  const Utf8Host host;
  for (int first = 0; first < 256; ++first) {
    std::string pairs;
    for (int second = 0; second < 256; ++second) {
      pairs += {static_cast<char>(first), static_cast<char>(second), '\n'};
    }
    EXPECT_EQ(TheWayAndBack(pairs), "fine") << first;
  }
}

TEST(XmlText, GivesEveryCharacterBack) {
  const Utf8Host host;
  std::string text;
  for (unsigned code = 0x80; code < 0x110000; code += code < 0x10000 ? 1 : 257) {
    if (code < 0x800) {
      text += static_cast<char>(0xC0 | code >> 6);
    } else if (code < 0x10000) {  // surrogates, which are none, included
      text += static_cast<char>(0xE0 | code >> 12);
      text += static_cast<char>(0x80 | (code >> 6 & 63));
    } else {
      text += static_cast<char>(0xF0 | code >> 18);
      text += static_cast<char>(0x80 | (code >> 12 & 63));
      text += static_cast<char>(0x80 | (code >> 6 & 63));
    }
    text += static_cast<char>(0x80 | (code & 63));
  }
  EXPECT_EQ(TheWayAndBack(text), "fine");
}

TEST(XmlText, GivesBytesAtRandomBack) {
  const Utf8Host host;
  std::mt19937 random(1);
  const std::string often = "\xEE\xBC\xBD\xBE\xBF\x80\x81\xEF\xC3\xE5\xF0\xED\xA0\r\n\t <&";
  for (int i = 0; i < 3000; ++i) {
    std::string text;
    for (std::size_t left = random() % 30; left > 0; --left) {
      text += random() % 4 == 0 ? static_cast<char>(random()) : often[random() % often.size()];
    }
    ASSERT_EQ(TheWayAndBack(text), "fine") << ::testing::PrintToString(text);
  }
}

TEST(XmlText, GivesItsOwnOutputBack) {
  // A text that was made for a document once may be put into another one.
  const Utf8Host host;
  std::string text = "\x01\xFF\r";
  for (int i = 0; i < 4; ++i) {
    const std::string xml = HostTextToXml(text);
    EXPECT_TRUE(IsForADocument(xml));
    EXPECT_EQ(XmlToHostText(xml), text);
    text = xml;
  }
}

TEST(XmlText, TakesLongTexts) {
  const Utf8Host host;
  for (const std::string_view part : {"a"sv, "\0"sv, "\xFF"sv, "\xE5\x8D\xB0"sv, "\xE5\x8D"sv}) {
    std::string text;
    while (text.size() < 1000000) text += part;
    EXPECT_EQ(TheWayAndBack(text), "fine");
  }
}

// Hosts whose narrow texts are not in UTF-8.

TEST(XmlText, OfALatinHostIsWhatItSays) {
  const MadeLocale latin("de_DE", "ISO-8859-1");
  ASSERT_TRUE(latin.works()) << "made with localedef, from Debian's package locales";
  const std::string said = latin.Run([] {
    std::string wrong;
    if (HostTextToXml("Gr\xFC\xDF"
                      "e") !=
        "Gr\xC3\xBC\xC3\x9F"
        "e")
      wrong += "to XML;";
    if (XmlToHostText("Gr\xC3\xBC\xC3\x9F"
                      "e") !=
        "Gr\xFC\xDF"
        "e")
      wrong += "from XML;";
    if (HostTextToXml("\r\x01") != "\r\xEE\xBC\x81") wrong += "control characters;";
    return wrong.empty() ? "fine" : wrong;
  });
  EXPECT_EQ(said, "fine");
}

TEST(XmlText, KeepsTheUtf8OfCharactersThatTheHostLacks) {
  const MadeLocale latin("de_DE", "ISO-8859-1");
  ASSERT_TRUE(latin.works());
  // The euro sign is none of Latin-1, the letters around it are.
  EXPECT_EQ(latin.Run([] { return XmlToHostText("\xC3\xA4\xE2\x82\xAC\xC3\xB6"); }),
            "\xE4\xE2\x82\xAC\xF6");
  EXPECT_EQ(latin.Run([] { return XmlToHostText("\xE5\x8D\xB0"); }), "\xE5\x8D\xB0");
}

TEST(XmlText, GivesEveryByteStringOfEveryHostBack) {
  // Line feeds part the pairs: no character of these encodings has one in it.
  struct Host {
    const char* language;
    const char* charmap;
  };
  for (const Host& made : {Host{"de_DE", "ISO-8859-15"}, Host{"ja_JP", "EUC-JP"},
                           Host{"ja_JP", "WINDOWS-31J"}, Host{"zh_TW", "BIG5"}}) {
    const MadeLocale locale(made.language, made.charmap);
    ASSERT_TRUE(locale.works()) << made.charmap;
    const std::string said = locale.Run([] {
      std::string wrong;
      for (int first = 0; first < 256; ++first) {
        std::string pairs;
        for (int second = 0; second < 256; ++second) {
          pairs += {static_cast<char>(first), static_cast<char>(second), '\n'};
        }
        const std::string result = TheWayAndBack(pairs);
        if (result != "fine") wrong += std::to_string(first) + " " + result + "; ";
      }
      return wrong.empty() ? "fine" : wrong;
    });
    EXPECT_EQ(said, "fine") << made.charmap;
  }
}

// Names.

TEST(IsXmlName, TakesLettersAndWhatMayFollowThem) {
  for (const std::string_view name :
       {"a"sv, "Z"sv, "_"sv, "a1"sv, "a-b"sv, "a.b"sv, "_1.2-3"sv, "ListSplit"sv,
        "NumofColor2Split"sv, "x:item"sv, "xml-like"sv}) {
    EXPECT_TRUE(IsXmlName(name)) << name;
  }
}

TEST(IsXmlName, RefusesWhatIsNone) {
  for (const std::string_view name :
       {""sv,     "1"sv,    "1a"sv,  "-a"sv,   ".a"sv,  " "sv,   " a"sv,  "a "sv,
        "a b"sv,  "a\tb"sv, "a\n"sv, "<a"sv,   "a>"sv,  "a/"sv,  "/a"sv,  "a&b"sv,
        "a=\""sv, "a'"sv,   "a;b"sv, "a\0b"sv, "\0"sv,  "a\0"sv, "!a"sv,  "?a"sv,
        "a#"sv,   "a$"sv,   "a+b"sv, "a,b"sv,  "(a)"sv, "a*"sv,  "a@b"sv, "[a]"sv,
        "a|b"sv,  "{a}"sv,  "a~"sv,  "a^b"sv,  "a`b"sv, "a\\"sv, "%a"sv,  "a\x7F"sv}) {
    EXPECT_FALSE(IsXmlName(name)) << ::testing::PrintToString(name);
  }
}

TEST(IsXmlName, JudgesEveryAsciiCharacterInTheFirstAndInALaterPlace) {
  const std::string first = ":_ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  const std::string later = first + "-.0123456789";
  for (int i = 0; i < 128; ++i) {
    const char c = static_cast<char>(i);
    EXPECT_EQ(IsXmlName(std::string{c, 'a'}), first.find(c) != std::string::npos) << i;
    EXPECT_EQ(IsXmlName(std::string{'a', c}), later.find(c) != std::string::npos) << i;
  }
}

}  // namespace
