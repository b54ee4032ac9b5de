#include "inspect/CheckedImages.h"

namespace vkcl::testing {
namespace {

// Zeros in front of the data of tag `first` of the clean image.
void OpenGap(Bytes& image, std::size_t first, std::size_t bytes) {
  const std::uint32_t at = Big32At(image, EntryAt(first) + 4);
  image.insert(image.begin() + at, bytes, 0);
  SetBig32(image, 0, static_cast<std::uint32_t>(image.size()));
  for (std::size_t i = first; i < 5; ++i) {
    const std::size_t offset = EntryAt(i) + 4;
    SetBig32(image, offset, Big32At(image, offset) + static_cast<std::uint32_t>(bytes));
  }
}

void Append(Bytes& image, std::size_t bytes) {
  image.insert(image.end(), bytes, 0);
  SetBig32(image, 0, static_cast<std::uint32_t>(image.size()));
}

// A second description that has no data of its own.
Bytes WithSecondDescription() {
  std::vector<ImageTag> tags = CleanTags();
  tags.insert(tags.begin() + 1, {Sig("dmdd"), {}});
  Bytes image = ProfileImage(CleanHeader(), tags);
  SetBig32(image, EntryAt(1) + 4, Big32At(image, EntryAt(0) + 4));
  SetBig32(image, EntryAt(1) + 8, Big32At(image, EntryAt(0) + 8));
  return image;
}

}  // namespace

const std::vector<Defect>& LayoutDefects() {
  static const std::vector<Defect> defects = {
      {"too many tags", "error table.count 6.2", [](Bytes& b) { SetBig32(b, 128, 0xFFFFFFFF); }},
      {"one tag too many", "error table.count 6.2",
       [](Bytes& b) { SetBig32(b, 128, (kCleanEnd - 132) / 12 + 1); }},
      {"no tags", "warning table.empty 6.2", [](Bytes& b) { b = ProfileImage(CleanHeader(), {}); }},
      {"a signature twice", "error table.duplicate desc 6.2",
       [](Bytes& b) {
         std::vector<ImageTag> tags = CleanTags();
         tags.insert(tags.end(), 2, tags.front());
         b = ProfileImage(CleanHeader(), tags);
       }},
      {"a signature that is no text", "note table.unprintable ???? 6.2.1",
       [](Bytes& b) { b = WithTag(0x01020304, TextTag("any")); }},
      {"beyond the end", "error table.beyond-end kTRC 6.2",
       [](Bytes& b) { SetBig32(b, EntryAt(3) + 8, 0xFFFFFFF0); }},
      {"a byte beyond the end", "error table.beyond-end QX76 6.2",
       [](Bytes& b) { SetBig32(b, EntryAt(4) + 8, 21); }},
      {"offset beyond 32 bits of sum", "error table.beyond-end kTRC 6.2",
       [](Bytes& b) { SetBig32(b, EntryAt(3) + 4, 0xFFFFFFF0); }},
      {"within the header", "error table.in-head kTRC 6.2.2",
       [](Bytes& b) { SetBig32(b, EntryAt(3) + 4, 0); }},
      {"within the table", "error table.in-head kTRC 6.2.2",
       [](Bytes& b) { SetBig32(b, EntryAt(3) + 4, kDescAt - 4); }},
      {"unaligned", "warning table.unaligned QX76 6.2.2, note layout.gap QX76",
       [](Bytes& b) {
         OpenGap(b, 4, 1);
         Append(b, 3);
       }},
      {"too short for a type", "warning tag.no-type abcd 6.5",
       [](Bytes& b) { b = WithTag(Sig("abcd"), Bytes(7, 0)); }},
      {"without any data", "warning tag.no-type abcd 6.5",
       [](Bytes& b) { b = WithTag(Sig("abcd"), {}); }},
      {"reserved bytes of a type", "note tag.reserved wtpt 6.5",
       [](Bytes& b) { b[kWtptAt + 7] = 1; }},
      {"shared data", "note layout.shared dmdd 6.2", [](Bytes& b) { b = WithSecondDescription(); }},
      {"overlapping data", "warning layout.overlap cprt",
       [](Bytes& b) { SetBig32(b, EntryAt(0) + 8, 100); }},
      {"a gap", "note layout.gap cprt", [](Bytes& b) { OpenGap(b, 1, 8); }},
      {"a gap at the front", "note layout.gap desc", [](Bytes& b) { OpenGap(b, 0, 8); }},
      {"a gap at the end", "note layout.gap", [](Bytes& b) { Append(b, 8); }},
      {"padding", "note layout.padding", [](Bytes& b) { b[kDescAt + 95] = 1; }},
      {"padding at the end", "note layout.padding",
       [](Bytes& b) {
         b = WithTag(Sig("abcd"), TextTag("x"));
         b.back() = 1;
       }},
      {"another order", "note layout.order",
       [](Bytes& b) {
         for (std::size_t i = 0; i < 12; ++i) std::swap(b[EntryAt(0) + i], b[EntryAt(1) + i]);
       }},
      {"an end that is not filled up", "note header.size-odd, note layout.unpadded-end",
       [](Bytes& b) {
         b = WithTag(Sig("abcd"), TextTag("x"));
         b.resize(b.size() - 3);
         SetBig32(b, 0, static_cast<std::uint32_t>(b.size()));
       }},
  };
  return defects;
}

}  // namespace vkcl::testing
