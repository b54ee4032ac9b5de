// Loading, copying and the plain queries.
#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

#include "platform/Bytes.h"
#include "platform/Guarded.h"
#include "platform/plinth/AFile.h"
#include "profile/TableLayout.h"
#include "profile/VKCLProfile.h"

namespace {

constexpr std::size_t kHeaderSize = sizeof(icHeader);
constexpr std::size_t kTableStart = kHeaderSize + 4;
// What one read takes in: header, count and a table of up to 330 entries.
constexpr std::size_t kFirstRead = 4096;

// The device colour spaces that tell their number of channels. '2CLR' and '3CLR' are left out
// deliberately: a profile of theirs is opened with its number of channels.
struct SpaceChannels {
  icColorSpaceSignature space;
  int channels;
};
constexpr SpaceChannels kSpaceChannels[] = {
    {icSigGrayData, 1},     {icSig1colorData, 1},   {icSigRgbData, 3},      {icSigCmyData, 3},
    {icSigCmykData, 4},     {icSig4colorData, 4},   {icSig5colorData, 5},   {icSig6colorData, 6},
    {icSig7colorData, 7},   {icSig8colorData, 8},   {icSig9colorData, 9},   {icSig10colorData, 10},
    {icSig11colorData, 11}, {icSig12colorData, 12}, {icSig13colorData, 13}, {icSig14colorData, 14},
    {icSig15colorData, 15}, {icSig16colorData, 16},
};

int ChannelsOf(icColorSpaceSignature space) {
  for (const SpaceChannels& row : kSpaceChannels) {
    if (row.space == space) return row.channels;
  }
  return 0;
}

// The header is an array of 32-bit numbers up to the reserved bytes, but for the date, which is
// an array of 16-bit ones.
constexpr std::size_t kDateStart = offsetof(icHeader, date);
constexpr std::size_t kDateEnd = kDateStart + sizeof(icDateTimeNumber);
constexpr std::size_t kNumbersEnd = offsetof(icHeader, reserved);

// Big-endian numbers become the host's, and back: the order of their bytes is turned round.
template <class Number, Number (*load)(const void*)>
void Reverse(std::uint8_t* bytes, std::size_t from, std::size_t to) {
  for (std::size_t i = from; i < to; i += sizeof(Number)) {
    const Number number = load(bytes + i);
    std::memcpy(bytes + i, &number, sizeof number);
  }
}

void ToHostOrder(icTag* table, std::uint32_t count) {
  for (std::uint32_t i = 0; i < count; ++i) {
    const auto* entry = reinterpret_cast<const std::uint8_t*>(&table[i]);
    table[i] = {static_cast<icTagSignature>(vkcl::LoadBig32(entry)), vkcl::LoadBig32(entry + 4),
                vkcl::LoadBig32(entry + 8)};
  }
}

}  // namespace

VKCLProfile::VKCLProfile(const AFilePath& path, int channelCountArgument) noexcept
    : channelCount(channelCountArgument) {
  vkcl::Guarded([&] {
    filePath = path;
    AFile file;
    if (file.open(filePath, AFile::Read)) Load(file);
    return true;
  });
}

VKCLProfile::VKCLProfile(int channelCountArgument) noexcept : channelCount(channelCountArgument) {}

void VKCLProfile::Load(AFile& file) {
  const std::int64_t length = file.length();
  if (length < 0) return;
  fileLength_ = static_cast<std::uint64_t>(length);

  // Filling it with zeros would take longer than all that is done with what is read.
  std::array<std::uint8_t, kFirstRead> start;  // NOLINT(cppcoreguidelines-pro-type-member-init)
  const std::size_t wanted =
      static_cast<std::size_t>(std::min<std::uint64_t>(fileLength_, kFirstRead));
  const std::size_t got = file.read(start.data(), wanted);
  if (got < kHeaderSize) return;
  std::memcpy(&header, start.data(), kHeaderSize);
  ReverseICCHeader(&header);
  sizeInFile_ = header.size;
  if (header.magic != icMagicNumber || got < kTableStart) return;

  tagCount = vkcl::LoadBig32(start.data() + kHeaderSize);
  const std::uint64_t tableBytes = std::uint64_t{tagCount} * sizeof(icTag);
  if (tableBytes >= fileLength_) return;  // also the bound of the allocation
  tagTable = new icTag[tagCount]();
  const auto size = static_cast<std::size_t>(tableBytes);
  const std::size_t known = std::min(size, got - kTableStart);
  auto* table = reinterpret_cast<std::uint8_t*>(tagTable);
  std::memcpy(table, start.data() + kTableStart, known);
  if (known < size) {
    const bool whole = got == kFirstRead && file.seek(kFirstRead) &&
                       file.read(table + known, size - known) == size - known;
    if (!whole) return;
  }
  ToHostOrder(tagTable, tagCount);
  tableIsWhole_ = true;
  valid = 1;
  if (channelCount == 0) {
    channelCount = ChannelsOf(header.colorSpace);
    if (channelCount == 0) valid = 0;
  }
}

