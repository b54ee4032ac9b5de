#include "InfoCommand.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "Complain.h"
#include "Describe.h"
#include "InfoText.h"
#include "Text.h"

namespace vkcl::tool {

Outcome Info(const std::vector<std::string>& files, bool json, int channels) {
  nlohmann::ordered_json documents = nlohmann::ordered_json::array();
  bool refused = false;
  for (const std::string& file : files) {
    nlohmann::ordered_json document = Describe(file, channels);
    if (!document["valid"].get<bool>()) {
      Complain(Printable(file) + ": " + document["reason"].get<std::string>());
      refused = true;
    }
    if (json) {
      documents.push_back(std::move(document));
    } else if (document.contains("header")) {
      fmt::print("{}", InfoText(document));
    }
  }
  if (json) fmt::print("{}\n", documents.dump(2, ' ', kAsciiOnly));
  return refused ? Outcome::Refused : Outcome::Done;
}

}  // namespace vkcl::tool
