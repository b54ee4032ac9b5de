// Pages about profiles that are put together byte by byte, and what is looked for in them.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "inspect/ProfileReport.h"
#include "support/TagFile.h"
#include "support/TempDir.h"

namespace vkcl::testing {

inline std::string PageOf(const std::vector<AFilePath>& paths) {
  std::string page;
  EXPECT_TRUE(WriteReport(paths, [&](std::string_view piece) {
    page += piece;
    return true;
  }));
  return page;
}

inline std::string PageOf(const Bytes& file) {
  const TempDir dir;
  return PageOf({AFilePath(dir.Write("press.icc", file))});
}

inline bool Holds(const std::string& page, const std::string& text) {
  return page.find(text) != std::string::npos;
}

inline std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

inline Payload StoredLimits(const std::vector<double>& limits) {
  Payload payload;
  payload.Int(1).Int(140).Int(16);
  for (std::size_t i = 0; i < 16; ++i) payload.Double(i < limits.size() ? limits[i] : 100);
  return payload;
}

inline Payload ColorParam(std::int32_t status, const std::string& make, std::int32_t mode) {
  Payload payload;
  payload.Int(1).Int(1068).Int(status).Int(4711).Field(make, 128).Field("Wide 64", 128);
  payload.Field("Baryta", 128).Int(0).Float(720).Float(1440).Int(mode).Int(0).Int(0).Int(0);
  return payload.Fill(256 + 3 * 128);
}

inline Payload List(std::uint32_t format, std::int32_t columns, const std::vector<double>& values) {
  Payload payload;
  const auto samples = static_cast<std::int32_t>(values.size()) / columns;
  payload.Int(static_cast<std::int32_t>(format)).Int(samples).Int(1).Int(columns).Int(samples);
  payload.Int(1);
  for (const double value : values) payload.Double(value);
  return payload;
}

inline std::vector<FileTag> Begun() {
  return {{"QX51", StoredLimits({85.5, 90, 95.25, 80})}, {"QX53", ColorParam(0, "Acme", 1)}};
}

inline std::string PageWith(const std::vector<FileTag>& more) {
  std::vector<FileTag> tags = Begun();
  tags.insert(tags.end(), more.begin(), more.end());
  return PageOf(ProfileFile(tags));
}

}  // namespace vkcl::testing
