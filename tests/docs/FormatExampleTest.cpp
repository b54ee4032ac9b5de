// The worked example of docs/format.md is the file that the library writes.
#include <fstream>
#include <sstream>

#include "handler/VKCLProfileHandler.h"
#include "support/TempDir.h"

namespace {

using vkcl::testing::Bytes;
using vkcl::testing::ReadFile;
using vkcl::testing::TempDir;

Bytes ExampleOfTheDocument() {
  std::ifstream document(VKCL_SOURCE_DIR "/docs/format.md");
  Bytes bytes;
  bool inside = false;
  for (std::string line; std::getline(document, line);) {
    if (line.starts_with("```")) {
      if (inside) break;
      inside = line == "```hex";
      continue;
    }
    if (!inside) continue;
    std::istringstream row(line.substr(8, 16 * 3));
    for (std::string byte; row >> byte;) {
      bytes.push_back(static_cast<unsigned char>(std::stoul(byte, nullptr, 16)));
    }
  }
  return bytes;
}

TEST(FormatDocument, ShowsWhatIsWritten) {
  const TempDir dir;
  const std::string path = dir.File("made.icc");
  VKCLProfileHandler handler(AFilePath(path), 3);
  ASSERT_EQ(handler.WriteVKWizardFlag(3), 1);
  ASSERT_EQ(handler.WriteVKChromaAdjust("soft"), 1);
  Bytes written = ReadFile(path);
  ASSERT_GT(written.size(), 36u);
  std::fill(written.begin() + 24, written.begin() + 36, static_cast<unsigned char>(0));
  const Bytes shown = ExampleOfTheDocument();
  EXPECT_EQ(shown.size(), 192u);
  EXPECT_EQ(written, shown);
}

}  // namespace
