#include "DiffCommand.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "Opened.h"
#include "StandardInput.h"
#include "Text.h"
#include "WhyInvalid.h"
#include "inspect/ProfileDiff.h"

namespace vkcl::tool {
namespace {

using Json = nlohmann::ordered_json;

class Printer {
 public:
  explicit Printer(bool all) : all_(all) {}
  virtual ~Printer() = default;
  Printer(const Printer&) = delete;
  Printer& operator=(const Printer&) = delete;

  std::uint64_t count() const { return count_; }
  bool Take(const Difference& difference) {
    ++count_;
    const std::string tag = difference.place.substr(0, difference.place.find('.'));
    if (tag != tag_) {
      EndTag();
      tag_ = tag;
    }
    ++ofTag_;
    if (all_ || ofTag_ <= kShown) Print(difference);
    return true;
  }
  void End() {
    EndTag();
    Close();
  }

 protected:
  virtual void Print(const Difference& difference) = 0;
  virtual void More(const std::string& tag, std::uint64_t count) = 0;
  virtual void Close() = 0;

 private:
  static constexpr std::uint64_t kShown = 20;

  void EndTag() {
    if (!all_ && ofTag_ > kShown) More(tag_, ofTag_ - kShown);
    ofTag_ = 0;
  }

  bool all_;
  std::uint64_t count_ = 0;
  std::string tag_;
  std::uint64_t ofTag_ = 0;
};

class TextPrinter : public Printer {
 public:
  using Printer::Printer;

 private:
  void Print(const Difference& difference) override {
    if (difference.before.empty()) {
      fmt::print("+ {}: {}\n", difference.place, difference.after);
    } else if (difference.after.empty()) {
      fmt::print("- {}: {}\n", difference.place, difference.before);
    } else {
      fmt::print("  {}: {} -> {}\n", difference.place, difference.before, difference.after);
    }
  }
  void More(const std::string& tag, std::uint64_t count) override {
    fmt::print("  {}: {} differences more; --all shows them\n", tag, count);
  }
  void Close() override {
    if (count() == 0) fmt::print("no differences\n");
  }
};

class JsonPrinter : public Printer {
 public:
  JsonPrinter() : Printer(true) { fmt::print("["); }

 private:
  static Json Value(const std::string& text) { return text.empty() ? Json() : Json(text); }
  void Print(const Difference& difference) override {
    const Json row = {{"place", difference.place},
                      {"before", Value(difference.before)},
                      {"after", Value(difference.after)}};
    fmt::print("{}\n  {}", count() > 1 ? "," : "", row.dump(-1, ' ', kAsciiOnly));
  }
  void More(const std::string& /*tag*/, std::uint64_t /*count*/) override {}
  void Close() override { fmt::print("{}]\n", count() > 0 ? "\n" : ""); }
};

Result Compare(const DiffOptions& options, Printer& printer) {
  const OpenedProfile before(InputPath(options.before), kAnyChannels);
  const OpenedProfile after(InputPath(options.after), kAnyChannels);
  std::string why;
  const bool compared = CompareProfiles(
      before, after, [&](const Difference& difference) { return printer.Take(difference); }, why);
  printer.End();
  if (!compared) return Refused(why);
  return printer.count() == 0 ? Done({}) : Refused({});
}

}  // namespace

Result Diff(const DiffOptions& options) {
  for (const std::string& path : {options.before, options.after}) {
    const std::string why = WhyInvalid(InputPath(path), kAnyChannels);
    if (!why.empty()) return Refused(fmt::format("{}: {}", Printable(path), why));
  }
  if (options.json) {
    JsonPrinter printer;
    return Compare(options, printer);
  }
  TextPrinter printer(options.all);
  return Compare(options, printer);
}

}  // namespace vkcl::tool
