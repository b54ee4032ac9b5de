#include "Operation.h"

namespace vkcl::bench {

std::string LengthText(std::size_t length) {
  constexpr std::size_t kMega = 1'000'000;
  return length < kMega ? std::to_string(length / 1000) + " KB"
                        : std::to_string(length / kMega) + " MB";
}

const std::vector<Operation>& Operations() {
  static const std::vector<Operation> operations = [] {
    std::vector<Operation> all;
    AddReading(all);
    AddWriting(all);
    AddWholeProfiles(all);
    AddManyFiles(all);
    return all;
  }();
  return operations;
}

}  // namespace vkcl::bench
