#include "Fuzz.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace vkcl::fuzz {
namespace {

// Removed when the process ends well; what a crash leaves is the input's business.
class Folder {
 public:
  Folder() {
    const std::filesystem::path memory = "/dev/shm";
    std::error_code error;
    const bool isUsable =
        std::filesystem::is_directory(memory, error) && access(memory.c_str(), W_OK) == 0;
    const auto above = isUsable ? memory : std::filesystem::temp_directory_path();
    path_ = above / ("vkcl-fuzz-" + std::to_string(getpid()));
    std::filesystem::create_directories(path_);
  }
  ~Folder() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::string File(const char* name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

void PutBig32(Bytes& bytes, std::uint32_t number) {
  for (int shift = 24; shift >= 0; shift -= 8) {
    bytes.push_back(static_cast<std::uint8_t>(number >> shift));
  }
}

std::uint32_t Big32(const Bytes& bytes, std::size_t at) {
  return std::uint32_t{bytes[at]} << 24 | std::uint32_t{bytes[at + 1]} << 16 |
         std::uint32_t{bytes[at + 2]} << 8 | bytes[at + 3];
}

void SetBig32(Bytes& bytes, std::size_t at, std::uint32_t number) {
  Bytes big;
  PutBig32(big, number);
  std::copy(big.begin(), big.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

constexpr std::uint32_t Word(const char (&text)[5]) {
  return std::uint32_t{static_cast<unsigned char>(text[0])} << 24 |
         std::uint32_t{static_cast<unsigned char>(text[1])} << 16 |
         std::uint32_t{static_cast<unsigned char>(text[2])} << 8 |
         static_cast<unsigned char>(text[3]);
}

}  // namespace

void Demand(bool kept, const char* promise) {
  if (kept) return;
  std::fprintf(stderr, "broken: %s\n", promise);
  std::abort();
}

std::string FilePath(const char* name) {
  static const Folder folder;
  return folder.File(name);
}

void WriteFile(const std::string& path, const void* bytes, std::size_t size) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
  Demand(file.good(), "the target's own file can be written");
}

Bytes ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::uint64_t Digest(const void* bytes, std::size_t size, std::uint64_t before) {
  constexpr std::uint64_t kPrime = 0x100000001b3;
  const auto* each = static_cast<const std::uint8_t*>(bytes);
  std::uint64_t digest = before ^ 0xcbf29ce484222325;
  std::uint64_t word = 0;
  for (; size >= sizeof word; size -= sizeof word, each += sizeof word) {
    std::memcpy(&word, each, sizeof word);  // whole words: a record may have many megabytes
    digest = (digest ^ word) * kPrime;
    digest ^= digest >> 32;
  }
  for (std::size_t i = 0; i < size; ++i) digest = (digest ^ each[i]) * kPrime;
  return digest;
}

std::uint64_t Digest(const ProfileDataList& list) {
  const std::uint32_t counters[] = {list.DataFormat, static_cast<std::uint32_t>(list.NumOfSamples),
                                    static_cast<std::uint32_t>(list.ColorMode),
                                    static_cast<std::uint32_t>(list.NumOfColors),
                                    static_cast<std::uint32_t>(list.Measured)};
  std::uint64_t digest = Digest(counters, sizeof counters);
  const auto samples = static_cast<std::size_t>(std::max(list.NumOfSamples, 0));
  const auto colors = static_cast<std::size_t>(std::max(list.NumOfColors, 0));
  if (list.PerSample != nullptr) {
    digest = Digest(list.PerSample, samples * sizeof *list.PerSample, digest);
  }
  if (list.DataList == nullptr) return digest;
  return Digest(list.DataList, samples * colors * sizeof *list.DataList, digest);
}

std::uint64_t Digest(const SplitParam& split) {
  const std::int32_t head[] = {split.version, split.size, split.count};
  const std::uint64_t digest = Digest(head, sizeof head);
  if (split.splits == nullptr || split.count < 0) return digest;
  const std::size_t size = SplitParam::RecordSize(split.version);
  return Digest(split.splits, static_cast<std::size_t>(split.count) * size, digest);
}

std::uint8_t Input::Byte() {
  if (size_ == 0) return 0;
  --size_;
  return *data_++;
}

std::uint32_t Input::Number() {
  std::uint32_t number = 0;
  for (int i = 0; i < 4; ++i) number = number << 8 | Byte();
  return number;
}

Bytes Input::Take(std::size_t length) {
  const std::size_t taken = std::min(length, size_);
  Bytes bytes(data_, data_ + taken);
  data_ += taken;
  size_ -= taken;
  return bytes;
}

Bytes Profile(const std::vector<Tag>& tags) {
  Bytes file(128, 0);
  SetBig32(file, 8, 0x02100000);
  SetBig32(file, 12, Word("prtr"));
  SetBig32(file, 16, Word("CMYK"));
  SetBig32(file, 20, Word("Lab "));
  SetBig32(file, 36, Word("acsp"));
  PutBig32(file, static_cast<std::uint32_t>(tags.size()));
  std::size_t offset = 132 + 12 * tags.size();
  for (const Tag& tag : tags) {
    PutBig32(file, tag.signature);
    PutBig32(file, static_cast<std::uint32_t>(offset));
    PutBig32(file, static_cast<std::uint32_t>(tag.element.size()));
    offset += (tag.element.size() + 3) / 4 * 4;
  }
  for (const Tag& tag : tags) {
    file.insert(file.end(), tag.element.begin(), tag.element.end());
    file.resize((file.size() + 3) / 4 * 4);
  }
  SetBig32(file, 0, static_cast<std::uint32_t>(file.size()));
  return file;
}

Bytes DataElement(const Bytes& payload) {
  Bytes element = {'d', 'a', 't', 'a', 0, 0, 0, 0, 0, 0, 0, 1};
  element.insert(element.end(), payload.begin(), payload.end());
  return element;
}

std::vector<Tag> TagsOf(const Bytes& file) {
  Demand(file.size() >= 132, "a profile has a header");
  std::vector<Tag> tags;
  const std::uint32_t count = Big32(file, 128);
  Demand(132 + std::size_t{12} * count <= file.size(), "a profile has its table");
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::size_t entry = 132 + std::size_t{12} * i;
    const std::size_t offset = Big32(file, entry + 4);
    const std::size_t size = Big32(file, entry + 8);
    Demand(offset + size <= file.size(), "a profile holds its tags");
    const auto first = file.begin() + static_cast<std::ptrdiff_t>(offset);
    tags.push_back({Big32(file, entry), Bytes(first, first + static_cast<std::ptrdiff_t>(size))});
  }
  return tags;
}

}  // namespace vkcl::fuzz
