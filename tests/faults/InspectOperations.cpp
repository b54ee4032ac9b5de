// Documents, comparison, check, report, and the views of tags.
#include <optional>
#include <sstream>

#include "faults/Operations.h"
#include "faults/SampleFiles.h"
#include "inspect/PrintableText.h"
#include "inspect/ProfileCheck.h"
#include "inspect/ProfileDiff.h"
#include "inspect/ProfileDocument.h"
#include "inspect/ProfileNames.h"
#include "inspect/ProfileReport.h"
#include "inspect/SchemaText.h"
#include "inspect/StoredTags.h"
#include "inspect/TagView.h"
#include "support/ImageBuilder.h"
#include "support/PrivatePayloads.h"

namespace vkcl::testing {
namespace {

constexpr const char* kDocument = R"({"format": "vkcl-private-tags", "formatVersion": 1,
  "tags": {"QX74": {"value": 9}, "QX75": {"text": "a text of many characters"},
  "QX54": {"DataFormat": "Lab ", "ColorMode": 1, "Measured": 1, "values": [[1, 2, 3]]},
  "QX99": {"element": ["ZGF0YQ=="]}, "QX76": null}})";

struct Inspecting {
  explicit Inspecting(const TempDir& dir)
      : path(dir.File("small.icc")),
        page(dir.File("old.bin")),
        profile(path, 0),
        other(AFilePath(dir.File("target.icc")), 0),
        text(kDocument) {
    out.reserve(std::size_t{1} << 20);
    EXPECT_TRUE(file.open(path, AFile::Read));
  }

  // Takes a piece; there is room for it.
  bool Take(std::string_view piece) {
    out += piece;
    return out.size() < (std::size_t{1} << 20);
  }

  AFilePath path;
  AFilePath page;
  bool hasPage = false;  // a whole one
  VKCLProfile profile;
  VKCLProfile other;
  AFile file;
  std::istringstream text;
  Document document;
  std::vector<Finding> findings;
  std::string out;
  std::string why;
  std::vector<std::string> only;
};

std::string Seen(const Inspecting& i) {
  std::string text = i.out;
  for (const TagChange& change : i.document.tags) {
    text += std::to_string(change.signature) + std::to_string(change.occurrence) +
            (change.remove ? "-" : "+") + std::string(change.element.begin(), change.element.end());
  }
  for (const Finding& finding : i.findings) text += finding.rule + finding.tag + finding.text;
  if (i.hasPage) {
    const Bytes page = ReadFile(i.page.str());
    EXPECT_TRUE(std::string(page.begin(), page.end()).ends_with("</html>\n"));
  }
  return text;
}

// What is written before a failure is not taken back.
template <class Run>
Operation On(const char* names, Run run, const char* what = "", Faults shortages = Faults::Refuse) {
  Operation operation = {names, [=](const TempDir& dir) {
                           return With<Inspecting>(
                               [=](Inspecting& i) {
                                 i.out.clear();
                                 return run(i);
                               },
                               Seen, dir);
                         }};
  operation.what = what;
  operation.objectsLeft = ObjectsLeft::Documented;
  operation.shortages = shortages;
  return operation;
}

void AddDocuments(std::vector<Operation>& all) {
  for (const DocumentForm form : {DocumentForm::Json, DocumentForm::Text}) {
    all.push_back(On(
        "vkcl::WriteDocument",
        [=](Inspecting& i) {
          return WriteDocument(
              i.profile, i.only, form, [&](std::string_view piece) { return i.Take(piece); },
              i.why);
        },
        form == DocumentForm::Json ? "JSON" : "text"));
  }
  all.push_back(On("vkcl::ReadDocument", [](Inspecting& i) {
    i.text.clear();
    i.text.seekg(0);
    const bool read = ReadDocument(i.text, i.document, i.why);
    if (!read) {
      EXPECT_TRUE(i.document.tags.empty() && i.document.notes.empty());
    }
    return read;
  }));
  all.push_back(On("vkcl::CompareProfiles", [](Inspecting& i) {
    return CompareProfiles(
        i.profile, i.other,
        [&](const Difference& d) { return i.Take(d.place) && i.Take(d.before) && i.Take(d.after); },
        i.why);
  }));
  all.push_back(On("vkcl::DocumentSchema", [](Inspecting&) { return !DocumentSchema().empty(); }));
  all.push_back(On("vkcl::TagReference", [](Inspecting&) { return !TagReference().empty(); }));
}

void AddPages(std::vector<Operation>& all) {
  // A file that cannot be read has that as its finding.
  all.push_back(On(
      "vkcl::CheckProfile vkcl::GravestOf vkcl::SeverityText",
      [](Inspecting& i) {
        i.findings = CheckProfile(i.path);
        EXPECT_FALSE(i.findings.empty());
        const bool read = i.findings.front().rule != "file.unreadable";
        EXPECT_TRUE(read || GravestOf(i.findings) == Severity::Error);
        return read && SeverityText(GravestOf(i.findings)) != nullptr;
      },
      "", Faults::Throw));
  Operation report = On("vkcl::WriteReport", [](Inspecting& i) {
    return WriteReport({&i.path, 1}, [&](std::string_view piece) { return i.Take(piece); });
  });
  report.systemFaults = Faults::Tell;
  all.push_back(report);
  all.push_back(On("vkcl::WriteReportFile", [](Inspecting& i) {
    i.hasPage = WriteReportFile({&i.path, 1}, i.page);
    return i.hasPage;
  }));
  all.back().systemFaults = Faults::Tell;
}

