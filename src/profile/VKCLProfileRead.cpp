// Reading tags. A tag's data are a head (the type, four reserved bytes and, in a 'data' tag, the
// data flag) and the content behind it. A read is one open, one transfer, one close, whatever the
// tag; only a large read into a caller's buffer looks at the head by a transfer of its own.
#include <algorithm>
#include <array>
#include <memory>

#include "platform/Bytes.h"
#include "platform/Guarded.h"
#include "platform/plinth/AFile.h"
#include "profile/TableLayout.h"
#include "profile/VKCLProfile.h"

using vkcl::kDataHead;

namespace {

constexpr std::size_t kTextHead = 8;
constexpr std::size_t kScratchContent = 65536;

std::size_t ReadPieces(AFile& file, std::uint64_t offset,
                       std::initializer_list<vkcl::host::MutableSlice> pieces) {
  std::array<vkcl::host::MutableSlice, 2> slices = {};
  std::copy(pieces.begin(), pieces.end(), slices.begin());
  return static_cast<std::size_t>(file.readAt(offset, {slices.data(), pieces.size()}));
}

}  // namespace

// What a typed read wants: the first `length` bytes of the content of a tag of that type.
struct VKCLProfile::TypedRead {
  icTagTypeSignature type;
  std::size_t headSize;
  void* out;
  std::size_t length;
  bool mayClobber;  // `out` is not seen by the caller when the read fails
};

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): asked of a profile
int VKCLProfile::isVKCLPrivateTag(icTagSignature sig) const {
  return vkcl::IsPrivateSignature(sig) ? 1 : 0;
}

// Whether the tag's bytes lie within the file. The length that is known spares a question to the
// system; a file that has grown since then is asked.
bool VKCLProfile::FileHolds(const icTag& tag) const {
  const std::uint64_t end = std::uint64_t{tag.offset} + tag.size;
  if (end <= fileLength_) return true;
  AFile file;
  if (!file.open(filePath, AFile::Read)) return false;
  return static_cast<std::int64_t>(end) <= file.length();
}

bool VKCLProfile::ReadTyped(const icTag& tag, const TypedRead& what) const {
  if (!FileHolds(tag)) return false;
  AFile file;
  return file.open(filePath, AFile::Read) && ReadTyped(file, tag, what);
}

bool VKCLProfile::ReadTyped(AFile& file, const icTag& tag, const TypedRead& what) {
  std::array<std::uint8_t, kDataHead> head = {};
  const auto isType = [&] { return vkcl::LoadBig32(head.data()) == what.type; };
  const std::size_t both = what.headSize + what.length;

  if (what.mayClobber) {
    return ReadPieces(file, tag.offset, {{head.data(), what.headSize}, {what.out, what.length}}) ==
               both &&
           isType();
  }
  if (what.length <= kScratchContent) {
    std::unique_ptr<std::uint8_t[]> scratch(new std::uint8_t[what.length]);
    if (ReadPieces(file, tag.offset,
                   {{head.data(), what.headSize}, {scratch.get(), what.length}}) != both ||
        !isType()) {
      return false;
    }
    std::copy_n(scratch.get(), what.length, static_cast<std::uint8_t*>(what.out));
    return true;
  }
  return ReadPieces(file, tag.offset, {{head.data(), what.headSize}}) == what.headSize &&
         isType() &&
         ReadPieces(file, tag.offset + what.headSize, {{what.out, what.length}}) == what.length;
}

// The first `length` bytes, or as many as there are, of the content of a tag that `file`, the
// profile's own, held when it was loaded. On failure `out` may have been written to.
bool VKCLProfile::ReadContentStart(AFile& file, VKPrivateTagSignature sig, void* out,
                                   unsigned long& length) const {
  const icTag* tag = FindTag(sig);
  if (tag == nullptr || tag->size < kDataHead) return false;
  if (std::uint64_t{tag->offset} + tag->size > fileLength_) return false;
  length = std::min<unsigned long>(tag->size - kDataHead, length);
  return ReadTyped(file, *tag, {icSigDataType, kDataHead, out, length, true});
}

