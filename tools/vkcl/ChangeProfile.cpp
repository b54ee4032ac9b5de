#include "ChangeProfile.h"

#include <fmt/format.h>

#include "Opened.h"
#include "OutputFile.h"
#include "edit/ProfileEdit.h"

namespace vkcl::tool {
namespace {

Result ChangeInPlace(const std::string& path, int channels, const LayoutTest& suits,
                     const Operation& operation) {
  OpenedHandler handler(path, channels);
  if (suits(*handler.GetProfilePtr())) return operation(handler);
  return Refused(
      "its tag data do not lie in table order; without --in-place a copy in order takes its place");
}

constexpr const char* kDryRunInPlace = "--dry-run works on a copy, not --in-place";

std::string Sizes(const ProfileEdit& edit) {
  return fmt::format("nothing is changed; {} bytes would become {}", edit.bytesBefore(),
                     edit.bytesNow());
}

Result NotEdited(const std::string& path, EditState state) {
  std::string why = EditStateText(state);
  if (state == EditState::HardLinked) why += "; --hard-links edits it alone";
  if (state == EditState::NotWritable) {
    if (const std::string seen = WhyNotWritable(path); !seen.empty()) why += ": " + seen;
  }
  return Refused(why);
}

// Does `work` on the copy of an edit, and puts that in its place.
template <class Work>
Result Edit(const std::string& path, int channels, const LayoutTest& suits,
            const ChangeOptions& options, const Work& work) {
  using HardLinks = ProfileEdit::HardLinks;
  ProfileEdit edit(AFilePath(path), channels, suits,
                   options.hardLinks ? HardLinks::Replace : HardLinks::Refuse);
  if (edit.handler() == nullptr) return NotEdited(path, edit.state());
  Result result = work(edit);
  if (result.outcome != Outcome::Done) return result;
  if (edit.wasArranged()) result.message += "; its tag data were brought into table order first";
  if (options.dryRun) return Done(fmt::format("{}: {}", Sizes(edit), result.message));
  const EditState state = edit.Commit();
  return state == EditState::Done ? result : NotEdited(path, state);
}

}  // namespace

Result ChangeProfile(const std::string& path, int channels, const LayoutTest& suits,
                     const ChangeOptions& options, const Operation& operation) {
  if (options.inPlace && options.dryRun) return Usage(kDryRunInPlace);
  if (options.inPlace) return ChangeInPlace(path, channels, suits, operation);
  return Edit(path, channels, suits, options,
              [&](ProfileEdit& edit) { return operation(*edit.handler()); });
}

Result ChangeTags(const std::string& path, std::span<const TagChange> changes,
                  const ChangeOptions& options, const std::string& done, const Operation& inPlace) {
  // The tags are written in table order whatever the layout.
  const LayoutTest any = [](const VKCLProfile&) { return true; };
  if (options.inPlace && options.dryRun) return Usage(kDryRunInPlace);
  if (options.inPlace) return ChangeInPlace(path, kAnyChannels, any, inPlace);
  return Edit(path, kAnyChannels, any, options, [&](ProfileEdit& edit) {
    if (edit.StoreTags(changes)) return Done(done);
    return Refused(
        "the copy could not be written: a tag is not wholly in the file, no tag would be left, or "
        "the disk is full");
  });
}

}  // namespace vkcl::tool
