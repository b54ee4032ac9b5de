#include "platform/plinth/NumberText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "platform/plinth/ALocaleSwitcher.h"
#include "platform/plinth/AString.h"

namespace vkcl {
namespace {

enum class Exponent { Whole, AsFarAsItGoes };

float FromC(const char* text, float /*kind*/) { return std::strtof(text, nullptr); }
double FromC(const char* text, double /*kind*/) { return std::strtod(text, nullptr); }

// A number that is too large or too small for from_chars to tell: the C library rounds it to
// infinity or zero.
template <class Number>
Number Extreme(const char* first, const char* last) {
  const ALocaleSwitcher neutral;
  return FromC(std::string(first, last).c_str(), Number());
}

bool StartsWith(std::string_view text, std::string_view word) {
  return text.size() >= word.size() &&
         AString(text.data(), word.size()).compareNoCase(AString(word.data(), word.size())) == 0;
}

// What %f takes for a number though it has no digits; its length, or 0.
template <class Number>
std::size_t NumberWord(std::string_view text, Number& number, Exponent exponent) {
  if (StartsWith(text, "nan")) {
    number = std::numeric_limits<Number>::quiet_NaN();
    return 3;
  }
  if (!StartsWith(text, "inf")) return 0;
  number = std::numeric_limits<Number>::infinity();
  if (StartsWith(text, "infinity")) return 8;
  // For %f a word that has begun must end.
  return exponent == Exponent::Whole && StartsWith(text, "infi") ? 0 : 3;
}

bool IsHexDigit(char c) {
  return (c >= '0' && c <= '9') || ((c | 0x20) >= 'a' && (c | 0x20) <= 'f');
}

// Whether digits stand behind "0x", before or behind a point.
bool BeginsHex(std::string_view text) {
  if (!text.empty() && text[0] == '.') text.remove_prefix(1);
  return !text.empty() && IsHexDigit(text[0]);
}

// The digits of a number without its sign; their length, or 0.
template <class Number>
std::size_t Digits(std::string_view text, Number& number, Exponent exponent) {
  const bool prefix = text.size() > 1 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  const bool hex = prefix && BeginsHex(text.substr(2));
  if (prefix && !hex && exponent == Exponent::Whole) return 0;
  const char* first = text.data() + (hex ? 2 : 0);
  const char* last = text.data() + text.size();
  if (first != last && *first == '-') return 0;
  const auto result = std::from_chars(first, last, number,
                                      hex ? std::chars_format::hex : std::chars_format::general);
  if (result.ec == std::errc::invalid_argument) return 0;
  const char letter = hex ? 'p' : 'e';
  const auto isExponent = [&](char c) { return (c | 0x20) == letter; };
  const bool begun = result.ptr != last && isExponent(*result.ptr);
  if (begun && exponent == Exponent::Whole && std::none_of(first, result.ptr, isExponent)) return 0;
  if (result.ec == std::errc::result_out_of_range) {
    number = Extreme<Number>(text.data(), result.ptr);
  }
  return static_cast<std::size_t>(result.ptr - text.data());
}

template <class Number>
bool Next(std::string_view& text, Number& number, Exponent exponent) {
  text = SkipSpace(text);
  if (text.empty()) return false;
  const bool negative = text.front() == '-';
  const std::string_view unsignedText = text.substr(negative || text.front() == '+' ? 1 : 0);
  if (unsignedText.empty()) return false;
  const bool isWord = unsignedText.front() > '9';
  const std::size_t length =
      isWord ? NumberWord(unsignedText, number, exponent) : Digits(unsignedText, number, exponent);
  if (length == 0) return false;
  if (negative) number = -number;
  text = unsignedText.substr(length);
  return true;
}

// The digits behind an optional sign, as a number of 64 bits that stays at its largest.
bool NextWhole(std::string_view& text, int base, std::int64_t& number) {
  text = SkipSpace(text);
  const bool negative = !text.empty() && text.front() == '-';
  std::string_view digits = text.substr(!text.empty() && (negative || text.front() == '+') ? 1 : 0);
  if (base == 16 && digits.size() > 1 && digits[0] == '0' && (digits[1] | 0x20) == 'x') {
    digits.remove_prefix(2);
  }
  if (!digits.empty() && digits.front() == '-') return false;
  number = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number, base);
  if (result.ec == std::errc::invalid_argument) return false;
  if (result.ec == std::errc::result_out_of_range) number = INT64_MAX;
  if (negative) number = -number;
  text = digits.substr(static_cast<std::size_t>(result.ptr - digits.data()));
  return true;
}

template <class Number>
std::string Shortest(Number number) {
  if (std::isnan(number)) return "nan";  // NaNs have signs, which say nothing
  std::array<char, 32> buffer = {};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
  return {buffer.data(), result.ptr};
}

template <class Number>
bool Whole(std::string_view text, Number& number) {
  const char* last = text.data() + text.size();
  const auto result = std::from_chars(text.data(), last, number);
  return result.ec == std::errc() && result.ptr == last;
}

}  // namespace

std::string_view SkipSpace(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size() && IsSpace(text[i])) ++i;
  return text.substr(i);
}

bool NextNumber(std::string_view& text, float& number) {
  return Next(text, number, Exponent::Whole);
}

bool NextNumber(std::string_view& text, double& number) {
  return Next(text, number, Exponent::Whole);
}

bool NextHex(std::string_view& text, std::uint32_t& number) {
  std::int64_t whole = 0;
  if (!NextWhole(text, 16, whole) || whole > UINT32_MAX || whole < -std::int64_t{UINT32_MAX}) {
    return false;
  }
  number = static_cast<std::uint32_t>(whole);
  return true;
}

bool NextInteger(std::string_view& text, std::int32_t& number) {
  std::int64_t whole = 0;
  if (!NextWhole(text, 10, whole) || whole > INT32_MAX || whole < INT32_MIN) return false;
  number = static_cast<std::int32_t>(whole);
  return true;
}

std::int32_t IntegerOf(std::string_view text) {
  std::int64_t whole = 0;
  std::string_view rest = text;
  if (!NextWhole(rest, 10, whole)) return 0;
  const bool plus = SkipSpace(text).front() == '+';
  if (!plus && whole > INT32_MAX && whole <= UINT32_MAX) return static_cast<std::int32_t>(whole);
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(whole, INT32_MIN, INT32_MAX));
}

double NumberOf(std::string_view text) {
  double number = 0;
  return Next(text, number, Exponent::AsFarAsItGoes) ? number : 0;
}

std::string IntegerText(std::int32_t number) {
  std::array<char, 16> buffer = {};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
  return {buffer.data(), result.ptr};
}

std::string ShortestText(float number) { return Shortest(number); }
std::string ShortestText(double number) { return Shortest(number); }

bool WholeNumber(std::string_view text, float& number) { return Whole(text, number); }
bool WholeNumber(std::string_view text, double& number) { return Whole(text, number); }

void AppendFixed(std::string& text, double number, int decimals) {
  std::array<char, 512> buffer = {};  // the largest double has 309 digits before the point
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                    std::chars_format::fixed, decimals);
  text.append(buffer.data(), result.ptr);
}

}  // namespace vkcl
