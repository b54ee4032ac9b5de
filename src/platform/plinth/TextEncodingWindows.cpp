#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <windows.h>

#include "platform/plinth/TextEncoding.h"

namespace vkcl {
namespace {

std::wstring Widen(std::string_view text, unsigned int codePage) {
  const int size = static_cast<int>(text.size());
  const int length = ::MultiByteToWideChar(codePage, 0, text.data(), size, nullptr, 0);
  if (length <= 0) return {};
  std::wstring wide(static_cast<std::size_t>(length), L'\0');
  ::MultiByteToWideChar(codePage, 0, text.data(), size, wide.data(), length);
  return wide;
}

std::string Narrow(std::wstring_view wide, unsigned int codePage, int* lost) {
  const int size = static_cast<int>(wide.size());
  const int length =
      ::WideCharToMultiByte(codePage, 0, wide.data(), size, nullptr, 0, nullptr, lost);
  if (length <= 0) return {};
  std::string narrow(static_cast<std::size_t>(length), '\0');
  ::WideCharToMultiByte(codePage, 0, wide.data(), size, narrow.data(), length, nullptr, lost);
  return narrow;
}

}  // namespace

std::string HostTextToUtf8(std::string_view text) {
  return Narrow(Widen(text, CP_ACP), CP_UTF8, nullptr);
}

std::string Utf8ToHostText(std::string_view utf8) {
  int lost = 0;
  // The UTF-8 code page does not report losses, and has none.
  std::string narrow =
      Narrow(Widen(utf8, CP_UTF8), CP_ACP, ::GetACP() == CP_UTF8 ? nullptr : &lost);
  return lost != 0 ? std::string() : narrow;
}

std::wstring Utf8ToWide(std::string_view utf8) { return Widen(utf8, CP_UTF8); }

std::string WideToUtf8(std::wstring_view wide) { return Narrow(wide, CP_UTF8, nullptr); }

}  // namespace vkcl
