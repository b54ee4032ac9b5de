// Where text goes that is written as it comes.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace vkcl {

/// Takes a piece of text; false when it cannot, which ends the writing.
using TextSink = std::function<bool(std::string_view piece)>;

/// Gathers small pieces into large ones.
class SinkBuffer {
 public:
  /// `sink` must outlive the buffer.
  explicit SinkBuffer(const TextSink& sink) : sink_(sink) {}

  /// Takes a piece, and hands over what there is when it is 64 KiB or more.
  void Put(std::string_view piece) {
    constexpr std::size_t kFull = std::size_t{64} << 10;
    text_ += piece;
    if (text_.size() >= kFull) Flush();
  }
  /// Hands over what is left; false when a piece was not taken.
  bool Flush() {
    if (good_ && !text_.empty()) good_ = sink_(text_);
    text_.clear();
    return good_;
  }
  /// False once a piece was not taken.
  bool good() const { return good_; }

 private:
  const TextSink& sink_;
  std::string text_;
  bool good_ = true;
};

}  // namespace vkcl
