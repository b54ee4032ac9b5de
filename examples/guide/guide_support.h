// What the examples of docs/guide.md take for granted.
#pragma once

namespace guide {

/// Counts, and tells of one that does not hold.
void Check(bool holds, const char* text, const char* file, int line);

}  // namespace guide

#define check(...) ::guide::Check(static_cast<bool>(__VA_ARGS__), #__VA_ARGS__, __FILE__, __LINE__)
