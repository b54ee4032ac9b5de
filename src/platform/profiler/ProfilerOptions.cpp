// The profiler's options, in the 'meta' dictionary tag of a profile file. Little CMS reads and
// makes the dictionary; the file itself is rewritten here, so that nothing else in it changes.
#include <algorithm>
#include <cstring>

#include "platform/Bytes.h"
#include "platform/plinth/FileRewrite.h"
#include "platform/plinth/TextEncoding.h"
#include "platform/plinth/WholeFile.h"
#include "platform/profiler/DictionaryCheck.h"
#include "platform/profiler/ProfileSource.h"
#include "platform/profiler/ProfilerObjects.h"
#include "platform/profiler/TesselColorProfiler.h"

namespace vkcl::profiler {
namespace {

constexpr const char* kKeys[] = {"ProfileSize", "ProfileFormat", "BlackGeneration",
                                 "BlackWidth",  "BlackStart",    "BrightenerCorrection",
                                 "InkTotal"};
constexpr std::size_t kLongestValue = 255;

bool IsKey(const std::string& key) {
  return std::find(std::begin(kKeys), std::end(kKeys), key) != std::end(kKeys);
}

struct DictionaryDeleter {
  cmsContext context = nullptr;
  void operator()(void* dictionary) const {
    if (!IsShort(context)) cmsDictFree(dictionary);
  }
};
using Dictionary = std::unique_ptr<void, DictionaryDeleter>;

constexpr std::size_t kTableStart = 132;
constexpr std::size_t kEntrySize = 12;
constexpr cmsUInt32Number kLargestElement = cmsUInt32Number{64} << 20;

// The dictionary element of a profile; empty without one, and for one that Little CMS must not see.
Bytes DictionaryElement(const OpenProfile& profile) {
  const cmsUInt32Number size =
      profile ? cmsReadRawTag(profile.get(), cmsSigMetaTag, nullptr, 0) : 0;
  if (size == 0 || size > kLargestElement) return {};
  Bytes element(size);
  const bool read = cmsReadRawTag(profile.get(), cmsSigMetaTag, element.data(), size) == size;
  return read && IsSoundDictionary(element) ? element : Bytes();
}

// A profile that holds a dictionary element and nothing else.
Bytes CarrierOf(const Bytes& element) {
  constexpr std::size_t kStart = kTableStart + kEntrySize;
  Bytes carrier(kStart);
  carrier.insert(carrier.end(), element.begin(), element.end());
  StoreBig32(carrier.data(), static_cast<std::uint32_t>(carrier.size()));
  StoreBig32(&carrier[8], 0x04300000);
  StoreBig32(&carrier[36], cmsMagicNumber);
  StoreBig32(&carrier[128], 1);
  StoreBig32(&carrier[kTableStart], cmsSigMetaTag);
  StoreBig32(&carrier[kTableStart + 4], kStart);
  StoreBig32(&carrier[kTableStart + 8], static_cast<std::uint32_t>(element.size()));
  return carrier;
}

// The dictionary of a profile, in a profile of its own: Little CMS reads the very bytes that were
// looked at, and keeps their order. Null without a sound one.
OpenProfile DictionaryOf(const Context& context, const OpenProfile& profile) {
  const Bytes element = DictionaryElement(profile);
  if (element.empty()) return nullptr;
  const Bytes bytes = CarrierOf(element);
  return OpenBytes(context, bytes.data(), bytes.size());
}

// Its entries, as long as the profile is open; null where there are none.
cmsHANDLE EntriesIn(const OpenProfile& dictionary) {
  if (!dictionary) return nullptr;
  return Within(cmsGetProfileContextID(dictionary.get()),
                [&] { return cmsReadTag(dictionary.get(), cmsSigMetaTag); });
}

std::string NameOf(const cmsDICTentry& entry) {
  return entry.Name != nullptr ? WideToUtf8(entry.Name) : std::string();
}

Options OptionsIn(cmsHANDLE dictionary) {
  Options options;
  for (const cmsDICTentry* entry = cmsDictGetEntryList(dictionary); entry != nullptr;
       entry = cmsDictNextEntry(entry)) {
    const std::string name = NameOf(*entry);
    if (!IsKey(name) || entry->Value == nullptr) continue;
    options[name] = WideToUtf8(entry->Value);
  }
  return options;
}

// Little CMS reads pairs of UTF-16 units into one wide character where there is room, but writes
// the low half of each: characters of two units are handed over as two.
std::wstring AsUnits(const wchar_t* text) {
  std::wstring units;
  for (; text != nullptr && *text != L'\0'; ++text) {
    // NOLINTNEXTLINE(bugprone-signed-char-misuse,cert-str34-c): a wide character, not a narrow one
    const auto character = static_cast<std::uint32_t>(*text);
    if (character < 0x10000) {
      units += *text;
    } else {
      units += static_cast<wchar_t>(0xD800 + ((character - 0x10000) >> 10));
      units += static_cast<wchar_t>(0xDC00 + (character & 0x3FF));
    }
  }
  return units;
}

bool AddEntry(const Context& context, const Dictionary& dictionary, const wchar_t* name,
              const wchar_t* value, const cmsMLU* displayName, const cmsMLU* displayValue) {
  const std::wstring nameUnits = AsUnits(name);
  const std::wstring valueUnits = AsUnits(value);
  return Within(context.get(), [&] {
           return cmsDictAddEntry(dictionary.get(), nameUnits.c_str(),
                                  value != nullptr ? valueUnits.c_str() : nullptr, displayName,
                                  displayValue);
         }) != FALSE;
}

// The old dictionary's other entries, with the options behind them. Little CMS keeps a dictionary
// with its last entry first, and writes it that way: it is filled from the end.
Dictionary Merged(const Context& context, cmsHANDLE old, const Options& options) {
  Dictionary merged(Within(context.get(), [&] { return cmsDictAlloc(context.get()); }),
                    {context.get()});
  if (!merged) return nullptr;
  for (auto option = options.rbegin(); option != options.rend(); ++option) {
    if (!AddEntry(context, merged, Utf8ToWide(option->first).c_str(),
                  Utf8ToWide(option->second).c_str(), nullptr, nullptr)) {
      return nullptr;
    }
  }
  std::vector<const cmsDICTentry*> others;
  for (const cmsDICTentry* entry = old != nullptr ? cmsDictGetEntryList(old) : nullptr;
       entry != nullptr; entry = cmsDictNextEntry(entry)) {
    if (!options.contains(NameOf(*entry))) others.push_back(entry);
  }
  for (auto entry = others.rbegin(); entry != others.rend(); ++entry) {
    const cmsDICTentry& kept = **entry;
    if (!AddEntry(context, merged, kept.Name, kept.Value, kept.DisplayName, kept.DisplayValue)) {
      return nullptr;
    }
  }
  return merged;
}

// The dictionary as the data of a tag, by way of a profile that holds nothing else.
Bytes TagData(const Context& context, const Dictionary& dictionary) {
  const OpenProfile carrier(
      Within(context.get(), [&] { return cmsCreateProfilePlaceholder(context.get()); }));
  if (!carrier || !dictionary) return {};
  cmsSetProfileVersion(carrier.get(), 4.3);
  const auto write = [&] { return cmsWriteTag(carrier.get(), cmsSigMetaTag, dictionary.get()); };
  if (!Within(context.get(), write)) return {};
  const Bytes bytes = Serialised(carrier);
  const OpenProfile written = OpenBytes(context, bytes.data(), bytes.size());
  if (!written) return {};
  Bytes data(cmsReadRawTag(written.get(), cmsSigMetaTag, nullptr, 0));
  cmsReadRawTag(written.get(), cmsSigMetaTag, data.data(),
                static_cast<cmsUInt32Number>(data.size()));
  return data;
}

// Little CMS opens no profile with more.
constexpr std::size_t kMostTags = 100;

struct Entry {
  std::uint32_t sig;
  std::uint32_t offset;
  std::uint32_t size;
  const std::uint8_t* data;  // null for one without data, which readers pass over
};

// False when the table or a tag is not wholly in the file.
bool ReadTable(const std::uint8_t* file, std::size_t length, std::vector<Entry>& table) {
  if (length < kTableStart) return false;
  const std::uint64_t count = LoadBig32(file + 128);
  if (kTableStart + kEntrySize * count > length) return false;
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint8_t* row = file + kTableStart + kEntrySize * i;
    const Entry entry = {LoadBig32(row), LoadBig32(row + 4), LoadBig32(row + 8), nullptr};
    if (std::uint64_t{entry.offset} + entry.size > length) return false;
    table.push_back(entry);
    if (entry.offset != 0 && entry.size != 0) table.back().data = file + entry.offset;
  }
  return true;
}

// The entry of the dictionary, the one that is read where there are several; a new one at the end
// where there is none.
Entry& DictionaryEntry(std::vector<Entry>& table) {
  Entry* found = nullptr;
  for (Entry& entry : table) {
    if (entry.sig != cmsSigMetaTag) continue;
    if (found == nullptr || found->data == nullptr) found = &entry;
  }
  return found != nullptr ? *found : table.emplace_back(Entry{cmsSigMetaTag, 0, 0, nullptr});
}

// Puts the entries' data one behind the other; entries that share a block go on sharing it, and
// those without data stay as they are: with a place they would be read.
std::vector<FilePiece> LayOut(std::vector<Entry>& table, std::uint64_t& end) {
  static constexpr std::uint8_t kZeros[4] = {};
  std::map<std::pair<const std::uint8_t*, std::uint32_t>, std::uint32_t> placed;
  std::vector<FilePiece> pieces;
  end = kTableStart + kEntrySize * table.size();
  for (Entry& entry : table) {
    if (entry.data == nullptr) continue;
    const auto [place, isNew] =
        placed.try_emplace({entry.data, entry.size}, static_cast<std::uint32_t>(end));
    entry.offset = place->second;
    if (!isNew) continue;
    pieces.push_back({end, entry.size, entry.data, 0});
    pieces.push_back({end + entry.size, PadTo4(entry.size) - entry.size, kZeros, 0});
    end += PadTo4(entry.size);
    if (end > UINT32_MAX) return {};
  }
  return pieces;
}

// Writes the file anew with `data` as its dictionary tag. Refused where there is one that was not
// `read`: its entries would be lost.
int ReplaceDictionary(const std::string& path, const FileContent& content, bool read,
                      const Bytes& data) {
  const auto* file = reinterpret_cast<const std::uint8_t*>(content.bytes.get());
  std::vector<Entry> table;
  if (data.empty() || !ReadTable(file, content.size, table)) return kRefused;
  Entry& dictionary = DictionaryEntry(table);
  if (dictionary.data != nullptr && !read) return kRefused;
  dictionary.data = data.data();
  dictionary.size = static_cast<std::uint32_t>(data.size());
  if (table.size() > kMostTags) return kRefused;

  std::uint64_t end = 0;
  std::vector<FilePiece> pieces = LayOut(table, end);
  if (pieces.empty()) return kRefused;
  Bytes head(file, file + 128);
  head.resize(kTableStart + kEntrySize * table.size());
  StoreBig32(head.data(), static_cast<std::uint32_t>(end));
  StoreBig32(head.data() + 128, static_cast<std::uint32_t>(table.size()));
  for (std::size_t i = 0; i < table.size(); ++i) {
    std::uint8_t* row = head.data() + kTableStart + kEntrySize * i;
    StoreBig32(row, table[i].sig);
    StoreBig32(row + 4, table[i].offset);
    StoreBig32(row + 8, table[i].size);
  }
  pieces.push_back({0, head.size(), head.data(), 0});
  std::uint64_t length = 0;
  return RewriteFile(path, pieces, FileEnd::Cut, FileOrigin::Existing, length) ? kDone : kRefused;
}

}  // namespace
}  // namespace vkcl::profiler

