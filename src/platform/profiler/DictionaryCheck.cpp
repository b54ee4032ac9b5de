#include "platform/profiler/DictionaryCheck.h"

#include <cstddef>

#include "platform/Bytes.h"

namespace vkcl::profiler {
namespace {

using Element = std::span<const std::uint8_t>;

constexpr std::size_t kHead = 16;  // type, four reserved bytes, number and length of the records
constexpr std::size_t kTypeHead = 8;
constexpr std::size_t kPlace = 8;       // offset and size of a text
constexpr std::size_t kLocalised = 12;  // language, country, and such a place
constexpr std::uint64_t kMostText = std::uint64_t{64} << 20;

// Texts in several languages. Little CMS takes and writes them without the type and the reserved
// bytes, but counts offsets from where those would begin.
bool IsSoundLocalised(Element text) {
  constexpr std::size_t kRecords = kHead - kTypeHead;
  if (text.size() < kRecords) return false;
  const std::uint32_t count = LoadBig32(text.data());
  if (count > (text.size() - kRecords) / kLocalised) return false;
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint8_t* place = &text[kRecords + kLocalised * i + 4];
    const std::uint64_t end = std::uint64_t{LoadBig32(place)} + LoadBig32(place + 4);
    if (end > text.size() + kTypeHead) return false;
  }
  return true;
}

}  // namespace

bool IsSoundDictionary(Element element) {
  if (element.size() < kHead) return false;
  const std::uint32_t count = LoadBig32(&element[8]);
  const std::uint32_t length = LoadBig32(&element[12]);
  const std::size_t places = length / kPlace;  // name, value, and their forms for people
  if (length % kPlace != 0 || places < 2 || places > 4) return false;
  if (count > (element.size() - kHead) / length) return false;
  std::uint64_t texts = 0;
  for (std::size_t i = 0; i < count * places; ++i) {
    const std::uint8_t* place = &element[kHead + kPlace * i];
    const std::uint32_t offset = LoadBig32(place);
    const std::uint32_t size = LoadBig32(place + 4);
    if (offset == 0) continue;  // there is no such text
    if (std::uint64_t{offset} + size > element.size()) return false;
    const bool isLocalised = i % places >= 2;
    if (isLocalised && size != 0 && !IsSoundLocalised(element.subspan(offset, size))) return false;
    texts += size;
  }
  return texts <= kMostText;
}

}  // namespace vkcl::profiler
