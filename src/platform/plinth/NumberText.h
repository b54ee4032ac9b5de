// Numbers as text and text as numbers, with a point as decimal separator whatever the locale. All
// conversions of the library stand in this one file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vkcl {

/// The white space of the C library's conversions in the "C" locale.
constexpr bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

/// The text behind its leading white space.
std::string_view SkipSpace(std::string_view text);

/// Reads the next number as the C library's %f conversion would, rounded once. `text` loses what
/// was read. False when there is none, and `number` means nothing then; an exponent that has begun
/// must have digits (ISO C: "1e" is no number).
bool NextNumber(std::string_view& text, float& number);
bool NextNumber(std::string_view& text, double& number);

/// Reads the next hexadecimal number as %x would, with or without "0x" and a sign. Of numbers that
/// do not fit 32 bits the result is false, as of a text without digits.
bool NextHex(std::string_view& text, std::uint32_t& number);
/// Reads the next decimal integer as %d would; false as for NextHex.
bool NextInteger(std::string_view& text, std::int32_t& number);

/// The integer at the front of a text, behind white space: conversion stops at the first character
/// that is no digit, and 0 is the answer to a text without digits. Numbers of 32 bits that are
/// written without a sign (up to 4294967295) keep their bits; larger ones, either way, become the
/// nearest that fits.
std::int32_t IntegerOf(std::string_view text);
/// The number at the front of a text, as strtod; 0 for a text without one.
double NumberOf(std::string_view text);

/// "%d"
std::string IntegerText(std::int32_t number);
/// The fewest digits that read back to the same number; "inf", "-inf" and "nan".
std::string ShortestText(float number);
std::string ShortestText(double number);
/// Reads a text that is a number as a whole, rounded once. False for any other text, and for a
/// number that is too large or, not being zero, too small.
bool WholeNumber(std::string_view text, float& number);
bool WholeNumber(std::string_view text, double& number);

/// "%.6f" and its like.
void AppendFixed(std::string& text, double number, int decimals);

}  // namespace vkcl
