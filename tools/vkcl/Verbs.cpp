#include "Verbs.h"

#include <fmt/format.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ArgumentKinds.h"
#include "CheckCommands.h"
#include "ColorCommands.h"
#include "Complain.h"
#include "DataCommands.h"
#include "DiffCommand.h"
#include "DocumentCommands.h"
#include "Files.h"
#include "InfoCommand.h"
#include "LifeCommands.h"
#include "Records.h"
#include "ReportCommand.h"
#include "Set.h"
#include "SplitCommands.h"
#include "StandardInput.h"
#include "Text.h"
#include "VsdCommands.h"
#include "inspect/SchemaText.h"

namespace vkcl::tool {
namespace {

struct SetOptions {
  std::string file;
  std::vector<std::string> assignments;
  int channels = 0;
  int create = 0;
};

std::vector<std::string> RecordNames() {
  std::vector<std::string> names;
  for (const RecordType& record : RecordTypes()) names.emplace_back(record.name);
  return names;
}

constexpr const char* kChannelsHelp =
    "Channels of the profile, for colour spaces that do not tell (0: from the header)";

// Adds the verbs; the one that is called leaves its exit code in `code`.
class Verbs {
 public:
  explicit Verbs(CLI::App& app) : app_(app) {}

  void AddAll() {
    AddInfo();
    AddSet();
    AddLife();
    AddData();
    AddColors();
    AddSplit();
    AddVsd();
    AddCheck();
    AddDocument();
    AddDiff();
    AddReport();
  }
  int code() const { return code_; }

 private:
  void AddInfo() {
    CLI::App* verb = Add("info", "Say what profile files are and hold",
                         "vkcl info press.icc\n  vkcl info --json *.icc",
                         [this] { code_ = static_cast<int>(Info(files_, json_, channels_)); });
    AddFiles(verb);
    verb->add_flag("--json", json_, "One JSON array with a document for each file");
    verb->add_option("--channels", channels_, kChannelsHelp)->check(CLI::Range(0, 16));
  }

  void AddSet() {
    CLI::App* verb = Add(
        "set", "Set fields of the stored records",
        "vkcl set press.icc ColorParam.Make=Acme "
        "'SingleInkLimit.limits=100,95,90,85'",
        [this] {
          Tell(set_.file, SetFields(set_.file, set_.assignments, set_.channels, set_.create, how_));
        });
    AddFile(verb, set_.file);
    verb->add_option(
            "ASSIGNMENT", set_.assignments,
            "RECORD.FIELD=VALUE; a list takes values with commas, or RECORD.FIELD[3]=VALUE")
        ->type_name(kName)
        ->check(Words(AssignableNames))
        ->required();
    verb->add_option("--channels", set_.channels, kChannelsHelp)->check(CLI::Range(0, 16));
    AddHow(verb);
    verb->add_option("--create", set_.create,
                     "Make a minimal profile of as many channels (3 to 16) if there is no file");
    verb->footer("Records and fields:\n" + SettableFields() + '\n' + verb->get_footer());
  }

  void AddLife() {
    CLI::App* verb =
        Add("merge", "Append the private tags of a profile to a standard one",
            "vkcl merge ours.icc standard.icc", [this] { Tell({}, Merge(file_, other_, how_)); });
    verb->add_option("SOURCE", file_, "One of the system's own profiles")
        ->type_name(kFile)
        ->required();
    verb->add_option("TARGET", other_, "The standard profile, which is changed")
        ->type_name(kFile)
        ->required();
    AddHow(verb);

    verb = Add("strip", "Write a copy without private tags", "vkcl strip ours.icc clean.icc",
               [this] { Tell(file_, Strip(file_, other_, force_)); });
    verb->add_option("IN", file_, "The profile")->type_name(kFile)->required();
    verb->add_option("OUT", other_, "The copy")->type_name(kFile)->required();
    verb->add_flag("--force", force_, "Replace an existing file");

    verb = Add("lock", "Lock an unlocked profile", "vkcl lock ours.icc",
               [this] { Tell(file_, Lock(file_, how_)); });
    AddFile(verb, file_);
    AddHow(verb);
    verb = Add("unlock", "Unlock a locked profile, to change its colour settings",
               "vkcl unlock ours.icc", [this] { Tell(file_, Unlock(file_, how_)); });
    AddFile(verb, file_);
    AddHow(verb);

    verb = Add("embed", "Store a whole file in a profile", "vkcl embed ours.icc profile1 link.icc",
               [this] { Tell(file_, Embed(file_, kind_, other_, how_)); });
    AddEmbedded(verb, "The file to store");
    AddHow(verb);
    verb = Add("extract", "Write an embedded file", "vkcl extract ours.icc trc curves.txt",
               [this] { Tell(file_, Extract(file_, kind_, other_, force_)); });
    AddEmbedded(verb, "The file to write");
    verb->add_flag("--force", force_, "Replace an existing file");
  }

