// The string class of the host's application framework, as the spot-colour records take it.
#pragma once

#if defined(_AFX) || defined(__AFX_H__)
#include <afxstr.h>
#else

#include <string>

/// Small stand-in for builds without MFC: zero-terminated narrow text.
class CString {
 public:
  CString() = default;
  /// A null pointer gives the empty text.
  CString(const char* text) : text_(text != nullptr ? text : "") {}

  /// Length in bytes.
  int GetLength() const { return static_cast<int>(text_.length()); }
  /// The bytes with a terminating zero, valid until the text changes.
  const char* GetString() const { return text_.c_str(); }

 private:
  std::string text_;
};

#endif