VKCLProfile::~VKCLProfile() {
  delete[] tagTable;
  // Asked without a copy, which could fail: an extension of ".tmp" is how such a path ends.
  if (filePath.str().ends_with(".tmp")) filePath.remove();
}

VKCLProfile::VKCLProfile(const VKCLProfile& other) noexcept {
  vkcl::Guarded([&] {
    CopyFrom(other);
    return true;
  });
}

VKCLProfile& VKCLProfile::operator=(const VKCLProfile& other) noexcept {
  if (this == &other) return *this;
  vkcl::Guarded([&] {
    CopyFrom(other);
    return true;
  });
  return *this;
}

// Everything that may fail for want of memory comes first: a copy that fails changes nothing.
void VKCLProfile::CopyFrom(const VKCLProfile& other) {
  std::unique_ptr<icTag[]> table;
  if (other.tagTable != nullptr) {
    table.reset(new icTag[other.tagCount]);
    std::copy_n(other.tagTable, other.tagCount, table.get());
  }
  AFilePath path = other.filePath;
  auto sizes = other.sizesInFile_;

  delete[] tagTable;
  tagTable = table.release();
  filePath = std::move(path);
  sizesInFile_ = std::move(sizes);
  valid = other.valid;
  channelCount = other.channelCount;
  header = other.header;
  tagCount = other.tagCount;
  tableIsWhole_ = other.tableIsWhole_;
  sizeInFile_ = other.sizeInFile_;
  fileLength_ = other.fileLength_;
}

void VKCLProfile::ReverseICCHeader(icHeader* h) {
  auto* bytes = reinterpret_cast<std::uint8_t*>(h);
  Reverse<std::uint32_t, vkcl::LoadBig32>(bytes, 0, kDateStart);
  Reverse<std::uint16_t, vkcl::LoadBig16>(bytes, kDateStart, kDateEnd);
  Reverse<std::uint32_t, vkcl::LoadBig32>(bytes, kDateEnd, kNumbersEnd);
}

int VKCLProfile::isValidOutputICC() const {
  return valid != 0 && header.deviceClass == icSigOutputClass ? 1 : 0;
}

const icTag* VKCLProfile::FindTag(std::uint32_t sig) const {
  if (!tableIsWhole_) return nullptr;
  const icTag* first = tagTable;
  const icTag* end = first + tagCount;
  const icTag* found = std::find_if(first, end, [&](const icTag& tag) { return tag.sig == sig; });
  return found != end ? found : nullptr;
}

// Position of the first entry of the signature of `tag`; on a miss the position that a new entry
// would take. Without a table `index` is left alone.
int VKCLProfile::GetTagIndex(icTag tag, unsigned long& index) const {
  if (tagTable == nullptr) return 0;
  const icTag* found = FindTag(tag.sig);
  index = found != nullptr ? static_cast<unsigned long>(found - tagTable) : tagCount;
  return found != nullptr ? 1 : 0;
}

unsigned long VKCLProfile::GetTagSize(icTagSignature sig) const {
  const icTag* tag = FindTag(sig);
  return tag != nullptr ? tag->size : 0;
}

unsigned long VKCLProfile::GetPadSize(unsigned long n) {
  return static_cast<unsigned long>(vkcl::PadTo4(n));
}

void VKCLProfile::UpdateHeaderColorSpace(int colorMode) {
  vkcl::SetColorSpaceOf(colorMode, header);
}
