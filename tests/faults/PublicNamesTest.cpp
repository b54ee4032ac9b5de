// No public function is left out of the operations, by its name: overloads count as one. The
// headers are read for what they declare; a function whose body stands in its header makes no step
// of its own that could fail but those of the functions it calls.
#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>

#include "faults/Operations.h"

namespace {

using Names = std::set<std::string>;

std::string TextOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// Walks through a header and collects the functions that are exported and declared without a body.
class Declarations {
 public:
  explicit Declarations(const std::string& header) {
    static const std::regex kNoCode(R"(//[^\n]*|#(?:\\\n|[^\n])*)");
    for (const char c : std::regex_replace(header, kNoCode, "")) Take(c);
  }

  const Names& names() const { return names_; }

 private:
  struct Scope {
    std::string name;  // "vkcl::", "Class::"
    bool isClass = false;
    bool open = true;  // public, and exported
  };

  void Take(char c) {
    if (skipped_ > 0) {
      skipped_ += c == '{' ? 1 : c == '}' ? -1 : 0;
      if (skipped_ == 0 && !inArguments_) statement_.clear();
    } else if (c == '{') {
      Open();
    } else if (c == '}') {
      if (!scopes_.empty()) scopes_.pop_back();
      statement_.clear();
    } else if (c == ';') {
      Declare();
      statement_.clear();
    } else {
      statement_ += c;
      Access("public:", true);
      Access("private:", false);
    }
  }

  void Access(const std::string& word, bool open) {
    if (!statement_.ends_with(word)) return;
    if (!scopes_.empty()) scopes_.back().open = open;
    statement_.clear();
  }

  void Open() {
    static const std::regex kSpace(R"(^\s*namespace\s*(\w*)\s*$)");
    static const std::regex kType(R"((?:class|struct)\s+(VKCL_API\s+)?(\w+)\s*(?::[^()]*)?$)");
    std::smatch match;
    if (std::regex_search(statement_, match, kSpace)) {
      scopes_.push_back({match[1].str().empty() ? "" : match[1].str() + "::"});
    } else if (statement_.find("extern \"C\"") != std::string::npos &&
               statement_.find('(') == std::string::npos) {
      scopes_.push_back({""});
    } else if (statement_.find('(') == std::string::npos &&
               statement_.find('=') == std::string::npos &&
               std::regex_search(statement_, match, kType) &&
               statement_.find("enum") == std::string::npos) {
      scopes_.push_back({match[2].str() + "::", true, match[1].matched});
    } else {
      ++skipped_;
      inArguments_ = std::count(statement_.begin(), statement_.end(), '(') !=
                     std::count(statement_.begin(), statement_.end(), ')');
      return;
    }
    statement_.clear();
  }

  void Declare() {
    static const std::regex kFunction(R"((~?\w+|operator\s*\S+?)\s*\()");
    static const std::regex kNone(
        R"(=\s*(default|delete)|\b(static_assert|using|friend|typedef)\b)");
    std::smatch match;
    if (std::regex_search(statement_, kNone) || !std::regex_search(statement_, match, kFunction)) {
      return;
    }
    const bool inClass = !scopes_.empty() && scopes_.back().isClass;
    const bool exported = inClass ? std::all_of(scopes_.begin(), scopes_.end(),
                                                [](const Scope& scope) { return scope.open; })
                                  : statement_.find("VKCL_API") != std::string::npos;
    if (!exported) return;
    std::string name;
    for (const Scope& scope : scopes_) name += scope.name;
    names_.insert(name + match[1].str());
  }

  std::string statement_;
  std::vector<Scope> scopes_;
  int skipped_ = 0;           // braces of a body that is skipped
  bool inArguments_ = false;  // it is a default argument
  Names names_;
};

Names Declared() {
  Names names;
  const std::filesystem::path source = std::filesystem::path(VKCL_SOURCE_DIR) / "src";
  for (const auto& entry : std::filesystem::recursive_directory_iterator(source)) {
    if (entry.path().extension() != ".h") continue;
    const std::string header = TextOf(entry.path());
    if (header.find("VKCL_API") != std::string::npos)
      names.merge(Names(Declarations(header).names()));
  }
  return names;
}

Names Tested() {
  Names names;
  for (const vkcl::testing::NamedGroup& group : vkcl::testing::kGroups) {
    for (const vkcl::testing::Operation& operation : group.make().operations) {
      std::istringstream words(operation.names);
      for (std::string word; words >> word;) names.insert(word);
    }
  }
  return names;
}

TEST(PublicNames, TheHeadersAreUnderstood) {
  const Names names = Declarations(R"(
    // VKCL_API int Not(int);
    namespace vkcl {
    VKCL_API int One(int a,
                     int b);
    int Hidden();
    class VKCL_API Thing {
     public:
      explicit Thing(int a) noexcept;
      ~Thing();
      Thing(const Thing&) = delete;
      Thing& operator=(const Thing& other);
      int Inline() const { if (true) { return Other(); } return 0; }
      int Two(const Thing& t = {}) const;
     private:
      int Three();
    };
    }
    extern "C" {
    VKCL_API void* Four(void);
    }
  )")
                          .names();
  EXPECT_EQ(names, (Names{"Four", "vkcl::One", "vkcl::Thing::Thing", "vkcl::Thing::Two",
                          "vkcl::Thing::operator=", "vkcl::Thing::~Thing"}));
}

TEST(PublicNames, EveryFunctionHasAnOperation) {
  const Names declared = Declared();
  const Names tested = Tested();
  EXPECT_GT(declared.size(), 200u);
  Names missing;
  std::set_difference(declared.begin(), declared.end(), tested.begin(), tested.end(),
                      std::inserter(missing, missing.end()));
  for (const std::string& name : missing) {
    ADD_FAILURE() << name << " has no operation in tests/faults; see Operations.h";
  }
}

TEST(PublicNames, EveryOperationNamesFunctionsThatThereAre) {
  const Names declared = Declared();
  for (const std::string& name : Tested()) {
    EXPECT_TRUE(declared.contains(name)) << name << " is declared in no public header";
  }
}

}  // namespace
