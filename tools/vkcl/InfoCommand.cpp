#include "InfoCommand.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "Complain.h"
#include "Describe.h"
#include "InfoText.h"
#include "JsonArray.h"
#include "Text.h"

namespace vkcl::tool {
namespace {

using Json = nlohmann::ordered_json;

Json DescribeFile(const NamedFile& file, int channels) {
  if (!file.problem.empty()) {
    return {{"file", Utf8(file.name)}, {"valid", false}, {"reason", file.problem}};
  }
  Json document = Describe(file.path, channels);
  document["file"] = Utf8(file.name);
  return document;
}

std::string TextOf(const Json& document) {
  return document.contains("header") ? InfoText(document) : std::string();
}

}  // namespace

Outcome Info(const FilesOptions& files, bool json, int channels) {
  JsonArray array;
  bool refused = false;
  ForEachFile(files, [&](const NamedFile& file) -> Finish {
    Json document = DescribeFile(file, channels);
    std::string text = json ? std::string() : TextOf(document);
    return [&, document = std::move(document), text = std::move(text)] {
      if (!document["valid"].get<bool>()) {
        Complain(Printable(file.name) + ": " + document["reason"].get<std::string>());
        refused = true;
      }
      if (json) {
        array.Print(document);
      } else {
        fmt::print("{}", text);
      }
    };
  });
  if (json) array.End();
  return refused ? Outcome::Refused : Outcome::Done;
}

}  // namespace vkcl::tool
