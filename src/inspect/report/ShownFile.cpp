#include "inspect/report/ShownFile.h"

#include <algorithm>
#include <array>

#include "colornames/ColorModes.h"
#include "platform/Bytes.h"
#include "platform/plinth/TextEncoding.h"
#include "platform/plinth/Utf8.h"  // IWYU pragma: keep
#include "profile/TableInFile.h"
#include "profile/icc.h"

namespace vkcl {
namespace {

struct SpaceNames {
  std::uint32_t space;
  std::array<const char*, 4> names;
};

constexpr SpaceNames kMeasured[] = {
    {icSigLabData, {"L*", "a*", "b*"}},
    {icSigXYZData, {"X", "Y", "Z"}},
};
constexpr SpaceNames kDevice[] = {
    {icSigCmykData, {"Cyan", "Magenta", "Yellow", "Black"}},
    {icSigCmyData, {"Cyan", "Magenta", "Yellow"}},
    {icSigRgbData, {"Red", "Green", "Blue"}},
    {icSigGrayData, {"Gray"}},
};

std::vector<std::string> NamesIn(std::span<const SpaceNames> table, std::uint32_t space,
                                 std::uint64_t count) {
  std::vector<std::string> names;
  for (const SpaceNames& row : table) {
    if (row.space != space) continue;
    for (const char* name : row.names) {
      if (name != nullptr) names.emplace_back(name);
    }
  }
  if (names.size() != count) names.clear();
  return names;
}

// UTF-16 as ICC.1 stores it, big-endian.
std::string FromUtf16(std::string_view bytes) {
  std::wstring wide;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    char32_t code = LoadBig16(bytes.data() + i);
    if (sizeof(wchar_t) > 2 && code >= 0xD800 && code < 0xDC00 && i + 3 < bytes.size()) {
      const char32_t low = LoadBig16(bytes.data() + i + 2);
      if (low >= 0xDC00 && low < 0xE000) {
        code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
        i += 2;
      }
    }
    wide += static_cast<wchar_t>(code);
  }
  return WideToUtf8(wide);
}

std::string_view UpToZero(std::string_view text) { return text.substr(0, text.find('\0')); }

}  // namespace

int ShownFile::ChannelsOf(const AFilePath& path) {
  const KeptProfile profile(path, 0);
  return profile.isValidICC() != 0 ? profile.channelCount : 0;
}

ShownFile::ShownFile(const AFilePath& path, std::size_t number)
    : path_(path),
      id_("f" + std::to_string(number)),
      channels_(ChannelsOf(path)),
      // A profile that only lacks a number of channels still has a table.
      profile_(path, channels_ != 0 ? 0 : 3),
      table_(TableInFile(profile_).tags) {
  if (!isProfile() || !file_.open(path, AFile::Read)) return;
  length_ = static_cast<std::uint64_t>(std::max<std::int64_t>(file_.length(), 0));
  tags_ = StoredTagsOf(profile_, file_);
  const ReadTag param = Read(QX53);
  if (const FieldView* mode = param.Find("ColorMode")) {
    colorMode_ = static_cast<std::int32_t>(mode->Integer());
  }
  if (const FieldView* status = param.Find("status")) {
    status_ = static_cast<std::int32_t>(status->Integer());
  }
}

bool ShownFile::Has(std::uint32_t signature) const {
  return std::any_of(tags_.begin(), tags_.end(),
                     [&](const StoredTag& tag) { return tag.signature == signature; });
}

ReadTag ShownFile::Read(std::uint32_t signature) const {
  const auto found = std::find_if(tags_.begin(), tags_.end(),
                                  [&](const StoredTag& tag) { return tag.signature == signature; });
  return found == tags_.end() ? ReadTag() : Read(*found);
}

ReadTag ShownFile::Read(const StoredTag& tag) const {
  ReadTag read;
  read.tag = &tag;
  const TagSchema* schema = FindTagSchema(tag.signature);
  if (schema == nullptr) {
    read.why = "no private tag of this signature is known";
  } else if (tag.held != tag.size) {
    read.why = "it reaches beyond the end of the file";
  } else if (!tag.isData) {
    read.why = "it is no binary 'data' element";
  } else {
    read.payload = std::make_unique<ByteSource>(file_, tag.payloadOffset(), tag.payloadSize());
    read.view = RecordView::Of(*schema, *read.payload, read.why);
  }
  return read;
}

std::string ShownFile::Bytes(std::uint64_t offset, std::size_t length) const {
  if (offset >= length_) return {};
  std::string bytes(static_cast<std::size_t>(std::min<std::uint64_t>(length, length_ - offset)),
                    '\0');
  const bool read = file_.seek(offset) && file_.read(bytes.data(), bytes.size()) == bytes.size();
  return read ? bytes : std::string();
}

std::vector<std::string> ChannelNames(std::uint32_t space, std::int32_t colorMode,
                                      std::uint64_t count) {
  std::vector<std::string> names = NamesIn(kMeasured, space, count);
  if (!names.empty()) return names;
  AStringArray inks;
  if (IsDeviceSpace(space)) GetStandardColorNamesByColorMode(colorMode, inks);
  if (inks.size() == count) {
    for (const AString& ink : inks) names.push_back(ink.str());
  }
  if (names.empty()) names = NamesIn(kDevice, space, count);
  constexpr std::uint64_t kMost = 64;
  for (std::uint64_t i = names.size(); i < std::min(count, kMost); ++i) {
    names.push_back("value " + std::to_string(i + 1));
  }
  return names;
}

bool IsDeviceSpace(std::uint32_t space) {
  const bool counted = (space & 0xFFFFFF) == (icSig1colorData & 0xFFFFFF);
  return counted || std::any_of(std::begin(kDevice), std::end(kDevice),
                                [&](const SpaceNames& row) { return row.space == space; });
}

std::string InkNames(std::int32_t colorMode) {
  AStringArray inks;
  GetStandardColorNamesByColorMode(colorMode, inks);
  std::string text;
  for (const AString& ink : inks) text += (text.empty() ? "" : ", ") + ink.str();
  return text;
}

std::string StandardText(const std::string& element) {
  const std::string_view bytes = element;
  const auto at = [&](std::size_t offset) -> std::uint64_t {
    return offset + 4 <= bytes.size() ? LoadBig32(bytes.data() + offset) : 0;
  };
  if (bytes.size() < 8) return {};
  if (at(0) == icSigTextType) return std::string(UpToZero(bytes.substr(8)));
  if (at(0) == icSignature("desc") && bytes.size() > 12) {
    return std::string(UpToZero(bytes.substr(12, static_cast<std::size_t>(at(8)))));
  }
  if (at(0) != icSignature("mluc") || at(8) == 0 || at(24) >= bytes.size()) return {};
  return FromUtf16(
      bytes.substr(static_cast<std::size_t>(at(24)), static_cast<std::size_t>(at(20))));
}

}  // namespace vkcl
