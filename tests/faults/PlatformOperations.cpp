// Files, paths and strings.
#include "faults/Operations.h"
#include "faults/SampleFiles.h"
#include "platform/plinth/AFile.h"
#include "platform/plinth/ALocaleSwitcher.h"
#include "platform/plinth/ATime.h"

namespace vkcl::testing {
namespace {

struct Files {
  explicit Files(const TempDir& dir)
      : path(dir.File("old.bin")), again(path), fresh(dir.File("x")) {}
  AFilePath path;
  AFilePath again;
  AFilePath fresh;
  AString text = "  a text of many characters  ";
  char buffer[300] = {};
};

template <class Run>
Operation On(const char* names, Run run, FilesLeft left = FilesLeft::Old,
             Faults shortages = Faults::Refuse) {
  Operation operation = {names, [=](const TempDir& dir) {
                           return With<Files>(
                               run,
                               [](const Files& f) {
                                 return Show(f.path) + Show(f.text) +
                                        ShowArray(f.buffer, sizeof f.buffer);
                               },
                               dir);
                         }};
  operation.filesLeft = left;
  operation.objectsLeft = ObjectsLeft::Documented;  // a transfer tells how much it moved
  operation.shortages = shortages;
  return operation;
}

void AddFiles(std::vector<Operation>& all) {
  all.push_back(
      On("AFile::open AFile::read AFile::seek AFile::length AFile::readAt "
         "AFile::tryLock AFile::waitForLock AFile::hasName AFile::close AFile::~AFile",
         [](Files& f) {
           AFile file;
           host::MutableSlice slices[] = {{f.buffer, 9}, {f.buffer + 50, 30}};
           return file.open(f.path, AFile::Read) && file.length() == 300 && file.tryLock() &&
                  file.waitForLock(std::chrono::seconds(1)) && file.hasName() && file.seek(5) &&
                  file.read(f.buffer + 100, 200) == 200 && file.readAt(7, slices) == 39 &&
                  file.close();
         }));
  all.push_back(On(
      "AFile::write AFile::writeAt AFile::setLength AFile::sync",
      [](Files& f) {
        AFile file;
        host::Slice slices[] = {{"abc", 3}, {"defg", 4}};
        return file.open(f.path, AFile::ReadWrite) && file.write("xyz", 3) == 3 &&
               file.writeAt(20, slices) == 7 && file.setLength(100) && file.sync() && file.close();
      },
      FilesLeft::Any));
}

void AddPaths(std::vector<Operation>& all) {
  const auto throws = [&](const char* names, const auto& run) {
    all.push_back(On(names, run, FilesLeft::Old, Faults::Throw));
  };
  throws("AFilePath::getExtension AFilePath::getFileName AFilePath::GetFullPath", [](Files& f) {
    return f.path.getExtension() == AString(".bin") && f.path.getFileName() == AString("old.bin") &&
           f.path.GetFullPath().length() != 0;
  });
  throws("AFilePath::removeLastComponent AFilePath::appendComponent", [](Files& f) {
    AFilePath path = f.path;
    path.removeLastComponent();
    path.appendComponent(f.text);
    return path.str().ends_with(f.text.str());
  });
  all.push_back(On("AFilePath::removeDoubledSeparators", [](Files& f) {
    f.path.removeDoubledSeparators();
    return !f.path.str().empty();
  }));
  all.push_back(On("AFilePath::exists AFilePath::isDirectory",
                   [](Files& f) { return f.path.exists() && !f.path.isDirectory(); }));
  all.push_back(On("AFilePath::isSameFile", [](Files& f) { return f.path.isSameFile(f.again); }));
  throws("AFilePath::isSameFileOrThrow",
         [](Files& f) { return f.path.isSameFileOrThrow(f.again); });
  all.push_back(On("AFilePath::remove", [](Files& f) { return f.path.remove(); }));
  all.push_back(On("AString::compareNoCase AString::trim", [](Files& f) {
    f.text.trim(' ');
    return f.text.compareNoCase(f.text) == 0;
  }));
  all.push_back(
      On("ATime::ATime ALocaleSwitcher::ALocaleSwitcher "
         "ALocaleSwitcher::~ALocaleSwitcher",
         [](Files&) {
           const ALocaleSwitcher neutral;
           return ATime().year() > 2000;
         }));
}

}  // namespace

Group PlatformOperations() {
  Group group = {LayProfiles, {}};
  AddFiles(group.operations);
  AddPaths(group.operations);
  return group;
}

}  // namespace vkcl::testing
