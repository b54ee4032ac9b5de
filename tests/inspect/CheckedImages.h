// Profiles without anything to say about them, and what makes one defect each of them.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "support/ImageBuilder.h"
#include "support/TempDir.h"

namespace vkcl::testing {

/// A header without anything to say about it.
Bytes CleanHeader(std::uint32_t deviceClass = Sig("mntr"), std::uint32_t space = Sig("GRAY"),
                  std::uint32_t pcs = Sig("XYZ "));

/// A tag's data: type, reserved word, content.
Bytes TypedData(std::uint32_t type, const Bytes& content);
Bytes Big16(std::uint32_t value);
/// A text description of `ascii`, which should end with a zero, and no other texts.
Bytes Description(const std::string& ascii);
/// A table of 2 points a channel, with an identity matrix.
Bytes Lut8(std::uint8_t in, std::uint8_t out);
/// The same with curves of that many points.
Bytes Lut16(std::uint8_t in, std::uint8_t out, std::uint16_t first = 2, std::uint16_t last = 2);

/// A gray display profile: 'desc', 'cprt', 'wtpt', 'kTRC', 'QX76'.
std::vector<ImageTag> CleanTags();
Bytes CleanImage();
/// Where things stand in it: the table's entries, and the tags' data.
constexpr std::size_t EntryAt(std::size_t i) { return 132 + 12 * i; }
inline constexpr std::size_t kDescAt = EntryAt(5);
inline constexpr std::size_t kCprtAt = kDescAt + 96;
inline constexpr std::size_t kWtptAt = kCprtAt + 16;
inline constexpr std::size_t kKtrcAt = kWtptAt + 20;
inline constexpr std::size_t kQx76At = kKtrcAt + 12;
inline constexpr std::size_t kCleanEnd = kQx76At + 20;

/// The clean image with that tag in place of its own, or besides.
Bytes WithTag(std::uint32_t sig, const Bytes& data, Bytes header = CleanHeader());

struct Defect {
  const char* name;
  const char* findings;  ///< all that is found, as FindingsText gives it
  std::function<void(Bytes& image)> make;
};
const std::vector<Defect>& HeaderDefects();
const std::vector<Defect>& LayoutDefects();
const std::vector<Defect>& TagDefects();
const std::vector<Defect>& ContentDefects();

}  // namespace vkcl::testing
