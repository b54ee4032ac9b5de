#include "VsdCommands.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <limits>
#include <nlohmann/json.hpp>
#include <vector>

#include "ColorCommands.h"
#include "LifeCommands.h"
#include "Opened.h"
#include "Records.h"
#include "OutputFile.h"
#include "Text.h"
#include "WhyInvalid.h"
#include "vsd/VSDProfileHandler.h"

namespace vkcl::tool {
namespace {

using Json = nlohmann::ordered_json;
using ReadList = std::function<int(VSDProfileHandler& document, ProfileDataList& list)>;

constexpr const char* kMediumStart = "mediumStart";
constexpr const char* kLargeStart = "largeStart";
constexpr const char* kLargeDotScale = "largeDotScale";

struct ListPlace {
  std::string name;
  ReadList read;
};

// Every place of a data list, in the order in which a document is filled.
std::vector<ListPlace> ListPlaces() {
  constexpr const char* kSizes[] = {"small", "medium", "large"};
  using Read = int (VSDProfileHandler::*)(int, ProfileDataList&);
  const std::pair<const char*, Read> families[] = {
      {"reference", &VSDProfileHandler::ReadVSDReferenceData},
      {"measurement", &VSDProfileHandler::ReadVSDMeasurementData},
      {"inverted", &VSDProfileHandler::ReadVSDInvertedData},
  };
  std::vector<ListPlace> places;
  for (const auto& [family, read] : families) {
    for (int size = 0; size < 3; ++size) {
      places.push_back({fmt::format("{}, {} dots", family, kSizes[size]),
                        [read = read, size](VSDProfileHandler& document, ProfileDataList& list) {
                          return (document.*read)(size, list);
                        }});
    }
  }
  places.push_back({"verification reference", &VSDProfileHandler::ReadVerifyReferenceData});
  places.push_back({"verification measurement", &VSDProfileHandler::ReadVerifyMeasurementData});
  return places;
}

// Stands where the document has no value: the readers leave such places alone.
const double kNoValue = std::numeric_limits<double>::quiet_NaN();

Json Numbers(const std::vector<double>& values, int count) {
  Json numbers = Json::array();
  const auto held = static_cast<std::size_t>(std::clamp(count, 0, static_cast<int>(values.size())));
  for (std::size_t i = 0; i < held; ++i) {
    numbers.push_back(std::isnan(values[i]) ? Json() : RealValue(values[i]));
  }
  return numbers;
}

Json ColorParamJson(VSDProfileHandler& document) {
  VKColorParam param;
  if (document.ReadVKColorParam(param) == 0) return {};
  const auto text = [](const char(&field)[128]) { return Utf8(FieldText(field, sizeof field)); };
  return {{"Make", text(param.Make)},
          {"Model", text(param.Model)},
          {"MediaName", text(param.MediaName)},
          {"MediaID", param.MediaID},
          {"PrintMode", param.PrintMode},
          {"ResolutionID", param.ResolutionID},
          {"ResolutionX", RealValue(param.ResolutionX)},
          {"ResolutionY", RealValue(param.ResolutionY)},
          {"ColorMode", param.ColorMode},
          {"DriverColorMode", param.DriverColorMode},
          {"DitherMethod", param.DitherMethod},
          {"DriverOption", HexText(param.DriverOption, sizeof param.DriverOption)}};
}

Json ListsJson(VSDProfileHandler& document) {
  Json lists = Json::array();
  for (const ListPlace& place : ListPlaces()) {
    ProfileDataList list;
    if (place.read(document, list) == 0) continue;
    lists.push_back({{"list", place.name},
                     {"format", SignatureText(list.DataFormat)},
                     {"samples", list.NumOfSamples},
                     {"colorMode", list.ColorMode},
                     {"valuesPerSample", list.NumOfColors},
                     {"measured", list.Measured}});
  }
  return lists;
}

Json DotsJson(VSDProfileHandler& document) {
  constexpr int kRoom = 64;
  std::vector<double> medium(kRoom, kNoValue);
  std::vector<double> large(kRoom, kNoValue);
  std::vector<double> scale(kRoom, kNoValue);
  int count = 0;
  Json dots = Json::object();
  if (document.ReadMediumAndLargeStart(medium.data(), large.data(), kRoom, count) != 0) {
    dots[kMediumStart] = Numbers(medium, count);
    dots[kLargeStart] = Numbers(large, count);
  }
  if (document.ReadLargeDotScale(scale.data(), kRoom, count) != 0) {
    dots[kLargeDotScale] = Numbers(scale, count);
  }
  return dots;
}

Json LimitsJson(VSDProfileHandler& document) {
  Json limits = Json::object();
  VKSingleInkLimitWithLinRef single;
  for (int i = 0; i < 16; ++i) single.limits[i] = kNoValue;
  if (document.ReadVKSingleInkLimits(single) != 0) {
    std::vector<double> values(16);  // by value: those of the record stand on multiples of 4
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = single.limits[i];
    limits["single"] = Numbers(values, single.count);
  }
  VKSpotSingleInkLimit spot;
  if (document.ReadVKSpotSIL(spot) != 0) {
    std::string name = spot.name;
    if (name.ends_with('\t')) name.pop_back();  // which the reader puts behind it
    const std::vector<double> values(spot.limits, spot.limits + std::max(spot.count, 0));
    limits["spot"] = {{"name", Utf8(name)}, {"limits", Numbers(values, spot.count)}};
  }
  return limits;
}

Json Describe(VSDProfileHandler& document, const std::string& path) {
  return {{"file", Utf8(path)},
          {"complete", document.IsComplete() != 0},
          {"colorParam", ColorParamJson(document)},
          {"lists", ListsJson(document)},
          {"dots", DotsJson(document)},
          {"limits", LimitsJson(document)}};
}

std::string ValueText(const Json& value) {
  if (value.is_null()) return "-";
  return value.is_string() ? Printable(value.get<std::string>()) : value.dump();
}

std::string RowText(const std::string& name, const std::string& value) {
  return fmt::format("  {:<26}{}\n", name, value);
}

std::string NumbersText(const Json& numbers) {
  std::string text;
  for (const Json& number : numbers) text += (text.empty() ? "" : " ") + ValueText(number);
  return text.empty() ? "none" : text;
}

// The texts that are not empty, or a dash.
std::string TextsOf(std::initializer_list<Json> values) {
  std::string text;
  for (const Json& value : values) {
    const std::string part = ValueText(value);
    if (!part.empty()) text += (text.empty() ? "" : " ") + part;
  }
  return text.empty() ? "-" : text;
}

std::string ColorParamText(const Json& param) {
  if (param.is_null()) return RowText("colour parameters", "none");
  const std::string options = param["DriverOption"];
  const bool none = options.find_first_not_of('0') == std::string::npos;
  return RowText("printer", TextsOf({param["Make"], param["Model"]})) +
         RowText("medium", fmt::format("{}, ID {}", TextsOf({param["MediaName"]}),
                                       ValueText(param["MediaID"]))) +
         RowText("resolution", fmt::format("{} x {} dpi", ValueText(param["ResolutionX"]),
                                           ValueText(param["ResolutionY"]))) +
         RowText("colour mode", ModeText(param["ColorMode"])) +
         RowText("driver options", none ? "none" : options.substr(0, 32) + "...");
}

constexpr std::pair<const char*, const char*> kDots[] = {
    {kMediumStart, "medium dots start"},
    {kLargeStart, "large dots start"},
    {kLargeDotScale, "large dot scale"},
};

std::string DocumentText(const Json& document) {
  std::string text =
      fmt::format("{}: {}\n", Printable(document["file"].get<std::string>()),
                  document["complete"] ? "complete" : "not complete: measurements are missing");
  text += ColorParamText(document["colorParam"]);
  for (const Json& list : document["lists"]) {
    text += RowText(list["list"],
                    fmt::format("{} samples of {} values ({}), {} measured",
                                list["samples"].get<int>(), list["valuesPerSample"].get<int>(),
                                ValueText(list["format"]), list["measured"].get<int>()));
  }
  for (const auto& [name, title] : kDots) {
    if (document["dots"].contains(name)) {
      text += RowText(title, NumbersText(document["dots"][name]));
    }
  }
  const Json& limits = document["limits"];
  if (limits.contains("single")) text += RowText("ink limits", NumbersText(limits["single"]));
  if (limits.contains("spot")) {
    text += RowText("spot colour " + ValueText(limits["spot"]["name"]),
                    NumbersText(limits["spot"]["limits"]));
  }
  return text;
}

// The document of a profile, by its full path: of a bare file name the folder above is not known.
// Which folder ".." means behind a link only the system knows.
AFilePath SidecarOf(const std::string& profile) {
  namespace fs = std::filesystem;
  AFilePath full(AFilePath(profile).GetFullPath());
  const fs::path path(profile);
  if (std::find(path.begin(), path.end(), "..") != path.end()) {
    std::error_code error;
    const fs::path folder = fs::weakly_canonical(fs::absolute(path, error).parent_path(), error);
    if (!error) full = AFilePath((folder / path.filename()).string());
  }
  return VSDProfileHandler::ICCtoVSDFolder(full);
}

// The folder of the document, made where it is missing, and removed again unless it is kept.
class Folder {
 public:
  explicit Folder(const AFilePath& sidecar) : path_(sidecar) {
    path_.removeLastComponent();
    std::error_code error;
    made_ = std::filesystem::create_directories(path_.str(), error);
    if (!error) return;
    problem_ =
        fmt::format("the folder {} cannot be made: {}", Printable(path_.str()), error.message());
  }
  ~Folder() {
    std::error_code error;
    if (made_) std::filesystem::remove(path_.str(), error);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  const std::string& problem() const { return problem_; }
  Result Keep(Result result) {
    made_ = made_ && result.outcome != Outcome::Done;
    return result;
  }

 private:
  AFilePath path_;
  bool made_ = false;
  std::string problem_;
};

// Why a document at that place is not written; empty when it may be.
std::string WhyRefused(const std::string& profile, const AFilePath& place, bool force) {
  if (place.isSameFile(AFilePath(profile))) {
    return "it lies in a folder VSDProfile, where its document would take its place";
  }
  return WhyKept(place.str(), force);
}

}  // namespace

Result VsdShow(const std::string& path, bool json) {
  const bool isProfile = WhyInvalid(path, 0).empty();
  const AFilePath place = isProfile ? SidecarOf(path) : AFilePath(path);
  if (!place.exists()) {
    return Refused(isProfile ? fmt::format("it has no VSD document at {}", Printable(place.str()))
                             : "there is no such file");
  }
  VSDProfileHandler document(place, 1);
  if (document.IsValid() == 0) {
    return Refused(
        fmt::format("{}it is no VSD document: no well-formed XML, or another root than "
                    "VK_VSD_PROFILE",
                    isProfile ? Printable(place.str()) + ": " : ""));
  }
  const Json description = Describe(document, place.str());
  return Done(json ? description.dump(2, ' ', kAsciiOnly) + '\n' : DocumentText(description));
}

Result VsdCreate(const std::string& profile, bool force) {
  const std::string why = WhyInvalid(profile, 0);
  if (!why.empty()) return Refused(why);
  VKColorParam param;
  if (OpenedHandler(profile, 0).GetVKColorParam(param) == 0) {
    return Refused("it holds no readable colour parameters (QX53)");
  }
  const AFilePath place = SidecarOf(profile);
  if (const std::string no = WhyRefused(profile, place, force); !no.empty()) return Refused(no);
  Folder folder(place);
  if (!folder.problem().empty()) return Refused(folder.problem());
  VSDProfileHandler document(place, 0);
  if (document.WriteVKColorParam(param) == 0 || document.SaveToFile() == 0) {
    return NotWritten(place.str());
  }
  return folder.Keep(
      Done(fmt::format("wrote its colour parameters to {}", Printable(place.str()))));
}

Result VsdEmbed(const std::string& profile, const ChangeOptions& how) {
  const std::string why = WhyInvalid(profile, 0);
  if (!why.empty()) return Refused(why);
  const AFilePath place = SidecarOf(profile);
  if (!place.exists()) {
    return Refused(fmt::format("it has no VSD document at {}", Printable(place.str())));
  }
  if (VSDProfileHandler(place, 1).IsValid() == 0) {
    return Refused(fmt::format("{}: it is no VSD document", Printable(place.str())));
  }
  return Embed(profile, "vsd", place.str(), how);
}

Result VsdExtract(const std::string& profile, bool force) {
  const std::string why = WhyInvalid(profile, 0);
  if (!why.empty()) return Refused(why);
  if (OpenedProfile(profile, 0).GetTagSize(static_cast<icTagSignature>(QX71)) == 0) {
    return Refused("it holds no vsd (QX71)");
  }
  const AFilePath place = SidecarOf(profile);
  if (const std::string no = WhyRefused(profile, place, force); !no.empty()) return Refused(no);
  Folder folder(place);
  if (!folder.problem().empty()) return Refused(folder.problem());
  return folder.Keep(Extract(profile, "vsd", place.str(), true));
}

}  // namespace vkcl::tool