int VKCLProfile::ReadDataTypeContent(icTag tag, char* out) const {
  if (tag.size < kDataHead) return 0;
  return vkcl::Guarded([&] {
    return ReadTyped(tag, {icSigDataType, kDataHead, out, tag.size - kDataHead, false}) ? 1 : 0;
  });
}

int VKCLProfile::ReadTextTypeContent(icTag tag, char* out) const {
  if (out == nullptr || tag.size < kTextHead) return 0;
  return vkcl::Guarded([&] {
    return ReadTyped(tag, {icSigTextType, kTextHead, out, tag.size - kTextHead, true}) ? 1 : 0;
  });
}

// Reads a tag whole, `tag.size` bytes, into `out`.
bool VKCLProfile::ReadWhole(const icTag& tag, std::size_t headSize, void* out) const {
  if (out == nullptr || tag.size < headSize || !FileHolds(tag)) return false;
  AFile file;
  return file.open(filePath, AFile::Read) && file.seek(tag.offset) &&
         file.read(out, tag.size) == tag.size;
}

int VKCLProfile::ReadDataType(icTag tag, icDataType* out) const {
  if (!ReadWhole(tag, kDataHead, out)) return 0;
  out->base.sig = static_cast<icTagTypeSignature>(vkcl::LoadBig32(&out->base.sig));
  out->data.dataFlag = vkcl::LoadBig32(&out->data.dataFlag);
  return out->base.sig == icSigDataType ? 1 : 0;
}

int VKCLProfile::ReadTextType(icTag tag, icTextType* out) const {
  if (!ReadWhole(tag, kTextHead, out)) return 0;
  out->base.sig = static_cast<icTagTypeSignature>(vkcl::LoadBig32(&out->base.sig));
  return out->base.sig == icSigTextType ? 1 : 0;
}

int VKCLProfile::ReadVKPrivateTag(VKPrivateTagSignature sig, void* buffer,
                                  unsigned long* size) const {
  return ReadVKPrivateTag(sig, buffer, UINT32_MAX, size);
}

int VKCLProfile::ReadVKPrivateTag(VKPrivateTagSignature sig, void* buffer, unsigned long capacity,
                                  unsigned long* size) const {
  if (buffer == nullptr) return 0;
  if (size != nullptr) *size = 0;
  const icTag* tag = FindTag(sig);
  if (tag == nullptr || tag->size < kDataHead) return 0;
  const std::size_t length = std::min<std::size_t>(tag->size - kDataHead, capacity);
  const bool read = vkcl::Guarded([&] {
    return ReadTyped(*tag, {icSigDataType, kDataHead, buffer, length, false});
  });
  if (read && size != nullptr) *size = static_cast<unsigned long>(length);
  return read ? 1 : 0;
}

int VKCLProfile::ReadVKPrivateTag(VKPrivateTag* tag, int allocate) const {
  if (tag == nullptr) return 0;
  if (allocate == 0) {
    if (tag->data == nullptr) return 0;
    unsigned long length = 0;
    const int read = ReadVKPrivateTag(tag->signature, tag->data, &length);
    tag->size = static_cast<std::uint32_t>(length);
    return read;
  }
  const icTag* entry = FindTag(tag->signature);
  if (entry == nullptr || entry->size <= kDataHead) return 0;
  const std::uint32_t length = entry->size - kDataHead;
  std::unique_ptr<char[]> block;
  const bool read = vkcl::Guarded([&] {
    if (!FileHolds(*entry)) return false;  // before the allocation: the size may be anything
    block.reset(new char[length]);
    return ReadTyped(*entry, {icSigDataType, kDataHead, block.get(), length, true});
  });
  tag->data = read ? block.release() : nullptr;
  tag->size = read ? length : 0;
  return read ? 1 : 0;
}

char* VKCLProfile::ReadtargTag(unsigned long& size) const {
  const icTag* tag = FindTag(icSigCharTargetTag);
  if (tag == nullptr || tag->size < kTextHead) return nullptr;
  return vkcl::Guarded([&]() -> char* {
    if (!FileHolds(*tag)) return nullptr;
    const std::size_t length = tag->size - kTextHead;
    std::unique_ptr<char[]> text(new char[length]);
    if (ReadTextTypeContent(*tag, text.get()) == 0) return nullptr;
    size = static_cast<unsigned long>(length);
    return text.release();
  });
}
