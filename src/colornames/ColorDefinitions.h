// Extra colorants of an installation, and the colorants that every installation has, by index.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/Export.h"
#include "platform/plinth/AString.h"
#include "platform/plinth/AStringArray.h"

/// The extra colorants of the colour definitions file, "Colors.ini": five parallel sequences in
/// file order, one element a colorant.
struct VKCL_API ColorDefinitions {
  std::vector<AString> names;               ///< compared exactly; at most 255 characters
  std::vector<std::uint32_t> flags;         ///< index of the colorant, and its bit in a colour mode
  std::vector<std::uint32_t> secondHex;     ///< kept for the host
  std::vector<std::int32_t> firstDecimal;   ///< kept for the host
  std::vector<std::int32_t> secondDecimal;  ///< kept for the host
};

/// Where the definitions of a program are looked for. The path of its executable is cut at its last
/// separator, and again at the last one then (a separator that begins the path or follows a colon
/// stays: it is a root); "//Program//Colors.ini" is put behind what is left, as it stands. So
/// `C:\Apps\Bin\host.exe` gives `C:\Apps//Program//Colors.ini`.
VKCL_API std::string ColorDefinitionsPath(const std::string& executablePath, char separator);

/// Clears the sequences and reads the file of the running program, asked of the operating system at
/// each call. A line is "NAME FLAG HEX DECIMAL DECIMAL", as scanf's "%s %x %x %d %d" takes it, the
/// last line with or without a line feed; every other line is skipped, and so is one with a longer
/// name or a number that does not fit 32 bits. A file that cannot be opened gives no entries; of
/// one that cannot be read to its end, or is longer than 16 MiB, the whole lines up to there are
/// taken.
VKCL_API void LoadColorDefinitions(ColorDefinitions& definitions);

/// Name of the colorant with that index: one of the built-in ones for 0 to 11 and 15 to 22, else
/// the first entry of the definitions file whose flag is the index; empty when there is none.
VKCL_API AString GetColorNameByIndex(int index);

/// The twenty standard names: the inks, and the lightness and the two chroma channels of Lab. None
/// while memory is short for them.
VKCL_API const AStringArray& StandardColorNames();
