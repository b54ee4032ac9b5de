#include "../../tools/vkcl/StandardInput.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <string>
#include <thread>

namespace vkcl::tool {
namespace {

// The end of a pipe from which the text comes, in several pieces.
class Piped {
 public:
  explicit Piped(const std::string& text) {
    EXPECT_EQ(pipe(ends_), 0);
    writer_ = std::thread([this, text] {
      for (std::size_t i = 0; i < text.size(); i += 70000) {
        const std::string piece = text.substr(i, 70000);
        if (write(ends_[1], piece.data(), piece.size()) < 0) break;
      }
      close(ends_[1]);
    });
  }
  ~Piped() {
    std::string rest(1 << 16, ' ');
    while (read(ends_[0], rest.data(), rest.size()) > 0) continue;
    writer_.join();
    close(ends_[0]);
  }
  Piped(const Piped&) = delete;
  Piped& operator=(const Piped&) = delete;

  int end() const { return ends_[0]; }

 private:
  int ends_[2] = {};
  std::thread writer_;
};

std::string Kept(const std::string& text, std::uint64_t most) {
  const Piped piped(text);
  std::ifstream file(KeptInput(piped.end(), most), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(StandardInput, IsKeptToTheByte) {
  std::string text(300001, 'x');
  for (std::size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char>(i * 31);
  EXPECT_EQ(Kept(text, 300001), text);
  EXPECT_EQ(Kept(text, 0xFFFFFFFF), text);
  EXPECT_EQ(Kept("a", 1), "a");
}

TEST(StandardInput, IsRefusedWithoutContentOrBeyondTheLimit) {
  EXPECT_THROW(Kept("", 10), InputError);
  EXPECT_THROW(Kept("12345678901", 10), InputError);
  EXPECT_THROW(Kept(std::string(300001, 'x'), 300000), InputError);
  EXPECT_THROW(KeptInput(-1, 10), InputError);
}

TEST(StandardInput, IsNobodyElsesToRead) {
  const Piped piped("private");
  struct stat status = {};
  ASSERT_EQ(stat(KeptInput(piped.end(), 100).c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
  EXPECT_TRUE(S_ISREG(status.st_mode));
}

TEST(StandardInput, IsMeantByADashOnly) {
  EXPECT_EQ(InputPath("./-"), "./-");
  EXPECT_EQ(InputPath("--"), "--");
  EXPECT_EQ(InputPath(""), "");
}

}  // namespace
}  // namespace vkcl::tool
