#include "inspect/StoredTags.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <unordered_map>

#include "platform/Bytes.h"
#include "platform/plinth/HexText.h"
#include "profile/TableInFile.h"
#include "profile/TableLayout.h"

namespace vkcl {
namespace {

constexpr std::string_view kHexPrefix = "0x";

// `readable` becomes false when the file does not give bytes that it holds.
bool HasDataHead(AFile& file, const StoredTag& tag, bool& readable) {
  char head[kDataHead];
  if (tag.size < sizeof head || tag.held != tag.size) return false;
  if (!file.seek(tag.offset) || file.read(head, sizeof head) != sizeof head) {
    readable = false;
    return false;
  }
  return std::memcmp(head, kBinaryHead, sizeof head) == 0;
}

bool IsPlain(std::uint32_t signature) {
  for (int shift = 0; shift < 32; shift += 8) {
    const std::uint32_t c = signature >> shift & 0xFF;
    if (c <= ' ' || c > '~' || c == '#') return false;
  }
  return true;
}

}  // namespace

std::vector<StoredTag> StoredTagsOf(const VKCLProfile& profile, AFile& file, bool* good) {
  const std::int64_t told = file.length();
  const auto length = static_cast<std::uint64_t>(std::max<std::int64_t>(told, 0));
  bool readable = told >= 0;
  std::unordered_map<std::uint32_t, std::uint32_t> seen;
  std::vector<StoredTag> tags;
  for (const icTag& entry : TableInFile(profile).tags) {
    if (!IsPrivateSignature(entry.sig)) continue;
    StoredTag tag;
    tag.signature = entry.sig;
    tag.occurrence = ++seen[entry.sig];
    tag.offset = entry.offset;
    tag.size = entry.size;
    tag.held =
        entry.offset >= length ? 0 : std::min<std::uint64_t>(entry.size, length - entry.offset);
    tag.isData = HasDataHead(file, tag, readable);
    tags.push_back(tag);
  }
  if (good != nullptr) *good = readable;
  return tags;
}

std::string StoredTagName(std::uint32_t signature, std::uint32_t occurrence) {
  char big[4];
  StoreBig32(big, signature);
  std::string name = IsPlain(signature) ? std::string(big, sizeof big)
                                        : std::string(kHexPrefix) + HexText(big, sizeof big);
  if (occurrence > 1) name += "#" + std::to_string(occurrence);
  return name;
}

bool ParseStoredTagName(std::string_view name, std::uint32_t& signature,
                        std::uint32_t& occurrence) {
  const std::size_t mark = name.find('#');
  const std::string_view base = name.substr(0, mark);
  occurrence = 1;
  if (mark != std::string_view::npos) {
    const char* last = name.data() + name.size();
    const auto result = std::from_chars(name.data() + mark + 1, last, occurrence);
    if (result.ec != std::errc() || result.ptr != last || occurrence < 2) return false;
  }
  char big[4];
  if (base.starts_with(kHexPrefix) && base.size() == kHexPrefix.size() + 8) {
    if (ReadHex(base.substr(kHexPrefix.size()), big, sizeof big) != sizeof big) return false;
  } else if (base.size() == sizeof big) {
    std::memcpy(big, base.data(), sizeof big);
  } else {
    return false;
  }
  signature = LoadBig32(big);
  return IsPrivateSignature(signature);
}

}  // namespace vkcl