  void AddData() {
    CLI::App* verb = Add("lists", "Show the data lists", "vkcl lists --values ours.icc",
                         [this] { Show(Lists(InputPath(file_), values_, json_)); });
    AddInput(verb, file_);
    verb->add_flag("--values", values_, "Show the values, too");
    verb->add_flag("--json", json_, "As a JSON array");
    verb = Add("target", "Show the parsed characterisation target", "vkcl target ours.icc",
               [this] { Show(Target(InputPath(file_), json_)); });
    AddInput(verb, file_);
    verb->add_flag("--json", json_, "As a JSON document");
    verb = Add("options", "Show the options with which the profile was computed",
               "vkcl options ours.icc", [this] { Show(Options(InputPath(file_), json_)); });
    AddInput(verb, file_);
    verb->add_flag("--json", json_, "As a JSON document");
  }

  void AddColors() {
    CLI::App* colors = app_.add_subcommand("colors", "Tell ink sets and their colour modes");
    colors->require_subcommand(1);
    colors->footer("Example:\n  vkcl colors names 8224");
    CLI::App* verb = Add(
        "mode", "The colour mode of an ink set",
        "vkcl colors mode Cyan Magenta Yellow Black LCyan LMagenta",
        [this] { Show(ColorMode(names_, json_)); }, colors);
    verb->add_option("NAME", names_, "Names of the inks, as they are written")
        ->type_name(kName)
        ->required();
    verb->add_flag("--json", json_, "As a JSON document");
    verb = Add(
        "names", "The inks of a colour mode", "vkcl colors names 0x80000011",
        [this] { Show(ColorNames(other_, json_)); }, colors);
    verb->add_option("MODE", other_, "Decimal, or hexadecimal behind 0x")
        ->type_name(kMode)
        ->required();
    verb->add_flag("--json", json_, "As a JSON document");
  }

  void AddSplit() {
    CLI::App* verb = Add("split", "Show an ink split, write it as XML, or store one from XML",
                         "vkcl split press.icc\n  vkcl split --default 256 --xml split.xml\n"
                         "  vkcl split press.icc --from-xml split.xml",
                         [this] {
                           split_.file = split_.fromXml.empty() ? InputPath(file_) : file_;
                           split_.how = how_;
                           Show(Split(split_));
                         });
    verb->add_option("FILE", file_, "A profile, or an XML file with a split")->type_name(kInput);
    verb->add_option("--default", split_.mode, "The default split of a colour mode instead")
        ->type_name(kMode);
    verb->add_option("--strengths", split_.strengths,
                     "Strengths of the mode's inks, with commas between them, in their order: they "
                     "scale the default split")
        ->type_name(kNumbers);
    verb->add_option("--version", split_.version, "Version of the default split: 2, 3 or 4")
        ->check(CLI::Range(2, 4));
    verb->add_option("--xml", split_.toXml, "Write the split to this file, as XML")
        ->type_name(kFile);
    verb->add_option("--from-xml", split_.fromXml, "Store the split of this file in the profile")
        ->type_name(kFile);
    verb->add_flag("--force", split_.force, "Replace an existing file");
    verb->add_flag("--json", split_.json, "As a JSON document");
    AddHow(verb);
  }

  void AddCheck() {
    CLI::App* verb = Add("check", "Say what is wrong with profile files, or unusual about them",
                         "vkcl check *.icc\n  vkcl check --recursive /usr/share/color/icc",
                         [this] { code_ = static_cast<int>(Check(files_, json_)); });
    AddFiles(verb);
    verb->add_flag("--json", json_, "One JSON array with a document for each file");
    AddExitCodes(verb, "no file has an error", "a file has an error, or the check failed");
    verb =
        Add("compact", "Write a copy with the tag data in table order",
            "vkcl compact theirs.icc ordered.icc", [this] { Tell(file_, Compact(file_, other_)); });
    verb->add_option("IN", file_, "The profile")->type_name(kFile)->required();
    verb->add_option("OUT", other_, "The copy, which must not exist")->type_name(kFile)->required();
  }

