#include "ChangeProfile.h"

#include <fmt/format.h>

#include "Opened.h"
#include "edit/ProfileEdit.h"
#include "platform/plinth/AFile.h"

namespace vkcl::tool {
namespace {

Result ChangeInPlace(const std::string& path, int channels, const LayoutTest& suits,
                     const Operation& operation) {
  OpenedHandler handler(path, channels);
  if (suits(*handler.GetProfilePtr())) return operation(handler);
  return Refused(
      "its tag data do not lie in table order; without --in-place a copy in order takes its place");
}

std::string Sizes(const ProfileEdit& edit) {
  return fmt::format("nothing is changed; {} bytes would become {}", edit.bytesBefore(),
                     edit.bytesNow());
}

}  // namespace

Result ChangeProfile(const std::string& path, int channels, const LayoutTest& suits,
                     const ChangeOptions& options, const Operation& operation) {
  if (options.inPlace && options.dryRun) return Usage("--dry-run works on a copy, not --in-place");
  if (options.inPlace) return ChangeInPlace(path, channels, suits, operation);
  using HardLinks = ProfileEdit::HardLinks;
  ProfileEdit edit(AFilePath(path), channels, suits,
                   options.hardLinks ? HardLinks::Replace : HardLinks::Refuse);
  if (edit.handler() == nullptr) {
    const char* hint = edit.state() == EditState::HardLinked ? "; --hard-links edits it alone" : "";
    return Refused(fmt::format("{}{}", EditStateText(edit.state()), hint));
  }
  Result result = operation(*edit.handler());
  if (result.outcome != Outcome::Done) return result;
  if (edit.wasArranged()) result.message += "; its tag data were brought into table order first";
  if (options.dryRun) return Done(fmt::format("{}: {}", Sizes(edit), result.message));
  const EditState state = edit.Commit();
  return state == EditState::Done ? result : Refused(EditStateText(state));
}

}  // namespace vkcl::tool
