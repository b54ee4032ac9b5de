#include "inspect/CheckedImages.h"

namespace vkcl::testing {
namespace {

using Make = std::function<void(Bytes& image)>;

// The clean image with that tag.
Make Tag(std::uint32_t sig, const Bytes& data) {
  return [=](Bytes& image) { image = WithTag(sig, data); };
}

// The same with the type's content as it stands.
Make Tag(std::uint32_t sig, std::uint32_t type, const Bytes& content) {
  return Tag(sig, TypedData(type, content));
}

// The same in a profile of version 4, of which a note tells.
Make Tag4(std::uint32_t sig, const Bytes& data) {
  return [=](Bytes& image) {
    Bytes header = CleanHeader();
    header[8] = 4;
    image = WithTag(sig, data, header);
  };
}

Bytes Without(Bytes data, std::size_t bytes) {
  data.resize(data.size() - bytes);
  return data;
}

Bytes With(Bytes data, std::size_t at, unsigned char value) {
  data.at(at) = value;
  return data;
}

Bytes Words(std::initializer_list<std::uint32_t> words) {
  Bytes bytes;
  for (const std::uint32_t word : words) bytes = Join({bytes, Big32(word)});
  return bytes;
}

// A named colour, with so many device coordinates, and the head that says how many there are.
Bytes NamedColors(std::uint32_t count, std::uint32_t coordinates, std::size_t content) {
  return TypedData(Sig("ncl2"), Join({Words({0, count, coordinates}), Bytes(64 + content, 0)}));
}

// One translation of two characters, at that place.
Bytes Translation(std::uint32_t length, std::uint32_t place) {
  return TypedData(Sig("mluc"), Words({1, 12, 0x656E5553, length, place, 0x00480069}));
}

std::vector<Defect> Lengths() {
  return {
      {"a curve of one point too many", "error tag.cut kTRC 6.5.3",
       Tag(Sig("kTRC"), Sig("curv"), Join({Big32(3), Bytes(5, 0)}))},
      {"a curve of 4 billion points", "error tag.cut kTRC 6.5.3",
       Tag(Sig("kTRC"), Sig("curv"), Join({Big32(0xFFFFFFFF), Bytes(8, 0)}))},
      {"a curve without a count", "error tag.cut kTRC 6.5.3", Tag(Sig("kTRC"), Sig("curv"), {})},
      {"a curve of all its points", "",
       Tag(Sig("kTRC"), Sig("curv"), Join({Big32(3), Bytes(6, 0)}))},
      {"a curve with something behind it", "note tag.longer kTRC 6.5.3",
       Tag(Sig("kTRC"), Sig("curv"), Join({Big32(1), Bytes(6, 0)}))},
      {"a colour of two numbers", "error tag.cut wtpt 6.5.26",
       Tag(Sig("wtpt"), Sig("XYZ "), Bytes(8, 0))},
      {"two colours for one", "note tag.longer wtpt 6.5.26",
       Tag(Sig("wtpt"), Sig("XYZ "), Bytes(24, 0))},
      {"an adaptation of eight numbers", "error tag.cut chad 6.5.14",
       Tag(Sig("chad"), Sig("sf32"), Bytes(32, 0))},
      {"an adaptation of nine numbers", "", Tag(Sig("chad"), Sig("sf32"), Bytes(36, 0))},
      {"primaries of three channels, two of them there", "error tag.cut chrm 6.5.1",
       Tag(Sig("chrm"), Sig("chrm"), Join({Words({0x00030001}), Bytes(16, 0)}))},
      {"primaries", "", Tag(Sig("chrm"), Sig("chrm"), Join({Words({0x00030001}), Bytes(24, 0)}))},
      {"half a date", "error tag.cut calt 6.5.5", Tag(Sig("calt"), Sig("dtim"), Bytes(6, 0))},
      {"a measurement cut", "error tag.cut meas 6.5.9",
       Tag(Sig("meas"), Sig("meas"), Bytes(27, 0))},
      {"viewing conditions cut", "error tag.cut view 6.5.25",
       Tag(Sig("view"), Sig("view"), Bytes(24, 0))},
      {"a signature cut", "error tag.cut tech 6.5.16", Tag(Sig("tech"), Sig("sig "), {})},
      {"data without a flag", "error tag.cut ps2i 6.5.4", Tag(Sig("ps2i"), Sig("data"), {})},
      {"a screen for a channel, and none there", "error tag.cut scrn 6.5.15",
       Tag(Sig("scrn"), Sig("scrn"), Words({0, 1, 0, 0}))},
      {"a screen", "", Tag(Sig("scrn"), Sig("scrn"), Words({0, 1, 0, 0, 0}))},
      {"responses without their places", "error tag.cut resp 6.5.13",
       Tag(Sig("resp"), Sig("rcs2"), Words({0x00040002, 0}))},
      {"a sequence without its profiles", "error tag.cut pseq 6.5.12",
       Tag(Sig("pseq"), Sig("pseq"), Words({1, 0, 0, 0}))},
      {"named colours without their coordinates", "error tag.cut ncl2 6.5.11",
       Tag(Sig("ncl2"), NamedColors(2, 4, 2 * 46 - 1))},
      {"named colours with 4 billion coordinates", "error tag.cut ncl2 6.5.11",
       Tag(Sig("ncl2"), NamedColors(0xFFFFFFFF, 0xFFFFFFFF, 46))},
      {"named colours", "", Tag(Sig("ncl2"), NamedColors(2, 4, 2 * 46))},
      {"curves of inks without the second", "error tag.cut bfd  6.5.20",
       Tag(Sig("bfd "), Sig("bfd "), Join({Words({2, 0}), Bytes(2, 0)}))},
      {"curves of inks with half the second", "error tag.cut bfd  6.5.20",
       Tag(Sig("bfd "), Sig("bfd "), Words({0, 1}))},
      {"curves of inks", "", Tag(Sig("bfd "), Sig("bfd "), Join({Words({0, 1}), Bytes(6, 0)}))},
      {"names of four renderings", "error tag.cut crdi 6.5.2",
       Tag(Sig("crdi"), Sig("crdi"), Words({0, 0, 0, 0}))},
      {"a name that leads out", "error tag.cut crdi 6.5.2",
       Tag(Sig("crdi"), Sig("crdi"), Words({0, 0, 0xFFFFFFFF, 0, 0}))},
      {"names of renderings", "",
       Tag(Sig("crdi"), Sig("crdi"), Words({4, 0x61626300, 0, 0, 0, 0}))},
  };
}

std::vector<Defect> Texts() {
  const Bytes full = Description(std::string("test\0", 5));
  return {
      {"a text without its zero", "warning tag.unterminated cprt 6.5.18",
       Tag(Sig("cprt"), TextTag("by hand"))},
      {"a text of nothing", "warning tag.unterminated cprt 6.5.18", Tag(Sig("cprt"), TextTag(""))},
      {"a description without its zero", "warning tag.unterminated desc 6.5.17",
       Tag(Sig("desc"), Description("test"))},
      {"a description of nothing", "warning tag.unterminated desc 6.5.17",
       Tag(Sig("desc"), Description(""))},
      {"a description that is longer than its tag", "error tag.cut desc 6.5.17",
       Tag(Sig("desc"), TypedData(Sig("desc"), Words({5, 0x74657374})))},
      {"a description of one text", "warning tag.description-cut desc 6.5.17",
       Tag(Sig("desc"), Without(full, 78))},
      {"a description without its last byte", "warning tag.description-cut desc 6.5.17",
       Tag(Sig("desc"), Without(full, 1))},
      {"a Unicode text that leads out", "warning tag.description-cut desc 6.5.17",
       Tag(Sig("desc"), With(full, 12 + 5 + 4, 0xFF))},
      {"a Macintosh text of 68 characters", "warning tag.value desc 6.5.17",
       Tag(Sig("desc"), With(full, 12 + 5 + 8 + 2, 68))},
      {"a translation", "note header.version-4", Tag4(Sig("desc"), Translation(4, 28))},
      {"a translation that leads out", "note header.version-4, error tag.cut desc",
       Tag4(Sig("desc"), Translation(4, 29))},
      {"a translation 4 GB away", "note header.version-4, error tag.cut desc",
       Tag4(Sig("desc"), Translation(0xFFFFFFFF, 0xFFFFFFFF))},
      {"more translations than there are", "note header.version-4, error tag.cut desc",
       Tag4(Sig("desc"), With(Translation(4, 28), 8, 0xFF))},
      {"translations of another form", "note header.version-4, warning tag.value desc",
       Tag4(Sig("desc"), With(Translation(4, 28), 15, 16))},
  };
}

std::vector<Defect> Values() {
  return {
      {"data of no known kind", "warning tag.value ps2i 6.5.4",
       Tag(Sig("ps2i"), Sig("data"), Words({2}))},
      {"an unknown observer", "warning tag.value meas 6.5.9",
       Tag(Sig("meas"), Sig("meas"), With(Bytes(28, 0), 3, 3))},
      {"an unknown geometry", "warning tag.value meas 6.5.9",
       Tag(Sig("meas"), Sig("meas"), With(Bytes(28, 0), 19, 3))},
      {"an unknown illuminant", "warning tag.value meas 6.5.9",
       Tag(Sig("meas"), Sig("meas"), With(Bytes(28, 0), 27, 9))},
      {"a measurement", "", Tag(Sig("meas"), Sig("meas"), With(Bytes(28, 0), 27, 8))},
      {"an unknown light", "warning tag.value view 6.5.25",
       Tag(Sig("view"), Sig("view"), With(Bytes(28, 0), 27, 9))},
      {"an unknown function", "note header.version-4, warning tag.value kTRC",
       Tag4(Sig("kTRC"), TypedData(Sig("para"), Words({0x00050000, 0})))},
      {"a function short of a parameter", "note header.version-4, error tag.cut kTRC",
       Tag4(Sig("kTRC"), TypedData(Sig("para"), Words({0x00030000, 0, 0, 0, 0})))},
      {"a function", "note header.version-4",
       Tag4(Sig("kTRC"), TypedData(Sig("para"), Words({0x00030000, 0, 0, 0, 0, 0})))},
  };
}

std::vector<Defect> Tables() {
  return {
      {"a table of bytes", "", Tag(Sig("A2B0"), Lut8(1, 3))},
      {"a table of words", "", Tag(Sig("A2B0"), Lut16(1, 3, 4096, 2))},
      {"a table without its head", "error tag.cut A2B0 6.5.8",
       Tag(Sig("A2B0"), Sig("mft1"), {1, 3, 2, 0})},
      {"a table of bytes, cut", "error tag.cut A2B0 6.5.8",
       Tag(Sig("A2B0"), Without(Lut8(1, 3), 1))},
      {"a table of words, cut", "error tag.cut A2B0 6.5.7",
       Tag(Sig("A2B0"), Without(Lut16(1, 3), 1))},
      {"a table with longer input curves than it has", "error tag.cut A2B0 6.5.7",
       Tag(Sig("A2B0"), With(Lut16(1, 3), 49, 3))},
      {"a table with longer output curves than it has", "error tag.cut A2B0 6.5.7",
       Tag(Sig("A2B0"), With(Lut16(1, 3), 51, 3))},
      {"a table with something behind it", "note tag.longer A2B0 6.5.8",
       Tag(Sig("A2B0"), Join({Lut8(1, 3), Bytes(4, 0)}))},
      {"a table from no channel", "error tag.lut-channels A2B0 6.5.8",
       Tag(Sig("A2B0"), With(Lut8(1, 3), 8, 0))},
      {"a table to no channel", "error tag.lut-channels A2B0 6.5.8",
       Tag(Sig("A2B0"), With(Lut8(1, 3), 9, 0))},
      {"a table from 17 channels", "error tag.lut-channels A2B0 6.5.7",
       Tag(Sig("A2B0"), With(Lut16(1, 3), 8, 17))},
      {"a table of one point", "warning tag.lut-grid A2B0 6.5.8, note tag.longer A2B0 6.5.8",
       Tag(Sig("A2B0"), With(Join({Lut8(1, 3), {0}}), 10, 1))},
      {"curves of one point", "warning tag.lut-entries A2B0 6.5.7",
       Tag(Sig("A2B0"), Lut16(1, 3, 1, 2))},
      {"curves of 4097 points", "warning tag.lut-entries A2B0 6.5.7",
       Tag(Sig("A2B0"), Lut16(1, 3, 2, 4097))},
      {"a table from too many channels", "error tag.lut-spaces A2B0 6.5.8",
       Tag(Sig("A2B0"), Lut8(2, 3))},
      {"a table to too few channels", "error tag.lut-spaces B2A0 6.5.7",
       Tag(Sig("B2A0"), Lut16(3, 2))},
      {"a gamut of three channels", "error tag.lut-spaces gamt 6.5.8",
       Tag(Sig("gamt"), Lut8(3, 3))},
      {"a preview of one channel", "error tag.lut-spaces pre1 6.5.8", Tag(Sig("pre1"), Lut8(3, 1))},
      {"a preview", "", Tag(Sig("pre1"), Lut8(3, 3))},
      {"a matrix that begins in gray", "warning tag.lut-matrix A2B0 6.5.8",
       Tag(Sig("A2B0"), With(Lut8(1, 3), 47, 1))},
      {"a matrix that begins in XYZ", "", Tag(Sig("B2A0"), With(Lut8(3, 1), 47, 1))},
      {"a chain that leads out", "note header.version-4, error tag.cut A2B0",
       Tag4(Sig("A2B0"), TypedData(Sig("mAB "), Words({0x01030000, 0, 0, 0, 0, 0x01000000})))},
      {"a chain", "note header.version-4",
       Tag4(Sig("B2A0"), TypedData(Sig("mBA "), Words({0x03010000, 32, 0, 0, 0, 32})))},
  };
}

}  // namespace

const std::vector<Defect>& ContentDefects() {
  static const std::vector<Defect> defects = [] {
    std::vector<Defect> all;
    for (const auto& list : {Lengths(), Texts(), Values(), Tables()}) {
      all.insert(all.end(), list.begin(), list.end());
    }
    return all;
  }();
  return defects;
}

}  // namespace vkcl::testing
