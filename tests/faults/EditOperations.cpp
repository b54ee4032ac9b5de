// Edits on a copy, copies with changes, the layout of tag data, and files that are replaced.
#include <optional>

#include "edit/ProfileEdit.h"
#include "faults/Operations.h"
#include "faults/SampleFiles.h"
#include "platform/plinth/ReplaceFile.h"
#include "profile/TagLayout.h"
#include "support/ImageBuilder.h"

namespace vkcl::testing {
namespace {

struct Editing {
  explicit Editing(const TempDir& dir)
      : path(dir.File("p.icc")),
        mixed(dir.File("mixed.icc")),
        to(dir.File("old.bin")),
        fresh(dir.File("new.bin")),
        unfinished(dir.File(".vkcl-0123456789abcdef-0.new")),
        profile(path, 0) {
    const auto tag = [](std::uint32_t signature, std::size_t length) {
      TagChange change;
      change.signature = signature;
      const Bytes data = DataTag(Pattern(length, 5));
      change.element.assign(data.begin(), data.end());
      return change;
    };
    changes = {tag(QX51, 300), tag(QX74, 5), tag(Sig("QX77"), 40)};
    changes.push_back(TagChange());
    changes.back().signature = QX66;
    changes.back().remove = true;
  }

  AFilePath path;
  AFilePath mixed;
  AFilePath to;
  AFilePath fresh;
  AFilePath unfinished;
  VKCLProfile profile;
  std::vector<TagChange> changes;
};

template <class Run>
Operation On(const char* names, Run run, const char* what = "", FilesLeft left = FilesLeft::Old) {
  return {names,
          [=](const TempDir& dir) {
            return With<Editing>(
                run, [](const Editing& e) { return Show(e.profile); }, dir);
          },
          what, left};
}

void AddEdits(std::vector<Operation>& all) {
  const auto edit = [](const AFilePath& path) {
    ProfileEdit work(path);
    return work.state() == EditState::Open && work.handler()->WriteVKWizardFlag(9) != 0 &&
           work.Commit() == EditState::Done;
  };
  all.push_back(
      On("vkcl::ProfileEdit::ProfileEdit vkcl::ProfileEdit::~ProfileEdit "
         "vkcl::ProfileEdit::Commit",
         [=](Editing& e) { return edit(e.path); }));
  all.push_back(On(
      "vkcl::ProfileEdit::ProfileEdit vkcl::ProfileEdit::Commit",
      [=](Editing& e) { return edit(e.mixed); }, "not in table order"));
  all.push_back(
      On("vkcl::ProfileEdit::StoreTags vkcl::ProfileEdit::bytesNow "
         "vkcl::EditStateText",
         [](Editing& e) {
           ProfileEdit work(e.path);
           return work.StoreTags(e.changes) && work.bytesNow() != 0 &&
                  work.Commit() == EditState::Done && EditStateText(work.state()) != nullptr;
         }));
}

void AddCopies(std::vector<Operation>& all) {
  all.push_back(
      On("vkcl::IsUnfinishedCopy", [](Editing& e) { return IsUnfinishedCopy(e.unfinished); }));
  all.push_back(On(
      "vkcl::WriteChangedCopy",
      [](Editing& e) { return WriteChangedCopy(e.profile, e.changes, e.to); }, "replacing"));
  all.push_back(On(
      "vkcl::WriteChangedCopy",
      [](Editing& e) { return WriteChangedCopy(e.profile, e.changes, e.fresh); }, "new"));
  all.push_back(On(
      "vkcl::WriteChangedCopy",
      [](Editing& e) { return WriteChangedCopy(e.profile, e.changes, e.path); }, "onto itself"));
  all.push_back(
      On("vkcl::ArrangeTagData", [](Editing& e) { return ArrangeTagData(e.profile, e.fresh); }));
  const auto into = [](const char* names, const auto& write) {
    return On(
        names,
        [=](Editing& e) {
          AFile file;
          return file.open(e.fresh, AFile::Write | AFile::Create) && write(e, file) && file.close();
        },
        "", FilesLeft::Any);
  };
  all.push_back(into("vkcl::WriteArranged",
                     [](Editing& e, AFile& file) { return WriteArranged(e.profile, file); }));
  all.push_back(into("vkcl::WriteChanged", [](Editing& e, AFile& file) {
    return WriteChanged(e.profile, e.changes, file);
  }));
  all.push_back(On("vkcl::TagDataSuitWriting vkcl::TagDataSuitAppending", [](Editing& e) {
    return TagDataSuitWriting(e.profile, QX53, 5) && TagDataSuitAppending(e.profile);
  }));
}

void AddReplacements(std::vector<Operation>& all) {
  for (const bool exists : {true, false}) {
    const char* what = exists ? "an old file" : "no file";
    all.push_back(On(
        "vkcl::ReplaceFile",
        [=](Editing& e) { return ReplaceFile(exists ? e.to : e.fresh, "some content"); }, what));
    all.push_back(On(
        "vkcl::ReplaceFile",
        [=](Editing& e) {
          return ReplaceFile(exists ? e.to : e.fresh, [](AFile& file) {
            return file.write("more", 4) == 4 && file.write("and more", 8) == 8;
          });
        },
        what));
  }
}

// A profile whose tag data lie in another order than its table.
Bytes Mixed() {
  const Bytes element = DataTag(Pattern(28, 1));
  return RawImage(ProfileHeader(), {{Sig("cprt"), 196, 40}, {Sig("QX53"), 156, 40}},
                  Join({element, DataTag(Pattern(28, 2))}));
}

void Lay(const TempDir& dir) {
  LayProfiles(dir);
  static const Bytes mixed = Mixed();
  dir.Write("mixed.icc", mixed);
}

}  // namespace

Group EditOperations() {
  Group group = {Lay, {}};
  AddEdits(group.operations);
  AddCopies(group.operations);
  AddReplacements(group.operations);
  return group;
}

}  // namespace vkcl::testing
