#include "Set.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <optional>

#include "Opened.h"
#include "OutputFile.h"
#include "Records.h"
#include "Text.h"
#include "WhyInvalid.h"
#include "edit/ProfileEdit.h"
#include "profile/TableLayout.h"
#include "profile/TagLayout.h"

namespace vkcl::tool {
namespace {

struct Assignment {
  const RecordType* record;
  const Field* field;
  int index;  // -1: the field as a whole
  std::string value;
  std::string target;  // the text before the "="
};

struct Change {
  const RecordType* record;
  std::optional<Image> stored;  // what the change begins with; none where no tag was stored
  Image image;
};

std::string Names(std::span<const Field> fields) {
  std::string names;
  for (const Field& field : fields) {
    if (!field.settable) continue;
    if (!names.empty()) names += ", ";
    names += field.name;
  }
  return names;
}

std::string RecordNames() {
  std::string names;
  for (const RecordType& record : RecordTypes()) {
    if (!names.empty()) names += ", ";
    names += record.name;
  }
  return names;
}

// Takes "[INDEX]" off the end of a field's name. False when the brackets hold no number.
bool TakeIndex(std::string& field, int& index) {
  index = -1;
  const std::size_t bracket = field.find('[');
  if (bracket == std::string::npos) return true;
  const char* first = field.data() + bracket + 1;
  const char* last = field.data() + field.size() - 1;
  if (field.back() != ']' || first >= last) return false;
  const auto result = std::from_chars(first, last, index);
  if (result.ec != std::errc() || result.ptr != last || index < 0) return false;
  field.erase(bracket);
  return true;
}

std::string Parse(const std::string& text, Assignment& assignment) {
  const std::size_t equals = text.find('=');
  const std::size_t dot = text.find('.');
  if (equals == std::string::npos || dot == std::string::npos || dot > equals) {
    return fmt::format("\"{}\" is not of the form RECORD.FIELD=VALUE", Printable(text));
  }
  const std::string recordName = text.substr(0, dot);
  std::string fieldName = text.substr(dot + 1, equals - dot - 1);
  assignment.target = text.substr(0, equals);
  assignment.value = text.substr(equals + 1);
  if (!TakeIndex(fieldName, assignment.index)) {
    return fmt::format("the index in \"{}\" is no number from 0 on", Printable(text));
  }
  assignment.record = FindRecord(recordName);
  if (assignment.record == nullptr) {
    return fmt::format("there is no record \"{}\"; the records are {}", Printable(recordName),
                       RecordNames());
  }
  assignment.field = FindField(*assignment.record, fieldName);
  if (assignment.field == nullptr) {
    return fmt::format("{} has no field \"{}\"; its fields are {}", recordName,
                       Printable(fieldName), Names(assignment.record->fields));
  }
  return {};
}

bool HoldsTag(VKCLProfileHandler& handler, const RecordType& record) {
  return handler.GetProfilePtr()->GetTagSize(static_cast<icTagSignature>(record.signature)) != 0;
}

std::size_t PayloadSize(const VKCLProfile& profile, const RecordType& record) {
  const std::size_t size = profile.GetTagSize(static_cast<icTagSignature>(record.signature));
  return size < kDataHead ? 0 : size - kDataHead;
}

// Why a stored record cannot be changed without losing something; empty when it can.
std::string WhyUnchangeable(const VKCLProfile& profile, const RecordType& record,
                            const Image& image) {
  if (record.isText) return {};
  const std::size_t stored = PayloadSize(profile, record);
  if (stored != image.size()) {
    return fmt::format(
        "the payload of its {} has {} bytes where {} are known; the rest would be lost",
        record.title, stored, image.size());
  }
  const Field* size = FindField(record, "size");
  if (size != nullptr && FieldValue(*size, image) != image.size()) {
    return fmt::format("the payload of its {} states another size than it has; it would be cut",
                       record.title);
  }
  return {};
}

// The image of a record to change: as changed so far, as stored, or the default one.
std::string ImageFor(VKCLProfileHandler& handler, const RecordType& record,
                     std::vector<Change>& changes, Image*& image) {
  const auto found = std::find_if(changes.begin(), changes.end(),
                                  [&](const Change& change) { return change.record == &record; });
  if (found != changes.end()) {
    image = &found->image;
    return {};
  }
  changes.push_back({&record, std::nullopt, record.make()});
  image = &changes.back().image;
  if (handler.IsICCFile() == 0 || !HoldsTag(handler, record)) return {};
  if (record.get(handler, *image) == 0) {
    return fmt::format("the stored {} cannot be read, so its other fields would be lost",
                       record.title);
  }
  changes.back().stored = *image;
  return WhyUnchangeable(*handler.GetProfilePtr(), record, *image);
}

// Whether a record is still what its change begins with: somebody else may have set other fields
// of it since it was read.
bool IsAsRead(VKCLProfileHandler& handler, const Change& change) {
  if (handler.IsICCFile() == 0) return !change.stored.has_value();
  if (HoldsTag(handler, *change.record) != change.stored.has_value()) return false;
  if (!change.stored.has_value()) return true;
  Image now = change.record->make();
  return change.record->get(handler, now) != 0 && now == *change.stored;
}

// Length of the payload that a change stores.
std::size_t PayloadSize(const Change& change) {
  if (!change.record->isText) return change.image.size();
  return FieldText(change.image.data(), change.image.size()).size() + 1;
}

bool LayoutSuits(const VKCLProfile& profile, const std::vector<Change>& changes) {
  return std::all_of(changes.begin(), changes.end(), [&](const Change& change) {
    return TagDataSuitWriting(profile, change.record->signature,
                              static_cast<unsigned long>(PayloadSize(change)));
  });
}

std::string TitleOf(const Change& change) {
  return fmt::format("{} ({})", change.record->title, SignatureText(change.record->signature));
}

Result Store(VKCLProfileHandler& handler, const std::vector<Change>& changes) {
  const bool asRead = std::all_of(changes.begin(), changes.end(),
                                  [&](const Change& change) { return IsAsRead(handler, change); });
  if (!asRead) return Refused(EditStateText(EditState::Changed));
  std::string stored;
  for (const Change& change : changes) {
    if (change.record->put(handler, change.image) == 0) {
      const std::string before =
          stored.empty() ? "nothing was stored" : fmt::format("stored before that: {}", stored);
      return Refused(
          fmt::format("{} could not be written; the file refuses it, or the disk is full ({})",
                      change.record->title, before));
    }
    if (!stored.empty()) stored += ", ";
    stored += TitleOf(change);
  }
  return Done(fmt::format("stored {}", stored));
}

// What Store would do to a profile that is not there yet.
Result TellOfNew(const std::vector<Change>& changes, int channels) {
  std::string titles;
  for (const Change& change : changes) titles += (titles.empty() ? "" : ", ") + TitleOf(change);
  return Done(fmt::format("nothing is changed; a profile of {} channels would be made, with {}",
                          channels, titles));
}

}  // namespace

std::string SettableFields() {
  std::string text;
  for (const RecordType& record : RecordTypes()) {
    text += fmt::format("  {:<16}{}\n", record.name, Names(record.fields));
  }
  return text;
}

std::vector<std::string> AssignableNames() {
  std::vector<std::string> names;
  for (const RecordType& record : RecordTypes()) {
    for (const Field& field : record.fields) {
      if (field.settable) names.push_back(fmt::format("{}.{}=", record.name, field.name));
    }
  }
  return names;
}

Result SetFields(const std::string& path, const std::vector<std::string>& assignments, int channels,
                 int createChannels, const ChangeOptions& how) {
  std::vector<Assignment> parsed;
  for (const std::string& text : assignments) {
    Assignment assignment = {};
    const std::string why = Parse(text, assignment);
    if (!why.empty()) return Usage(why);
    parsed.push_back(std::move(assignment));
  }
  const bool exists = AFilePath(path).exists();
  const bool create = createChannels > 0 && !exists;
  if (!create) {
    std::string why = WhyInvalid(path, channels);
    if (!exists) why += "; --create N makes a minimal profile of N channels";
    if (!why.empty()) return Refused(why);
  } else if (createChannels < 3 || createChannels > 16) {
    return Usage("a profile is created with 3 to 16 channels");
  } else if (!WhyNotWritable(path).empty()) {
    return NotWritten(path);
  }

  OpenedHandler handler(path, create ? createChannels : channels);
  std::vector<Change> changes;
  changes.reserve(parsed.size());
  for (const Assignment& assignment : parsed) {
    Image* image = nullptr;
    std::string why = ImageFor(handler, *assignment.record, changes, image);
    if (!why.empty()) return Refused(why);
    why = SetField(*assignment.field, assignment.index, assignment.value, *image);
    if (!why.empty()) return Usage(fmt::format("{} {}", assignment.target, why));
  }
  if (create && how.dryRun) return TellOfNew(changes, createChannels);
  const Operation store = [&](VKCLProfileHandler& target) { return Store(target, changes); };
  if (create) return store(handler);
  return ChangeProfile(
      path, channels, [&](const VKCLProfile& profile) { return LayoutSuits(profile, changes); },
      how, store);
}

}  // namespace vkcl::tool
