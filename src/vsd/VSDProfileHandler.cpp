// The document as a whole: opening, saving, completeness, and the colour parameters.
#include "vsd/VSDProfileHandler.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>
#include <variant>

#include "platform/Guarded.h"
#include "platform/plinth/ALocaleSwitcher.h"
#include "platform/plinth/HexText.h"
#include "platform/plinth/NumberText.h"
#include "platform/plinth/TextEncoding.h"
#include "platform/plinth/Utf8.h"
#include "vsd/VSDElements.h"

namespace {

namespace element = vkcl::vsd;

constexpr const char* kProvisionalRoot = "RootElement";
constexpr const char* kFolder = "VSDProfile";
constexpr std::size_t kTextWidth = 128;
constexpr std::size_t kOptionBytes = 256;
constexpr int kResolutionDecimals = 6;

// A field of the colour parameters is a text, a number or the block of driver options.
using TextMember = char (VKColorParam::*)[kTextWidth];
using IntegerMember = std::int32_t VKColorParam::*;
using FloatMember = float VKColorParam::*;
using BytesMember = unsigned char (VKColorParam::*)[kOptionBytes];

struct Field {
  const char* name;
  std::variant<TextMember, IntegerMember, FloatMember, BytesMember> member;
};
constexpr Field kFields[] = {
    {"Make", &VKColorParam::Make},
    {"Model", &VKColorParam::Model},
    {"MediaName", &VKColorParam::MediaName},
    {"MediaID", &VKColorParam::MediaID},
    {"PrintMode", &VKColorParam::PrintMode},
    {"ResolutionID", &VKColorParam::ResolutionID},
    {"ResolutionX", &VKColorParam::ResolutionX},
    {"ResolutionY", &VKColorParam::ResolutionY},
    {"ColorMode", &VKColorParam::ColorMode},
    {"DriverColorMode", &VKColorParam::DriverColorMode},
    {"DitherMethod", &VKColorParam::DitherMethod},
    {"DriverOption", &VKColorParam::DriverOption},
};

// A field as the text of its element.
struct FieldText {
  const VKColorParam& param;

  std::string operator()(TextMember member) const {
    const char* text = param.*member;
    return {text, std::find(text, text + kTextWidth - 1, '\0')};
  }
  std::string operator()(IntegerMember member) const { return vkcl::IntegerText(param.*member); }
  std::string operator()(FloatMember member) const {
    std::string text;
    vkcl::AppendFixed(text, param.*member, kResolutionDecimals);
    return text;
  }
  std::string operator()(BytesMember member) const {
    return vkcl::HexText(param.*member, kOptionBytes);
  }
};

// The front of a text that fits a field, on a host of UTF-8 without half a character at its end.
std::string_view Fitting(std::string_view text) {
  constexpr std::size_t kMost = kTextWidth - 1;
  if (text.size() <= kMost || !vkcl::HostIsUtf8()) return text.substr(0, kMost);
  std::size_t start = kMost;
  while (start > kMost - 3 && (static_cast<unsigned char>(text[start]) & 0xC0) == 0x80) --start;
  const bool cuts = vkcl::Utf8Length(text.substr(start)) > kMost - start;
  return text.substr(0, cuts ? start : kMost);
}

// Stores the text of an element into its field. False when it is no such text.
struct StoreField {
  VKColorParam& param;
  std::string_view text;

  bool operator()(TextMember member) const {
    const std::string_view fitting = Fitting(text);
    char* field = param.*member;
    std::memcpy(field, fitting.data(), fitting.size());
    field[fitting.size()] = '\0';
    return true;
  }
  bool operator()(IntegerMember member) const {
    param.*member = vkcl::IntegerOf(text);
    return true;
  }
  bool operator()(FloatMember member) const {
    param.*member = static_cast<float>(vkcl::NumberOf(text));
    return true;
  }
  bool operator()(BytesMember member) const {
    unsigned char bytes[kOptionBytes] = {};
    const auto read = vkcl::ReadHex(text, bytes, kOptionBytes);
    if (!read) return false;
    std::copy_n(bytes, *read, param.*member);
    return true;
  }
};

bool IsMeasured(const AXMLTreeNode& list) {
  std::int32_t samples = 0;
  std::int32_t measured = 0;
  return element::ReadInteger(list, element::kNumOfSamples, samples) && samples != 0 &&
         element::ReadInteger(list, element::kMeasured, measured) && measured >= samples;
}

}  // namespace

VSDProfileHandler::VSDProfileHandler(const AFilePath& path, int openExisting)
    : openExisting_(openExisting) {
  vkcl::Guarded([&] {
    path_ = std::make_shared<const AFilePath>(path);
    tree_ = std::make_shared<AXMLTree>(openExisting != 0 ? kProvisionalRoot : element::kRoot);
    valid_ = openExisting != 0 ? tree_->LoadFromFile(path, 1) : 1;
    if (Root().GetName() != AString(element::kRoot)) valid_ = 0;
    return true;
  });
}

VSDProfileHandler::~VSDProfileHandler() { SaveToFile(); }

int VSDProfileHandler::IsValid() const { return valid_; }

int VSDProfileHandler::SaveToFile() {
  if (valid_ == 0 || !modified_) return 1;
  modified_ = false;
  return tree_->SaveToFile(*path_);  // a valid object has a tree
}

AXMLTreeNode VSDProfileHandler::Root() const {
  return tree_ != nullptr ? tree_->GetRoot() : AXMLTreeNode();
}

int VSDProfileHandler::WriteVKColorParam(const VKColorParam& param) {
  const ALocaleSwitcher neutral;
  return vkcl::Guarded([&] {
    AXMLTreeNode parent = Root().AddChild(element::kColorParam, "");
    if (!parent) return 0;
    for (const Field& field : kFields) {
      if (!parent.AddChild(field.name, std::visit(FieldText{param}, field.member))) return 0;
    }
    modified_ = true;
    return 1;
  });
}

int VSDProfileHandler::ReadVKColorParam(VKColorParam& param) {
  const ALocaleSwitcher neutral;
  return vkcl::Guarded([&] {
    const AXMLTreeNode parent = Root().GetChild(element::kColorParam);
    for (const Field& field : kFields) {
      const AXMLTreeNode child = parent.GetChild(field.name);
      if (!child) return 0;
      std::string room;
      if (!std::visit(StoreField{param, child.ViewValue(room)}, field.member)) return 0;
    }
    return 1;
  });
}

int VSDProfileHandler::IsComplete() const {
  return vkcl::Guarded([&] {
    const AXMLTreeNode measurements = Root().GetChild(element::kMeasurementData);
    const bool complete =
        std::all_of(std::begin(element::kDotSizes), std::end(element::kDotSizes),
                    [&](const char* size) { return IsMeasured(measurements.GetChild(size)); });
    return complete ? 1 : 0;
  });
}

AFilePath VSDProfileHandler::ICCtoVSDFolder(const AFilePath& iccPath) {
  return vkcl::Guarded([&] {
    AFilePath path = iccPath;
    path.removeDoubledSeparators();
    const AString name = path.getFileName();
    path.removeLastComponent();
    path.removeLastComponent();
    path.appendComponent(kFolder);
    path.appendComponent(name);
    return path;
  });
}
