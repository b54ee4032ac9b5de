#include "DocumentCommands.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "Opened.h"
#include "OutputFile.h"
#include "Text.h"
#include "WhyInvalid.h"
#include "edit/ProfileEdit.h"
#include "inspect/ProfileDocument.h"
#include "inspect/StoredTags.h"
#include "platform/plinth/ReplaceFile.h"
#include "profile/TableLayout.h"
#include "profile/TagLayout.h"

namespace vkcl::tool {
namespace {

std::string NameOf(const TagChange& change) {
  return StoredTagName(change.signature, change.occurrence);
}

std::string NamesOf(const std::vector<TagChange>& changes, bool removed) {
  std::string names;
  for (const TagChange& change : changes) {
    if (change.remove != removed) continue;
    names += (names.empty() ? "" : ", ") + NameOf(change);
  }
  return names;
}

std::string DoneText(const Document& document) {
  const std::string stored = NamesOf(document.tags, false);
  const std::string removed = NamesOf(document.tags, true);
  std::string text = stored.empty() ? "" : "stored " + stored;
  if (!removed.empty()) text += (text.empty() ? "removed " : "; removed ") + removed;
  for (const std::string& note : document.notes) text += "; note: " + note;
  return text;
}

bool ReadFrom(const std::string& path, Document& document, std::string& why) {
  std::ifstream file(path, std::ios::binary);
  if (file) return ReadDocument(file, document, why);
  why = "it cannot be opened";
  return false;
}

// Why the store cannot write a tag into the file where it lies; empty when it can.
std::string WhyNotInPlace(const VKCLProfile& profile, const TagChange& change) {
  const bool isData =
      change.element.size() > kDataHead &&
      std::equal(std::begin(kBinaryHead), std::end(kBinaryHead), change.element.begin());
  if (change.remove || change.occurrence > 1 || !isData) {
    return "it is removed, a later entry, or no 'data' element with content";
  }
  const auto length = static_cast<unsigned long>(change.element.size() - kDataHead);
  const auto signature = static_cast<VKPrivateTagSignature>(change.signature);
  return TagDataSuitWriting(profile, signature, length) ? ""
                                                        : "the tag data do not lie in table order";
}

// The colour space of the header follows another colour mode, as in a copy.
void FollowColorMode(VKCLProfile& profile, const TagChange& change) {
  if (change.signature != QX53 || change.element.size() != kDataHead + sizeof(VKColorParam)) return;
  VKColorParam stored;
  VKColorParam given;
  unsigned long size = 0;
  profile.ReadVKPrivateTag(QX53, &stored, sizeof stored, &size);
  std::memcpy(static_cast<void*>(&given), change.element.data() + kDataHead, sizeof given);
  if (size == sizeof stored && stored.ColorMode != given.ColorMode) {
    profile.UpdateHeaderColorSpace(given.ColorMode);
  }
}

Result StoreInPlace(VKCLProfileHandler& handler, const Document& document) {
  VKCLProfile& profile = *handler.GetProfilePtr();
  for (const TagChange& change : document.tags) {
    const std::string why = WhyNotInPlace(profile, change);
    if (!why.empty()) {
      return Refused(fmt::format("{} cannot be stored in place: {}; without --in-place it can",
                                 NameOf(change), why));
    }
  }
  std::string stored;
  for (const TagChange& change : document.tags) {
    FollowColorMode(profile, change);
    if (profile.WriteVKPrivateTag(
            static_cast<VKPrivateTagSignature>(change.signature), change.element.data() + kDataHead,
            static_cast<unsigned long>(change.element.size() - kDataHead)) == 0) {
      return Refused(fmt::format("{} could not be written; stored before that: {}", NameOf(change),
                                 stored.empty() ? "nothing" : stored));
    }
    stored += (stored.empty() ? "" : ", ") + NameOf(change);
  }
  return Done(DoneText(document));
}

Result StoreInCopy(const ApplyOptions& options, const Document& document) {
  const AFilePath to(options.output);
  if (to.isSameFile(AFilePath(options.file))) {
    return Refused("a copy is not written onto the profile; leave out --output to change it");
  }
  if (to.isSameFile(AFilePath(options.path))) {
    return Refused("a copy is not written onto the document");
  }
  if (const std::string why = WhyKept(options.output, options.force); !why.empty()) {
    return Refused(why);
  }
  const OpenedProfile profile(options.file, kAnyChannels);
  const bool removesOnly = std::all_of(document.tags.begin(), document.tags.end(),
                                       [](const TagChange& change) { return change.remove; });
  if (removesOnly && document.tags.size() == profile.tagCount) {
    return Refused("no tag would be left");
  }
  if (!WriteChangedCopy(profile, document.tags, to)) {
    const auto isChanged = [&](const icTag& tag) {
      return std::any_of(document.tags.begin(), document.tags.end(),
                         [&](const TagChange& change) { return change.signature == tag.sig; });
    };
    return CopyNotWritten(options.output, profile,
                          [&](const icTag& tag) { return !isChanged(tag); });
  }
  return Done(fmt::format("{}; written to {}", DoneText(document), Printable(options.output)));
}

}  // namespace

Result Dump(const DumpOptions& options) {
  std::string why = WhyInvalid(options.file, kAnyChannels);
  if (!why.empty()) return Refused(why);
  const OpenedProfile profile(options.file, kAnyChannels);
  const DocumentForm form = options.json ? DocumentForm::Json : DocumentForm::Text;
  if (options.output.empty()) {
    const TextSink sink = [](std::string_view piece) {
      return std::fwrite(piece.data(), 1, piece.size(), stdout) == piece.size();
    };
    return WriteDocument(profile, options.tags, form, sink, why) ? Done({}) : Refused(why);
  }
  const AFilePath to(options.output);
  if (to.isSameFile(AFilePath(options.file))) {
    return Refused("a profile is not replaced by the document of its tags");
  }
  why = WhyKept(options.output, options.force);
  if (!why.empty()) return Refused(why);
  const bool written = ReplaceFile(to, [&](AFile& file) {
    const TextSink sink = [&](std::string_view piece) {
      return file.write(piece.data(), piece.size()) == piece.size();
    };
    return WriteDocument(profile, options.tags, form, sink, why);
  });
  if (written) return Done(fmt::format("written to {}", Printable(options.output)));
  return why.empty() ? NotWritten(options.output) : Refused(why);
}

Result Apply(const ApplyOptions& options, const ChangeOptions& how) {
  std::string why = WhyInvalid(options.file, kAnyChannels);
  if (!why.empty()) return Refused(why);
  if (!options.output.empty() && (how.inPlace || how.dryRun)) {
    return Usage("--output writes a copy; it goes with neither --in-place nor --dry-run");
  }
  Document document;
  if (!ReadFrom(options.path, document, why)) {
    return Refused(fmt::format("{}: {}", Printable(options.document), why));
  }
  if (document.tags.empty()) return Done("the document holds no tags; nothing is changed");
  if (!options.output.empty()) return StoreInCopy(options, document);
  return ChangeTags(options.file, document.tags, how, DoneText(document),
                    [&](VKCLProfileHandler& handler) { return StoreInPlace(handler, document); });
}

}  // namespace vkcl::tool