  void AddDocument() {
    CLI::App* verb = Add("dump", "Write the private tags as a document, field by field",
                         "vkcl dump press.icc QX51 ColorParam\n"
                         "  vkcl dump --json press.icc -o press.json",
                         [this] {
                           dump_.file = InputPath(file_);
                           const Result result = Dump(dump_);
                           if (!result.message.empty()) Tell(file_, result);
                         });
    AddInput(verb, file_);
    verb->add_option("TAG", dump_.tags,
                     "Only these tags: QX53, QX53#2 for a second one, or ColorParam")
        ->type_name(kName)
        ->check(Words(RecordNames));
    verb->add_flag("--json", dump_.json, "As JSON, complete and exact: what apply reads");
    verb->add_option("-o,--output", dump_.output, "Write this file")->type_name(kFile);
    verb->add_flag("--force", dump_.force, "Replace an existing file");

    verb = Add("apply", "Store the private tags of a document",
               "vkcl apply press.icc press.json\n"
               "  vkcl apply standard.icc press.json --output ours.icc",
               [this] {
                 apply_.path = InputPath(apply_.document);
                 Tell(apply_.file, Apply(apply_, how_));
               });
    AddFile(verb, apply_.file);
    verb->add_option("DOCUMENT", apply_.document, "A JSON document, as dump writes it")
        ->type_name(kInput)
        ->required();
    verb->add_option("-o,--output", apply_.output, "Write a copy instead of changing the profile")
        ->type_name(kFile);
    verb->add_flag("--force", apply_.force, "Replace an existing copy");
    AddHow(verb);

    verb = Add("schema", "Describe the documents, or the tags and their fields",
               "vkcl schema > profile-document.schema.json\n  vkcl schema --markdown > tags.md",
               [this] { fmt::print("{}", markdown_ ? TagReference() : DocumentSchema()); });
    verb->add_flag("--markdown", markdown_, "The tags, as Markdown, instead of a JSON Schema");
  }

  void AddDiff() {
    CLI::App* verb =
        Add("diff", "Say what two profiles differ in", "vkcl diff monday.icc tuesday.icc", [this] {
          const Result result = Diff(diff_);
          code_ = static_cast<int>(result.outcome);
          if (!result.message.empty()) Tell({}, result);
        });
    verb->add_option("BEFORE", diff_.before, "A profile")->type_name(kInput)->required();
    verb->add_option("AFTER", diff_.after, "Another one")->type_name(kInput)->required();
    verb->add_flag("--json", diff_.json, "As a JSON array with an object for each difference");
    AddExitCodes(verb, "the profiles are the same", "they differ, or cannot be compared");
    verb->add_flag("--all", diff_.all, "Every difference, not only the first of each tag");
  }

  void AddReport() {
    CLI::App* verb = Add("report", "Write a page about profiles, to read before a meeting",
                         "vkcl report press.icc -o press.html",
                         [this] { Show(Report(files_, other_, force_)); });
    verb->add_option("FILE", files_.names, "Profile files")->type_name(kFile)->required();
    AddRecursive(verb);
    verb->add_option("-o,--output", other_, "The HTML page")->type_name(kOutput)->required();
    verb->add_flag("--force", force_, "Replace an existing file");
  }

  void AddVsd() {
    CLI::App* vsd = app_.add_subcommand("vsd", "The VSD document beside a profile");
    vsd->add_option("FILE", file_, "The document, or a profile that has one beside it")
        ->type_name(kFile);
    vsd->add_flag("--json", json_, "As a JSON document");
    vsd->footer("Example:\n  vkcl vsd VSDProfile/press.icc");
    vsd->callback([this, vsd] {
      if (!vsd->get_subcommands().empty()) return;
      if (file_.empty()) return Tell({}, Usage("vsd: FILE is required"));
      Show(VsdShow(file_, json_));
    });
    CLI::App* verb = Add(
        "create", "Make the document, with the profile's colour parameters",
        "vkcl vsd create press.icc", [this] { Tell(other_, VsdCreate(other_, force_)); }, vsd);
    verb->add_option("PROFILE", other_, "The profile")->type_name(kFile)->required();
    verb->add_flag("--force", force_, "Replace an existing document");
    verb = Add(
        "embed", "Store the document in the profile", "vkcl vsd embed press.icc",
        [this] { Tell(other_, VsdEmbed(other_, how_)); }, vsd);
    verb->add_option("PROFILE", other_, "The profile")->type_name(kFile)->required();
    AddHow(verb);
    verb = Add(
        "extract", "Write the stored document beside the profile", "vkcl vsd extract press.icc",
        [this] { Tell(other_, VsdExtract(other_, force_)); }, vsd);
    verb->add_option("PROFILE", other_, "The profile")->type_name(kFile)->required();
    verb->add_flag("--force", force_, "Replace an existing document");
  }