void AddViews(std::vector<Operation>& all) {
  all.push_back(On(
      "vkcl::StoredTagsOf",
      [](Inspecting& i) {
        bool good = false;
        const std::vector<StoredTag> tags = StoredTagsOf(i.profile, i.file, &good);
        if (good) {
          EXPECT_EQ(tags.size(), 6u);
        }
        return good;
      },
      "", Faults::Throw));
  all.push_back(On(
      "vkcl::StoredTagName vkcl::ParseStoredTagName",
      [](Inspecting&) {
        std::uint32_t signature = 0;
        std::uint32_t occurrence = 0;
        return StoredTagName(0x51580001, 123456789) == "0x51580001#123456789" &&
               ParseStoredTagName("QX53#2", signature, occurrence) && occurrence == 2;
      },
      "", Faults::Throw));
  all.push_back(On(
      "vkcl::PrintableText",
      [](Inspecting& i) {
        return i.Take(PrintableText("a text of many characters, \x01 and \xFF among them"));
      },
      "", Faults::Throw));
  all.push_back(On(
      "vkcl::ByteSource::At vkcl::RecordView::Of vkcl::RecordView::Find vkcl::FieldView::Number "
      "vkcl::FieldView::NumberText vkcl::FieldView::Integer vkcl::FieldView::Text "
      "vkcl::FieldView::TextBytes vkcl::FieldView::Bytes vkcl::FieldView::UsedCount",
      [](Inspecting& i) {
        const icTag& tag = i.profile.tagTable[2];
        ByteSource source(i.file, tag.offset + 12u, tag.size - 12u);
        const auto record = RecordView::Of(*FindTagSchema(QX53), source, i.why);
        if (!record) return false;
        for (const FieldView& field : record->fields()) {
          i.Take(field.NumberText());
          i.Take(field.Text().value_or("none"));
          i.Take(field.TextBytes());
          i.Take(field.Bytes(0, 9));
          i.Take(std::to_string(field.UsedCount()));
          i.Take(std::to_string(field.Number() + static_cast<double>(field.Integer())));
        }
        return source.good() && record->Find("MediaName") != nullptr;
      },
      "", Faults::Throw));
  all.push_back(On(
      "vkcl::FieldView::Record vkcl::FieldView::Block",
      [](Inspecting& i) {
        static const Bytes links = SamplePayload("QX69");
        static const Bytes splits = SplitPayload(2, {1, 2});
        const auto view = [](const Bytes& bytes) {
          return std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        };
        ByteSource linkBytes(view(links));
        ByteSource splitBytes(view(splits));
        const auto link = RecordView::Of(*FindTagSchema(QX69), linkBytes, i.why);
        const auto split = RecordView::Of(*FindTagSchema(QX50), splitBytes, i.why);
        return link && split && link->fields().back().Block(0, {0, 0}).length == 3 &&
               split->fields().back().Record(1).Find("colorantIndex")->Integer() == 2;
      },
      "", Faults::Throw));
  all.push_back(
      On("vkcl::TagSchemas vkcl::FindTagSchema vkcl::FindField vkcl::ClassName "
         "vkcl::IntentName vkcl::StandardTagTitle vkcl::TagTitle vkcl::FinishedStateName",
         [](Inspecting&) {
           return TagSchemas().size() == 27 && FindTagSchema(QX53) != nullptr &&
                  FindField(FindTagSchema(QX53)->fields, "MediaName") != nullptr &&
                  ClassName(icSigOutputClass) != nullptr && IntentName(0) != nullptr &&
                  StandardTagTitle(static_cast<icTagSignature>(Sig("cprt"))) != nullptr &&
                  TagTitle(QX53) != nullptr && FinishedStateName(0) != nullptr;
         }));
}

void Lay(const TempDir& dir) {
  LayProfiles(dir);
  static const Bytes small = [] {
    std::vector<ImageTag> tags = {{Sig("cprt"), TextTag("none")}};
    for (const char* signature : {"QX51", "QX53", "QX54", "QX68", "QX74"}) {
      tags.push_back({SigOf(signature), DataTag(SamplePayload(signature))});
    }
    tags.push_back({Sig("QX99"), TextTag("unknown")});
    return ProfileImage(ProfileHeader(), tags);
  }();
  dir.Write("small.icc", small);
}

}  // namespace

Group InspectOperations() {
  Group group = {Lay, {}};
  AddDocuments(group.operations);
  AddPages(group.operations);
  AddViews(group.operations);
  return group;
}

}  // namespace vkcl::testing