namespace p = vkcl::profiler;

extern "C" {

void* CLNewCLProfilerRef(void) { return p::New<p::Profiler>(); }

int CLImportProfilerOptions(void* profiler, void* fileSpec) {
  auto* object = p::As<p::Profiler>(profiler);
  const auto* spec = p::As<p::FileSpec>(fileSpec);
  if (object == nullptr || spec == nullptr) return p::kRefused;
  return p::Status([&] {
    const p::Context context = p::NewContext();
    p::ProfileSource file(spec->path);
    const p::OpenProfile profile = file.Open(context);
    const p::OpenProfile dictionary = p::DictionaryOf(context, profile);
    const cmsHANDLE entries = p::EntriesIn(dictionary);
    if (entries == nullptr) return p::kRefused;
    p::Options options = p::OptionsIn(entries);
    if (options.empty()) return p::kRefused;
    object->options = std::move(options);
    return p::kDone;
  });
}

int CLGetProfilerOption(void* profiler, const char* key, void* buffer) {
  const auto* object = p::As<p::Profiler>(profiler);
  if (object == nullptr || key == nullptr || buffer == nullptr) return p::kRefused;
  return p::Status([&] {
    const auto option = object->options.find(key);
    if (option == object->options.end()) return p::kRefused;
    const std::size_t length = std::min(option->second.size(), p::kLongestValue);
    std::memcpy(buffer, option->second.data(), length);
    static_cast<char*>(buffer)[length] = '\0';
    return p::kDone;
  });
}

int CLSetProfilerOption(void* profiler, const char* key, const char* value) {
  auto* object = p::As<p::Profiler>(profiler);
  if (object == nullptr || key == nullptr || value == nullptr) return p::kRefused;
  return p::Status([&] {
    if (!p::IsKey(key) || std::strlen(value) > p::kLongestValue) return p::kRefused;
    std::string text(value);  // before the place is made: one without its text must not be left
    object->options[key] = std::move(text);
    return p::kDone;
  });
}

int CLExportProfilerOptions(void* profiler, void* fileSpec) {
  const auto* object = p::As<p::Profiler>(profiler);
  const auto* spec = p::As<p::FileSpec>(fileSpec);
  if (object == nullptr || spec == nullptr || object->options.empty()) return p::kRefused;
  return p::Status([&] {
    const vkcl::FileContent file = vkcl::ReadWholeFile(spec->path);
    const p::Context context = p::NewContext();
    const p::OpenProfile profile = p::OpenBytes(context, file.bytes.get(), file.size);
    if (!profile) return p::kRefused;
    const p::OpenProfile old = p::DictionaryOf(context, profile);
    const cmsHANDLE entries = p::EntriesIn(old);
    const p::Dictionary merged = p::Merged(context, entries, object->options);
    return p::ReplaceDictionary(spec->path, file, entries != nullptr, p::TagData(context, merged));
  });
}

void CLFreeCLProfilerRef(void* profiler) { p::Free<p::Profiler>(profiler); }

}  // extern "C"
