// Multi-dimensional tables with their curves (ICC.1:2001-04, 6.5.7 and 6.5.8).
#include <algorithm>

#include "inspect/Examination.h"
#include "inspect/SpaceChannels.h"
#include "profile/icc.h"

namespace vkcl {

using enum Severity;
using std::to_string;

namespace {

constexpr std::uint32_t kMostChannels = 16;
constexpr std::uint32_t kLeastEntries = 2;
constexpr std::uint32_t kMostEntries = 4096;
constexpr std::uint32_t kOne = 0x10000;  // as s15Fixed16

// Points of a grid; more than any file has where they are too many to count.
std::uint64_t GridPoints(std::uint64_t grid, std::uint32_t channels) {
  std::uint64_t points = 1;
  for (std::uint32_t i = 0; i < channels; ++i) {
    points = std::min<std::uint64_t>(points * grid, UINT32_MAX);
  }
  return points;
}

}  // namespace

void Examination::CheckLut(const Entry& tag) {
  const bool wide = tag.type == icSignature("mft2");
  const char* clause = wide ? "6.5.7" : "6.5.8";
  const std::uint32_t in = Byte(tag.offset + 8ull);
  const std::uint32_t out = Byte(tag.offset + 9ull);
  const std::uint32_t grid = Byte(tag.offset + 10ull);
  if (in == 0 || out == 0 || in > kMostChannels || out > kMostChannels) {
    Find(Error, "tag.lut-channels", clause,
         "it leads from " + to_string(in) + " channels to " + to_string(out), tag.sig);
    return;
  }
  if (grid < 2) {
    Find(Warning, "tag.lut-grid", clause, "its grid has " + to_string(grid) + " points a channel",
         tag.sig);
  }
  const std::uint64_t first = wide ? Short(tag.offset + 48ull) : 256;
  const std::uint64_t last = wide ? Short(tag.offset + 50ull) : 256;
  for (const std::uint64_t entries : {first, last}) {
    if (entries >= kLeastEntries && entries <= kMostEntries) continue;
    Find(Warning, "tag.lut-entries", clause, "its curves have " + to_string(entries) + " points",
         tag.sig);
  }
  const std::uint64_t values = first * in + GridPoints(grid, in) * out + last * out;
  CheckLength(tag, wide ? 52 + 2 * values : 48 + values, clause, true);
  CheckLutSpaces(tag, clause);
}

// The channels, and the matrix, against the spaces of the header.
void Examination::CheckLutSpaces(const Entry& tag, const char* clause) {
  const std::uint32_t device = At(16);
  const std::uint32_t connection = At(20);
  const bool toDevice =
      tag.sig == icSigBToA0Tag || tag.sig == icSigBToA1Tag || tag.sig == icSigBToA2Tag;
  const bool fromDevice =
      tag.sig == icSigAToB0Tag || tag.sig == icSigAToB1Tag || tag.sig == icSigAToB2Tag;
  const std::uint32_t from = fromDevice ? device : connection;
  std::uint32_t to = toDevice ? device : connection;
  if (tag.sig == icSignature("gamt")) to = icSigGrayData;  // in gamut or not
  const std::uint32_t in = Byte(tag.offset + 8ull);
  const std::uint32_t out = Byte(tag.offset + 9ull);
  const bool known = ChannelsOf(from) != 0 && ChannelsOf(to) != 0;
  if (known && (in != ChannelsOf(from) || out != ChannelsOf(to))) {
    Find(Error, "tag.lut-spaces", clause,
         "it leads from " + to_string(in) + " channels to " + to_string(out) +
             ", and its colour spaces have " + to_string(ChannelsOf(from)) + " and " +
             to_string(ChannelsOf(to)),
         tag.sig);
  }
  if (from == icSigXYZData) return;
  for (std::uint64_t i = 0; i < 9; ++i) {
    if (Long(tag.offset + 12 + 4 * i) == (i % 4 == 0 ? kOne : 0)) continue;
    Find(Warning, "tag.lut-matrix", clause, "its matrix is no identity, and does not begin in XYZ",
         tag.sig);
    return;
  }
}

}  // namespace vkcl
