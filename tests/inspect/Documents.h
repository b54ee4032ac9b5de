// Documents of profiles that are put together byte by byte, and what is read from documents.
#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/ProfileDocument.h"
#include "support/TagFile.h"

namespace vkcl::testing {

/// The document of the profile in a file; the reason where there is none.
inline std::string DocumentOf(const std::string& path, const std::vector<std::string>& only = {},
                              DocumentForm form = DocumentForm::Json) {
  const VKCLProfile profile{AFilePath(path), 0};
  std::string text;
  std::string why;
  const TextSink sink = [&](std::string_view piece) {
    text += piece;
    return true;
  };
  if (WriteDocument(profile, only, form, sink, why)) {
    EXPECT_EQ(why, "");
    return text;
  }
  EXPECT_NE(why, "");
  return why;
}

/// The document of a profile with this content.
inline std::string DocumentOf(const Bytes& image, const std::vector<std::string>& only = {},
                              DocumentForm form = DocumentForm::Json) {
  const TempDir dir;
  return DocumentOf(dir.Write("p.icc", image), only, form);
}

/// A document that asks for `tags`: the names and values of one object.
inline std::string WithTags(const std::string& tags) {
  return R"({"format": "vkcl-private-tags", "formatVersion": 1, "tags": {)" + tags + "}}";
}

/// What reading a document gives.
struct ReadBack {
  explicit ReadBack(const std::string& text) {
    std::istringstream stream(text);
    document.tags.resize(1);
    document.notes.emplace_back("of an earlier document");
    good = ReadDocument(stream, document, why);
    EXPECT_EQ(why.empty(), good) << why;
    if (!good) {
      EXPECT_TRUE(document.tags.empty());
      EXPECT_TRUE(document.notes.empty());
    }
  }

  /// The one element that is to be stored; the test fails when it is not one alone.
  Bytes Element() const {
    EXPECT_TRUE(good) << why;
    EXPECT_EQ(document.tags.size(), 1u);
    if (document.tags.size() != 1) return {};
    EXPECT_FALSE(document.tags[0].remove);
    return {document.tags[0].element.begin(), document.tags[0].element.end()};
  }

  Document document;
  std::string why;
  bool good = false;
};

/// Why a document is refused; "accepted" when it is not.
inline std::string Refusal(const std::string& text) {
  const ReadBack read(text);
  return read.good ? "accepted" : read.why;
}

}  // namespace vkcl::testing
