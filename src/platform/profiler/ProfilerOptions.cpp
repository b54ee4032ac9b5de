// The profiler's options, in the 'meta' dictionary tag of a profile file. Little CMS reads and
// makes the dictionary; it never sees the file (MetaElement.h).
#include <algorithm>
#include <cstring>
#include <span>

#include "platform/Bytes.h"
#include "platform/plinth/TextEncoding.h"
#include "platform/plinth/WholeFile.h"
#include "platform/profiler/DictionaryCheck.h"
#include "platform/profiler/MetaElement.h"
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

// A dictionary in a profile of its own: Little CMS reads the very bytes that were checked, and
// nothing else. Null for an element that Little CMS must not see.
OpenProfile DictionaryOf(const Context& context, const Bytes& element) {
  if (!IsSoundDictionary(element)) return nullptr;
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
    const p::OpenProfile dictionary = p::DictionaryOf(context, p::ReadMetaElement(spec->path));
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
    const vkcl::FileContent content = vkcl::ReadWholeFile(spec->path);
    const std::span file(reinterpret_cast<const std::uint8_t*>(content.bytes.get()), content.size);
    const p::Context context = p::NewContext();
    const p::OpenProfile old = p::DictionaryOf(context, p::MetaElementIn(file));
    const cmsHANDLE entries = p::EntriesIn(old);
    // The entries of a dictionary that cannot be read would be lost.
    if (entries == nullptr && p::HasMetaElement(file)) return p::kRefused;
    const p::Dictionary merged = p::Merged(context, entries, object->options);
    const bool replaced = p::ReplaceMetaElement(spec->path, file, p::TagData(context, merged));
    return replaced ? p::kDone : p::kRefused;
  });
}

void CLFreeCLProfilerRef(void* profiler) { p::Free<p::Profiler>(profiler); }

}  // extern "C"
