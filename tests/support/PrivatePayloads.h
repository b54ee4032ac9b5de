// Payloads of all private tags as docs/format.md describes them: one of each, any number at random,
// and damaged ones.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "support/TagFile.h"

namespace vkcl::testing {

/// The signatures of the 27 kinds, in order.
const std::vector<std::string>& KnownSignatures();

/// An ink split of version 2, 3 or 4 with the given colorants. Its floats count up by eighths.
Bytes SplitPayload(std::int32_t version, const std::vector<std::int32_t>& colorants);
/// A data list; `values` follow when there are any.
Bytes ListPayload(std::uint32_t dataFormat, std::int32_t samples, std::int32_t colors,
                  const std::vector<double>& values);
/// A payload of the kind whose numbers, texts and blocks differ from one another.
Bytes SamplePayload(const std::string& signature);

/// A payload of the kind with random content: numbers of every class, texts of every sort.
Bytes RandomPayload(const std::string& signature, std::mt19937& random);
/// The whole element of a tag: that payload, or a damaged one, or no 'data' at all.
Bytes RandomElement(const std::string& signature, std::mt19937& random);

/// The signature as a number.
std::uint32_t SigOf(const std::string& text);

}  // namespace vkcl::testing
