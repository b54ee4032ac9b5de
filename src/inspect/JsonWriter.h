// JSON text that is written as it comes, so that a document of any length takes no memory.
#pragma once

#include <string_view>
#include <vector>

#include "inspect/TextSink.h"

namespace vkcl {

/// Objects and arrays are opened and closed by the caller, who also sees to keys standing in
/// objects only. The text is ASCII.
class JsonWriter {
 public:
  enum class Style {
    Lines,   ///< each entry on a line of its own
    Inline,  ///< all entries on one line
  };

  explicit JsonWriter(SinkBuffer& out) : out_(out) {}

  void OpenObject() { Open('{', Style::Lines); }
  void CloseObject() { Close('}'); }
  void OpenArray(Style style) { Open('[', style); }
  void CloseArray() { Close(']'); }
  void Key(std::string_view name);
  void String(std::string_view utf8);
  /// A text that is a JSON number.
  void Number(std::string_view text);
  void Null() { Number("null"); }
  /// Ends the text behind the outermost value.
  void End() { out_.Put("\n"); }

 private:
  struct Level {
    Style style;
    bool empty;
  };

  void Open(char bracket, Style style);
  void Close(char bracket);
  void BeginValue();
  void BreakLine();
  void Quoted(std::string_view utf8);

  SinkBuffer& out_;
  std::vector<Level> levels_;
  bool afterKey_ = false;
};

}  // namespace vkcl
