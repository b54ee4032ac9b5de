#include "inspect/CheckedImages.h"

#include <algorithm>

namespace vkcl::testing {

Bytes CleanHeader(std::uint32_t deviceClass, std::uint32_t space, std::uint32_t pcs) {
  Bytes header(128, 0);
  SetBig32(header, 8, 0x02400000);
  SetBig32(header, 12, deviceClass);
  SetBig32(header, 16, space);
  SetBig32(header, 20, pcs);
  const Bytes date = {0x07, 0xE8, 0, 2, 0, 29, 0, 23, 0, 59, 0, 58};
  std::copy(date.begin(), date.end(), header.begin() + 24);
  SetBig32(header, 36, Sig("acsp"));
  SetBig32(header, 68, 0x0000F6D6);
  SetBig32(header, 72, 0x00010000);
  SetBig32(header, 76, 0x0000D32D);
  return header;
}

Bytes TypedData(std::uint32_t type, const Bytes& content) {
  return Join({Big32(type), Bytes(4, 0), content});
}

Bytes Big16(std::uint32_t value) { return Slice(Big32(value), 2, 2); }

Bytes Description(const std::string& ascii) {
  return TypedData(Sig("desc"), Join({Big32(static_cast<std::uint32_t>(ascii.size())),
                                      Bytes(ascii.begin(), ascii.end()), Bytes(8 + 3 + 67, 0)}));
}

namespace {

Bytes LutHead(std::uint8_t in, std::uint8_t out) {
  Bytes head = {in, out, 2, 0};
  for (int i = 0; i < 9; ++i) head = Join({head, Big32(i % 4 == 0 ? 0x10000 : 0)});
  return head;
}

}  // namespace

Bytes Lut8(std::uint8_t in, std::uint8_t out) {
  const std::size_t points = std::size_t{1} << in;
  return TypedData(Sig("mft1"),
                   Join({LutHead(in, out), Bytes(256u * in + points * out + 256u * out, 0)}));
}

Bytes Lut16(std::uint8_t in, std::uint8_t out, std::uint16_t first, std::uint16_t last) {
  const std::size_t values =
      std::size_t{first} * in + (std::size_t{1} << in) * out + std::size_t{last} * out;
  return TypedData(Sig("mft2"),
                   Join({LutHead(in, out), Big16(first), Big16(last), Bytes(2 * values, 0)}));
}

std::vector<ImageTag> CleanTags() {
  return {{Sig("desc"), Description(std::string("test\0", 5))},
          {Sig("cprt"), TextTag(std::string("by hand\0", 8))},
          {Sig("wtpt"), TypedData(Sig("XYZ "), Bytes(12, 0))},
          {Sig("kTRC"), TypedData(Sig("curv"), Bytes(4, 0))},
          {Sig("QX76"), DataTag({1, 0, 0, 0, 2, 0, 0, 0})}};
}

Bytes CleanImage() { return ProfileImage(CleanHeader(), CleanTags()); }

Bytes WithTag(std::uint32_t sig, const Bytes& data, Bytes header) {
  std::vector<ImageTag> tags = CleanTags();
  const auto own =
      std::find_if(tags.begin(), tags.end(), [=](const ImageTag& tag) { return tag.sig == sig; });
  if (own != tags.end()) {
    own->data = data;
  } else {
    tags.push_back({sig, data});
  }
  return ProfileImage(std::move(header), tags);
}

}  // namespace vkcl::testing
