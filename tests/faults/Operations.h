// Every public function with something to work on, so that each of its steps can be made to fail.
//
// The two tests of FaultsTest.cpp take all operations from here: system calls fail in one, each
// call in each way; allocations fail in the other, each in turn. PublicNamesTest.cpp reads the
// public headers and fails for a function that no operation names: whoever adds a function to the
// interface adds an operation here, and need not think of the two tests.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "faults/Showing.h"
#include "support/TempDir.h"

namespace vkcl::testing {

/// One go at an operation, with objects of its own.
struct Attempt {
  /// The operation, and whether it said that it was done. What it is given is ready: all that is
  /// allocated in here, and every call of the system, is the library's.
  std::function<bool()> run;
  /// All that the caller sees of the objects that took part, as text.
  std::function<std::string()> seen;
};

/// The files that an operation may leave when it says no.
enum class FilesLeft {
  Old,        ///< as they were
  OldOrNew,   ///< or as after success: a replacement of the same length whose close fails
  OldOrGone,  ///< or without the file that was to be written: it is removed first, deliberately
  Any,        ///< the file may be half written
};

/// The objects that an operation may leave when it says no.
enum class ObjectsLeft {
  Old,         ///< as they were
  Documented,  ///< somewhere on the way, as the header says
};

/// What an operation makes of a step that failed.
enum class Faults {
  Refuse,  ///< it says no, or does as without the fault
  Tell,    ///< it may say yes, and tell less: what cannot be read is not there
  Throw,   ///< it throws std::bad_alloc, as its header says; the rest as with Refuse
};

struct Operation {
  std::string names =
      {};  ///< public functions that it calls, "Class::Function", with blanks between
  std::function<Attempt(const TempDir&)> begin = {};
  std::string what = {};  ///< tells cases of one function apart
  FilesLeft filesLeft = FilesLeft::Old;
  ObjectsLeft objectsLeft = ObjectsLeft::Old;
  Faults systemFaults = Faults::Refuse;
  Faults shortages = Faults::Refuse;
  bool again = true;  ///< whether the same objects take another go after a refusal
};

/// Operations that work on the same files.
struct Group {
  void (*lay)(const TempDir& dir);  ///< lays the files
  std::vector<Operation> operations;
};

Group StoreOperations();
Group HandlerWriters();
Group HandlerReaders();
Group RecordOperations();
Group SplitOperations();
Group SidecarOperations();
Group XmlOperations();
Group EditOperations();
Group InspectOperations();
Group ProfilerOperations();
Group ColorOperations();
Group PlatformOperations();

struct NamedGroup {
  const char* name;
  Group (*make)();
};
inline constexpr NamedGroup kGroups[] = {
    {"Store", StoreOperations},
    {"HandlerWrites", HandlerWriters},
    {"HandlerReads", HandlerReaders},
    {"Records", RecordOperations},
    {"Splits", SplitOperations},
    {"Sidecar", SidecarOperations},
    {"Xml", XmlOperations},
    {"Edits", EditOperations},
    {"Inspection", InspectOperations},
    {"Profiler", ProfilerOperations},
    {"Colors", ColorOperations},
    {"Platform", PlatformOperations},
};

/// An attempt at something whose objects are a `State`, made here from the arguments.
template <class State, class Run, class Seen, class... Arguments>
Attempt With(Run run, Seen seen, Arguments&&... arguments) {
  const auto state = std::make_shared<State>(std::forward<Arguments>(arguments)...);
  return {[state, run] { return static_cast<bool>(run(*state)); },
          [state, seen] { return std::string(seen(*state)); }};
}

}  // namespace vkcl::testing
