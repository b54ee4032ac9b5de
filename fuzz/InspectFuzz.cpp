// Any bytes as the payloads of a profile that is shown: its document reads back byte for byte, and
// no text of it becomes markup of a page.
#include <algorithm>
#include <sstream>

#include "Fuzz.h"
#include "inspect/ProfileDocument.h"
#include "inspect/ProfileReport.h"

using vkcl::fuzz::Bytes;
using vkcl::fuzz::Demand;
using vkcl::fuzz::Input;
using vkcl::fuzz::Tag;

namespace {

constexpr std::uint32_t kSpaces[] = {0x434D594B /* CMYK */, 0x52474220 /* RGB */,
                                     0x47524159 /* GRAY */, 0x36434C52 /* 6CLR */};

// The private tags of the profile, in order of their signatures, each at most once.
std::vector<Tag> PrivateTags(Input& input) {
  std::vector<Tag> tags;
  for (std::uint32_t number = 50; number <= 76 && !input.empty(); ++number) {
    if (input.Byte() % 2 == 0) continue;
    const std::size_t high = input.Byte();
    const Bytes payload = input.Take(high << 8 | input.Byte());
    const std::uint32_t signature = 0x51580000 | ('0' + number / 10) << 8 | ('0' + number % 10);
    tags.push_back({signature, vkcl::fuzz::DataElement(payload)});
  }
  return tags;
}

void ReadsBack(const VKCLProfile& profile, const std::vector<Tag>& tags) {
  std::string text;
  std::string why;
  const auto keep = [&](std::string_view piece) {
    text += piece;
    return true;
  };
  Demand(vkcl::WriteDocument(profile, {}, vkcl::DocumentForm::Text, keep, why), "it can be shown");
  text.clear();
  Demand(vkcl::WriteDocument(profile, {}, vkcl::DocumentForm::Json, keep, why), "it can be dumped");
  std::istringstream dump(text);
  vkcl::Document document;
  Demand(vkcl::ReadDocument(dump, document, why), "what was dumped can be read");
  Demand(document.tags.size() == tags.size(), "every tag is dumped");
  for (std::size_t i = 0; i < tags.size(); ++i) {
    const std::vector<char>& element = document.tags[i].element;
    Demand(document.tags[i].signature == tags[i].signature &&
               std::equal(element.begin(), element.end(), tags[i].element.begin(),
                          tags[i].element.end(),
                          [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; }),
           "a dumped tag reads back byte for byte");
  }
}

// What pages are made of. None of it fetches or runs anything.
constexpr std::string_view kElements[] = {
    "!DOCTYPE", "a",          "article", "bdi",    "body",    "caption", "circle",   "code",
    "col",      "colgroup",   "dd",      "desc",   "details", "div",     "dl",       "dt",
    "em",       "figcaption", "figure",  "footer", "g",       "h1",      "h2",       "h3",
    "h4",       "h5",         "head",    "header", "html",    "li",      "line",     "main",
    "meta",     "nav",        "ol",      "p",      "path",    "polygon", "polyline", "rect",
    "section",  "span",       "strong",  "style",  "summary", "svg",     "table",    "tbody",
    "td",       "text",       "th",      "thead",  "time",    "title",   "tr",       "tspan",
    "ul",       "wbr",        "abbr",    "br",     "small",   "b",       "i"};

bool IsVoid(std::string_view name) {
  return name == "!DOCTYPE" || name == "meta" || name == "wbr" || name == "br" || name == "col";
}

// Every element is a known one and closed in its turn.
void IsWellFormed(std::string_view page) {
  std::vector<std::string_view> open;
  for (std::size_t at = page.find('<'); at != page.npos; at = page.find('<', at)) {
    const std::size_t end = page.find('>', at);
    Demand(end != page.npos, "markup ends");
    std::string_view tag = page.substr(at + 1, end - at - 1);
    at = end;
    Demand(tag.find('<') == tag.npos, "an element stands in no other one's head");
    const bool closes = tag.starts_with('/');
    if (closes) tag.remove_prefix(1);
    const std::string_view name = tag.substr(0, tag.find_first_of(" /"));
    Demand(std::find(std::begin(kElements), std::end(kElements), name) != std::end(kElements),
           std::string(name).c_str());
    if (closes) {
      Demand(!open.empty() && open.back() == name, "elements are closed in their turn");
      open.pop_back();
    } else if (!IsVoid(name) && !tag.ends_with('/')) {
      open.push_back(name);
    }
  }
  Demand(open.empty(), "every element is closed");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = vkcl::fuzz::FilePath("inspect.icc");
  Input input(data, size);
  const std::uint32_t space = kSpaces[input.Byte() % std::size(kSpaces)];
  const std::vector<Tag> tags = PrivateTags(input);
  std::vector<Tag> all = {{0x63707274 /* cprt */, {'t', 'e', 'x', 't', 0, 0, 0, 0, 'x', 0}}};
  all.insert(all.end(), tags.begin(), tags.end());
  Bytes file = vkcl::fuzz::Profile(all);
  for (std::size_t i = 0; i < 4; ++i)
    file[16 + i] = static_cast<std::uint8_t>(space >> (24 - 8 * i));
  vkcl::fuzz::WriteFile(path, file.data(), file.size());
  ReadsBack(VKCLProfile(AFilePath(path), 0), tags);
  std::string page;
  const AFilePath paths[] = {AFilePath(path)};
  Demand(vkcl::WriteReport(paths,
                           [&](std::string_view piece) {
                             page += piece;
                             return true;
                           }),
         "a page can be made");
  IsWellFormed(page);
  return 0;
}
