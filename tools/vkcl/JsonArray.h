// A JSON array that is printed document by document.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace vkcl::tool {

/// Prints what the array as a whole would print, without holding it. Only whole lines are printed,
/// so that a line of the progress may come between.
class JsonArray {
 public:
  void Print(const nlohmann::ordered_json& document);
  /// Once, at the end.
  void End();

 private:
  std::string last_;  // line of the last document, behind which a comma or the end comes
};

}  // namespace vkcl::tool
