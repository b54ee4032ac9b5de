#include <iconv.h>
#include <langinfo.h>
#include <locale.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "platform/plinth/TextEncoding.h"
#include "platform/plinth/Utf8.h"

namespace vkcl {
namespace {

constexpr const char* kUtf8 = "UTF-8";
constexpr const char* kWide = "WCHAR_T";
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

class Converter {
 public:
  Converter(const char* to, const char* from) : handle_(::iconv_open(to, from)) {}
  ~Converter() {
    if (works()) ::iconv_close(handle_);
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  // NOLINTNEXTLINE(performance-no-int-to-ptr): so iconv_open tells that it failed
  bool works() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

  /// Converts `input` as far as it is text, appends the result to `output`, and takes what was
  /// converted off `input`. What remains begins with a byte that is no text.
  void Convert(std::string_view& input, std::string& output) {
    std::array<char, 4096> buffer = {};
    for (;;) {
      // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): iconv only reads it
      char* from = const_cast<char*>(input.data());
      std::size_t fromLeft = input.size();
      char* to = buffer.data();
      std::size_t toLeft = buffer.size();
      const std::size_t result = ::iconv(handle_, &from, &fromLeft, &to, &toLeft);
      const bool full = result == static_cast<std::size_t>(-1) && errno == E2BIG;
      output.append(buffer.data(), buffer.size() - toLeft);
      input.remove_prefix(input.size() - fromLeft);
      if (!full) return;
    }
  }

 private:
  iconv_t handle_;
};

bool IsAscii(const std::string& charset) {
  return charset.empty() || charset == "ANSI_X3.4-1968" || charset == "US-ASCII";
}

std::string EnvironmentCharset() {
  locale_t locale = ::newlocale(LC_CTYPE_MASK, "", nullptr);
  if (locale == nullptr) return {};
  std::string charset = ::nl_langinfo_l(CODESET, locale);
  ::freelocale(locale);
  return charset;
}

std::string HostCharset() {
  std::string charset = ::nl_langinfo(CODESET);
  if (IsAscii(charset)) charset = EnvironmentCharset();
  return IsAscii(charset) ? kUtf8 : charset;
}

// Converts the whole text; each byte that is none becomes `replacement`.
std::string ConvertAll(const char* to, const char* from, std::string_view text,
                       std::string_view replacement, std::size_t unit) {
  Converter converter(to, from);
  if (!converter.works()) return {};
  std::string output;
  while (!text.empty()) {
    converter.Convert(text, output);
    if (text.empty()) break;
    output += replacement;
    text.remove_prefix(std::min(unit, text.size()));
  }
  return output;
}

}  // namespace

std::string HostTextToUtf8(std::string_view text) {
  // The C library's converter takes and gives sequences that UTF-8 had before RFC 3629.
  return ValidUtf8(ConvertAll(kUtf8, HostCharset().c_str(), text, kReplacement, 1));
}

std::string Utf8ToHostText(std::string_view utf8) {
  Converter converter(HostCharset().c_str(), kUtf8);
  if (!converter.works()) return {};
  std::string output;
  converter.Convert(utf8, output);
  return utf8.empty() ? output : std::string();
}

std::wstring Utf8ToWide(std::string_view utf8) {
  constexpr wchar_t kWideReplacement = 0xFFFD;
  const std::string_view replacement(reinterpret_cast<const char*>(&kWideReplacement),
                                     sizeof kWideReplacement);
  const std::string bytes = ConvertAll(kWide, kUtf8, ValidUtf8(utf8), replacement, 1);
  std::wstring wide(bytes.size() / sizeof(wchar_t), L'\0');
  std::memcpy(wide.data(), bytes.data(), wide.size() * sizeof(wchar_t));
  return wide;
}

std::string WideToUtf8(std::wstring_view wide) {
  const std::string_view bytes(reinterpret_cast<const char*>(wide.data()),
                               wide.size() * sizeof(wchar_t));
  return ValidUtf8(ConvertAll(kUtf8, kWide, bytes, kReplacement, sizeof(wchar_t)));
}

}  // namespace vkcl