  CLI::App* Add(const char* name, const char* what, const std::string& example,
                std::function<void()> run) {
    return Add(name, what, example, std::move(run), &app_);
  }

  static CLI::App* Add(const char* name, const char* what, const std::string& example,
                       std::function<void()> run, CLI::App* above) {
    CLI::App* verb = above->add_subcommand(name, what);
    verb->footer("Example:\n  " + example);
    verb->callback(std::move(run));
    return verb;
  }

  // What the exit codes mean of a verb that gives an answer with them.
  static void AddExitCodes(CLI::App* verb, const std::string& done, const std::string& refused) {
    verb->footer(verb->get_footer() + fmt::format("\n\nExit codes:\n  0  {}\n  1  {}\n"
                                                  "  2  the command line is not as it should be",
                                                  done, refused));
  }

  static void AddFile(CLI::App* verb, std::string& file) {
    verb->add_option("FILE", file, "Profile file")->type_name(kFile)->required();
  }

  // A profile that is only read; it may come through the standard input.
  static void AddInput(CLI::App* verb, std::string& file) {
    verb->add_option("FILE", file, "Profile file")->type_name(kInput)->required();
  }

  // Files that are looked at one by one; of every verb that takes as many as one likes.
  void AddFiles(CLI::App* verb) {
    verb->add_option("FILE", files_.names, "Profile files")->type_name(kInput)->required();
    AddRecursive(verb);
    verb->add_option("-j,--jobs", files_.jobs,
                     "Threads to work in; as many as there are processor cores unless given")
        ->check(CLI::Range(1, 256));
  }

  void AddRecursive(CLI::App* verb) {
    verb->add_flag("-r,--recursive", files_.recursive,
                   "Of folders take the files in and below them that end in .icc or .icm");
  }

  // How a profile is written into; of every verb that does.
  void AddHow(CLI::App* verb) {
    verb->add_flag("--dry-run", how_.dryRun, "Only tell what would be done");
    verb->add_flag("--in-place", how_.inPlace,
                   "Write into the file where it lies: faster, and a crash may damage it");
    verb->add_flag("--hard-links", how_.hardLinks,
                   "Also a file with other names, which keep the old content");
  }

  void AddEmbedded(CLI::App* verb, const char* what) {
    AddFile(verb, file_);
    verb->add_option("KIND", kind_, "Kind of embedded file")
        ->type_name(kName)
        ->check(Words(EmbeddedKindNames))
        ->required();
    verb->add_option("PATH", other_, what)->type_name(kFile)->required();
    verb->footer("Kinds:\n" + EmbeddedKinds() + '\n' + verb->get_footer());
  }

  // Prints what was done, or complains.
  void Tell(const std::string& file, const Result& result) {
    code_ = static_cast<int>(result.outcome);
    const std::string prefix = file.empty() ? "" : Printable(file) + ": ";
    if (result.outcome == Outcome::Done) {
      fmt::print("{}{}\n", prefix, result.message);
    } else {
      Complain(prefix + result.message);
    }
  }

  // Prints the text that a verb made, or complains.
  void Show(const Result& result) {
    if (result.outcome != Outcome::Done) return Tell(file_, result);
    fmt::print("{}", result.message);
  }

  CLI::App& app_;
  ChangeOptions how_;
  FilesOptions files_;
  int channels_ = 0;
  SplitOptions split_;
  SetOptions set_;
  DiffOptions diff_;
  DumpOptions dump_;
  ApplyOptions apply_;
  std::string file_;
  std::string other_;
  std::string kind_;
  std::vector<std::string> names_;
  bool force_ = false;
  bool values_ = false;
  bool json_ = false;
  bool markdown_ = false;
  int code_ = 0;
};

}  // namespace

std::function<int()> AddVerbs(CLI::App& app) {
  const auto verbs = std::make_shared<Verbs>(app);
  verbs->AddAll();
  return [verbs] { return verbs->code(); };
}

}  // namespace vkcl::tool
