#include "platform/plinth/ReplaceFile.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#if defined(__linux__)
#include <sys/xattr.h>
#endif

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <fstream>
#include <functional>
#include <set>
#include <thread>

#include "support/SystemCalls.h"
#include "support/TempDir.h"

namespace {

using vkcl::ReplaceFile;
using vkcl::testing::Bytes;
using vkcl::testing::CallKind;
using vkcl::testing::CallLog;
using vkcl::testing::Fault;
using vkcl::testing::FaultAt;
using vkcl::testing::OpenHandles;
using vkcl::testing::ReadFile;
using vkcl::testing::TempDir;
using vkcl::testing::WriteFile;
namespace fs = std::filesystem;

constexpr Fault kFaults[] = {Fault::Error, Fault::Short, Fault::FullDisk, Fault::Interrupted,
                             Fault::FailedClose};
constexpr uid_t kNobody = 65534;

Bytes BytesOf(const std::string& text) { return {text.begin(), text.end()}; }

std::string TextOf(const fs::path& path) {
  const Bytes bytes = ReadFile(path);
  return {bytes.begin(), bytes.end()};
}

/// The names in a folder.
std::set<std::string> NamesIn(const fs::path& folder) {
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.insert(entry.path().filename());
  return names;
}

mode_t ModeOf(const std::string& path) {
  struct stat status = {};
  EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
  return status.st_mode & 07777;
}

// Whole files.

TEST(ReplaceFile, GivesAFileItsNewContent) {
  const TempDir dir;
  const std::string path = dir.Write("f", BytesOf("the old content"));
  for (const std::string content : {"new", "", "the newest content, longer than the others"}) {
    ASSERT_TRUE(ReplaceFile(path, content));
    EXPECT_EQ(TextOf(path), content);
    EXPECT_EQ(NamesIn(dir.path()), std::set<std::string>{"f"});
  }
}

TEST(ReplaceFile, CreatesAMissingFile) {
  const TempDir dir;
  ASSERT_TRUE(ReplaceFile(dir.File("new"), "content"));
  EXPECT_EQ(TextOf(dir.File("new")), "content");
  ASSERT_TRUE(ReplaceFile(dir.File("empty"), ""));
  EXPECT_EQ(fs::file_size(dir.File("empty")), 0u);
  EXPECT_EQ(NamesIn(dir.path()), (std::set<std::string>{"new", "empty"}));
}

TEST(ReplaceFile, KeepsEveryByte) {
  const TempDir dir;
  std::string content;
  for (unsigned i = 0; i < 5000000; ++i) content += static_cast<char>(i ^ (i >> 8) ^ (i >> 16));
  ASSERT_TRUE(ReplaceFile(dir.File("f"), content));
  EXPECT_TRUE(TextOf(dir.File("f")) == content);
  ASSERT_TRUE(ReplaceFile(dir.File("f"), "a\r\nb\n\x1A c"));
  EXPECT_EQ(TextOf(dir.File("f")), "a\r\nb\n\x1A c");
  ASSERT_TRUE(ReplaceFile(dir.File("f"), std::string_view("\0\0", 2)));
  EXPECT_EQ(TextOf(dir.File("f")), std::string(2, '\0'));
}

TEST(ReplaceFile, LeavesTheOldFileToThoseWhoHaveItOpen) {
  const TempDir dir;
  const std::string path = dir.Write("f", BytesOf("the old content"));
  std::ifstream reader(path, std::ios::binary);
  ASSERT_TRUE(ReplaceFile(path, "new"));
  const std::string read{std::istreambuf_iterator<char>(reader), std::istreambuf_iterator<char>()};
  EXPECT_EQ(read, "the old content");
}

TEST(ReplaceFile, IsSeenWholeAtEveryMoment) {
  const TempDir dir;
  const std::string path = dir.File("f");
  const std::array<std::string, 2> contents = {std::string(300000, 'a'), std::string(70000, 'b')};
  ASSERT_TRUE(ReplaceFile(path, contents[0]));
  std::atomic<bool> done = false;
  int looks = 0;
  int torn = 0;
  std::thread reader([&] {
    while (!done || looks == 0) {
      std::ifstream file(path, std::ios::binary);
      const std::string read{std::istreambuf_iterator<char>(file),
                             std::istreambuf_iterator<char>()};
      torn += read != contents[0] && read != contents[1];
      ++looks;
    }
  });
  for (std::size_t i = 0; i < 60; ++i) EXPECT_TRUE(ReplaceFile(path, contents[i % 2]));
  done = true;
  reader.join();
  EXPECT_EQ(torn, 0) << "of " << looks;
}

TEST(ReplaceFile, IsOnTheMediumBeforeItGetsTheName) {
  const TempDir dir;
  for (const bool exists : {false, true}) {
    const CallLog log;
    ASSERT_TRUE(ReplaceFile(dir.File("f"), "content"));
    EXPECT_EQ(log.Bytes(CallKind::Write), 7u);
    const std::vector<CallKind> kinds = log.Kinds();
    const auto written = std::find(kinds.rbegin(), kinds.rend(), CallKind::Write).base();
    const auto behind = [&](CallKind kind) { return std::find(written, kinds.end(), kind); };
    const auto rename = behind(CallKind::Rename);
    ASSERT_NE(rename, kinds.end()) << exists;
    EXPECT_LT(behind(CallKind::Sync), behind(CallKind::Close));
    EXPECT_LT(behind(CallKind::Close), rename) << "a close can report lost bytes";
    EXPECT_EQ(std::count(rename, kinds.end(), CallKind::Sync), 1) << "the folder, too";
  }
}

TEST(ReplaceFile, TakesWhatAFunctionWritesInPieces) {
  const TempDir dir;
  const std::string path = dir.Write("f", BytesOf("the old content"));
  bool oldStood = false;
  EXPECT_TRUE(ReplaceFile(path, [&](AFile& file) {
    EXPECT_EQ(file.length(), 0) << "a new file";
    const bool done = file.write("one ", 4) == 4 && file.write("two", 3) == 3;
    oldStood = TextOf(path) == "the old content";
    return done;
  }));
  EXPECT_TRUE(oldStood);
  EXPECT_EQ(TextOf(path), "one two");
  EXPECT_EQ(NamesIn(dir.path()), std::set<std::string>{"f"});
  EXPECT_TRUE(ReplaceFile(path, [](AFile&) { return true; }));
  EXPECT_EQ(TextOf(path), "");
}

TEST(ReplaceFile, KeepsTheOldFileWhenTheFunctionFails) {
  const int handles = OpenHandles();
  const TempDir dir;
  const std::string path = dir.Write("f", BytesOf("old"));
  for (const std::string& to : {path, dir.File("new")}) {
    EXPECT_FALSE(ReplaceFile(to, [](AFile& file) {
      EXPECT_EQ(file.write("half", 4), 4u);
      return false;
    }));
  }
  EXPECT_EQ(TextOf(path), "old");
  EXPECT_EQ(NamesIn(dir.path()), std::set<std::string>{"f"});
  EXPECT_EQ(OpenHandles(), handles);
}

TEST(ReplaceFile, DoesNotAskTheFunctionWhereNothingCanBeWritten) {
  const TempDir dir;
  int asked = 0;
  const auto write = [&](AFile&) {
    ++asked;
    return true;
  };
  EXPECT_FALSE(ReplaceFile(dir.path().string(), write));
  EXPECT_FALSE(ReplaceFile(dir.File("missing/f"), write));
  EXPECT_EQ(asked, 0);
}

// Names and places.

TEST(ReplaceFile, TakesNamesOfEveryLength) {
  const TempDir dir;
  for (const std::size_t length : {1u, 2u, 200u, 250u, 251u, 255u}) {
    const std::string path = dir.File(std::string(length, 'n'));
    for (const char* content : {"first", "second"}) {
      EXPECT_TRUE(ReplaceFile(path, content)) << length;
      EXPECT_EQ(TextOf(path), content);
    }
  }
  EXPECT_EQ(NamesIn(dir.path()).size(), 6u);
  EXPECT_FALSE(ReplaceFile(dir.File(std::string(256, 'n')), "x")) << "longer than a name can be";
  EXPECT_EQ(NamesIn(dir.path()).size(), 6u);
}

TEST(ReplaceFile, TakesNamesOfAllSorts) {
  const TempDir dir;
  const std::set<std::string> names = {"a b",   ".hidden", "dot.",         "-x",        "*?",
                                       "~",     "\xFF",    "\xE7\x89\x88", "a\nb",      "%s",
                                       "f.tmp", "f~",      "#f#",          "'\"$(ls)\\"};
  for (const std::string& name : names) {
    EXPECT_TRUE(ReplaceFile(dir.File(name), name)) << name;
    EXPECT_TRUE(ReplaceFile(dir.File(name), name + "!")) << name;
  }
  EXPECT_EQ(NamesIn(dir.path()), names);
  for (const std::string& name : names) EXPECT_EQ(TextOf(dir.File(name)), name + "!");
}

TEST(ReplaceFile, TakesRelativePaths) {
  const TempDir dir;
  fs::create_directory(dir.path() / "sub");
  const fs::path before = fs::current_path();
  fs::current_path(dir.path());
  for (const char* content : {"first", "second"}) {
    EXPECT_TRUE(ReplaceFile("f", content));
    EXPECT_TRUE(ReplaceFile("./g", content));
    EXPECT_TRUE(ReplaceFile("sub/../sub/h", content));
    EXPECT_EQ(TextOf("f"), content);
    EXPECT_EQ(TextOf("g"), content);
    EXPECT_EQ(TextOf("sub/h"), content);
  }
  fs::current_path(before);
  EXPECT_EQ(NamesIn(dir.path()), (std::set<std::string>{"f", "g", "sub"}));
  EXPECT_EQ(NamesIn(dir.path() / "sub"), std::set<std::string>{"h"});
}

TEST(ReplaceFile, LeavesItsNeighbours) {
  const TempDir dir;
  const std::set<std::string> neighbours = {"f.tmp", "f~",    "f.new", "f.bak", ".f.tmp", "f0",
                                            "f.1",   "f-tmp", "tmp",   ".f",    "f.part", ".f.swp"};
  for (const std::string& name : neighbours) dir.Write(name, BytesOf(name));
  ASSERT_TRUE(ReplaceFile(dir.File("f"), "content"));
  ASSERT_TRUE(ReplaceFile(dir.File("f"), "more"));
  std::set<std::string> expected = neighbours;
  expected.insert("f");
  EXPECT_EQ(NamesIn(dir.path()), expected);
  for (const std::string& name : neighbours) EXPECT_EQ(TextOf(dir.File(name)), name);
}

TEST(ReplaceFile, RefusesAMissingFolder) {
  const TempDir dir;
  const std::string file = dir.Write("f", BytesOf("x"));
  EXPECT_FALSE(ReplaceFile(dir.File("missing/f"), "new"));
  EXPECT_FALSE(ReplaceFile(file + "/g", "new")) << "a file is no folder";
  EXPECT_FALSE(ReplaceFile("", "new"));
  EXPECT_FALSE(ReplaceFile(AFilePath(), "new"));
  EXPECT_EQ(NamesIn(dir.path()), std::set<std::string>{"f"});
  EXPECT_EQ(TextOf(file), "x");
}

TEST(ReplaceFile, RefusesAFolderInThePlace) {
  const TempDir dir;
  fs::create_directory(dir.path() / "full");
  dir.Write("full/kept", BytesOf("x"));
  fs::create_directory(dir.path() / "empty");
  for (const char* name : {"full", "empty", "full/", "empty/", ".", "full/..", "empty/."}) {
    EXPECT_FALSE(ReplaceFile(dir.File(name), "new")) << name;
  }
  EXPECT_EQ(NamesIn(dir.path()), (std::set<std::string>{"empty", "full"}));
  EXPECT_TRUE(NamesIn(dir.path() / "empty").empty());
  EXPECT_EQ(NamesIn(dir.path() / "full"), std::set<std::string>{"kept"});
}

TEST(ReplaceFile, RefusesAPipeAndASocketWithoutWaiting) {
  const TempDir dir;
  const std::string pipe = dir.File("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_FALSE(ReplaceFile(pipe, "new"));
  EXPECT_TRUE(fs::is_fifo(pipe));

  const fs::path before = fs::current_path();
  fs::current_path(dir.path());  // the path of a socket must be short
  const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, "s", 2);
  ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  EXPECT_FALSE(ReplaceFile("s", "new"));
  EXPECT_TRUE(fs::is_socket("s"));
  ::close(socket);
  fs::current_path(before);
  EXPECT_EQ(NamesIn(dir.path()), (std::set<std::string>{"pipe", "s"}));
}

// Links.

TEST(ReplaceFile, ReplacesWhatALinkNames) {
  const TempDir dir;
  fs::create_directory(dir.path() / "far");
  const std::string target = dir.Write("far/target", BytesOf("old"));
  fs::create_symlink("far/target", dir.path() / "relative");
  fs::create_symlink(target, dir.path() / "absolute");
  fs::create_symlink("relative", dir.path() / "chain");
  fs::create_directory_symlink("far", dir.path() / "folder");
  for (const char* name : {"relative", "absolute", "chain", "folder/target"}) {
    EXPECT_TRUE(ReplaceFile(dir.File(name), name));
    EXPECT_EQ(TextOf(target), name);
    EXPECT_FALSE(fs::is_symlink(target));
  }
  EXPECT_EQ(fs::read_symlink(dir.path() / "relative"), "far/target");
  EXPECT_EQ(fs::read_symlink(dir.path() / "absolute"), target);
  EXPECT_EQ(fs::read_symlink(dir.path() / "chain"), "relative");
  EXPECT_EQ(NamesIn(dir.path()),
            (std::set<std::string>{"absolute", "chain", "far", "folder", "relative"}));
  EXPECT_EQ(NamesIn(dir.path() / "far"), std::set<std::string>{"target"});
}

TEST(ReplaceFile, CreatesWhatADanglingLinkNames) {
  const TempDir dir;
  fs::create_directory(dir.path() / "far");
  fs::create_symlink("far/new", dir.path() / "link");
  fs::create_symlink("link", dir.path() / "chain");
  EXPECT_TRUE(ReplaceFile(dir.File("chain"), "content"));
  EXPECT_EQ(fs::read_symlink(dir.path() / "chain"), "link");
  EXPECT_EQ(fs::read_symlink(dir.path() / "link"), "far/new");
  EXPECT_EQ(TextOf(dir.File("far/new")), "content");
  EXPECT_EQ(NamesIn(dir.path() / "far"), std::set<std::string>{"new"});
  EXPECT_EQ(NamesIn(dir.path()), (std::set<std::string>{"chain", "far", "link"}));
}

TEST(ReplaceFile, RefusesLinksThatLeadNowhere) {
  const TempDir dir;
  fs::create_symlink("circle2", dir.path() / "circle1");
  fs::create_symlink("circle1", dir.path() / "circle2");
  fs::create_symlink("self", dir.path() / "self");
  fs::create_symlink("missing/f", dir.path() / "lost");
  fs::create_directory(dir.path() / "folder");
  fs::create_symlink("folder", dir.path() / "to-folder");
  ASSERT_EQ(::mkfifo(dir.File("pipe").c_str(), 0600), 0);
  fs::create_symlink("pipe", dir.path() / "to-pipe");
  const std::set<std::string> before = NamesIn(dir.path());
  for (const char* name : {"circle1", "circle2", "self", "lost", "to-folder", "to-pipe"}) {
    EXPECT_FALSE(ReplaceFile(dir.File(name), "new")) << name;
    EXPECT_TRUE(fs::is_symlink(dir.path() / name)) << name;
  }
  EXPECT_EQ(NamesIn(dir.path()), before);
  EXPECT_TRUE(NamesIn(dir.path() / "folder").empty());
}

// Permissions.

TEST(ReplaceFile, KeepsPermissions) {
  const TempDir dir;
  fs::create_symlink("f", dir.path() / "link");
  for (const mode_t mode : {0600u, 0640u, 0644u, 0660u, 0666u, 0700u, 0755u, 0602u}) {
    const std::string path = dir.Write("f", BytesOf("old"));
    ASSERT_EQ(::chmod(path.c_str(), mode), 0);
    EXPECT_TRUE(ReplaceFile(path, "new"));
    EXPECT_EQ(ModeOf(path), mode);
    EXPECT_TRUE(ReplaceFile(dir.File("link"), "newer"));
    EXPECT_EQ(ModeOf(path), mode) << "through a link";
    EXPECT_EQ(TextOf(path), "newer");
    fs::remove(path);
  }
}

TEST(ReplaceFile, GivesANewFileThePermissionsOfAnyNewFile) {
  const TempDir dir;
  for (const mode_t mask : {022u, 077u, 002u}) {
    const mode_t before = ::umask(mask);
    const std::string ordinary = dir.Write("ordinary", BytesOf("x"));
    EXPECT_TRUE(ReplaceFile(dir.File("new"), "x"));
    ::umask(before);
    EXPECT_EQ(ModeOf(dir.File("new")), ModeOf(ordinary));
    fs::remove(ordinary);
    fs::remove(dir.File("new"));
  }
}

TEST(ReplaceFile, NeverShowsAPrivateFileToOthers) {
  // The new content must not lie open under another name while the file is being written.
  const TempDir dir;
  const std::string path = dir.Write("f", BytesOf("old"));
  ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
  const mode_t mask = ::umask(0);
  std::atomic<bool> done = false;
  int open = 0;
  std::thread watcher([&] {
    while (!done) {
      std::error_code error;
      for (const auto& entry : fs::directory_iterator(dir.path(), error)) {
        struct stat status = {};
        if (::stat(entry.path().c_str(), &status) != 0) continue;
        open += (status.st_mode & 077) != 0 && status.st_size > 0;
      }
    }
  });
  const std::string content(1 << 20, 's');
  for (int i = 0; i < 40; ++i) EXPECT_TRUE(ReplaceFile(path, content));
  done = true;
  watcher.join();
  ::umask(mask);
  EXPECT_EQ(open, 0);
}

TEST(ReplaceFile, KeepsTheOwnerWhereThatIsAllowed) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  const TempDir dir;
  const std::string path = dir.Write("f", BytesOf("old"));
  ASSERT_EQ(::chown(path.c_str(), kNobody, kNobody), 0);
  ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
  ASSERT_TRUE(ReplaceFile(path, "new"));
  struct stat status = {};
  ASSERT_EQ(::stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, kNobody);
  EXPECT_EQ(status.st_gid, kNobody);
  EXPECT_EQ(status.st_mode & 07777, 0640u);
}

/// What `run` says, in a process that is not root's.
bool AsNobody(const std::function<bool()>& run) {
  const pid_t child = ::fork();
  if (child == 0) {
    if (::geteuid() == 0 && (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)) ::_exit(2);
    ::_exit(run() ? 1 : 0);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) < 2) << "status " << status;
  return WIFEXITED(status) && WEXITSTATUS(status) == 1;
}

/// Gives a file or folder to whom AsNobody stands for.
void GiveToNobody(const std::string& path, mode_t mode) {
  if (::geteuid() == 0) {
    ASSERT_EQ(::chown(path.c_str(), kNobody, kNobody), 0);
  }
  ASSERT_EQ(::chmod(path.c_str(), mode), 0);
}

struct Owner {
  uid_t user;
  gid_t group;
};
constexpr Owner kColleague = {30002, 30002};
constexpr gid_t kTeam = 40000;

/// What `run` says, in a process of a colleague who belongs to a team.
bool AsColleague(const std::function<bool()>& run) {
  const pid_t child = ::fork();
  if (child == 0) {
    const bool is = ::setgroups(1, &kTeam) == 0 && ::setgid(kColleague.group) == 0 &&
                    ::setuid(kColleague.user) == 0;
    ::_exit(!is ? 2 : run() ? 1 : 0);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) < 2) << "status " << status;
  return WIFEXITED(status) && WEXITSTATUS(status) == 1;
}

TEST(ReplaceFile, KeepsTheGroupForWhomeverMayNotGiveFilesAway) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  const TempDir dir;
  const fs::path before = fs::current_path();
  fs::current_path(dir.path());  // the folders above may be closed to others
  ASSERT_EQ(::chmod(".", 0777), 0);
  struct Case {
    gid_t group;
    mode_t mode;
    gid_t groupThen;
    mode_t modeThen;
  };
  // A colleague's own group may do what everybody may, where the file's cannot be given.
  for (const Case& c :
       {Case{kTeam, 0660, kTeam, 0660}, Case{kTeam, 02674, kTeam, 0674},
        Case{kNobody, 0666, kColleague.group, 0666}, Case{kNobody, 0676, kColleague.group, 0666},
        Case{kNobody, 0646, kColleague.group, 0646}}) {
    SCOPED_TRACE(::testing::Message() << c.group << ' ' << std::oct << c.mode);
    dir.Write("f", BytesOf("old"));
    ASSERT_EQ(::chown("f", 30001, c.group), 0);
    ASSERT_EQ(::chmod("f", c.mode), 0);
    EXPECT_TRUE(AsColleague([] { return ReplaceFile("f", "new"); }));
    struct stat status = {};
    ASSERT_EQ(::stat("f", &status), 0);
    EXPECT_EQ(TextOf("f"), "new");
    EXPECT_EQ(status.st_uid, kColleague.user);
    EXPECT_EQ(status.st_gid, c.groupThen);
    EXPECT_EQ(status.st_mode & 07777, c.modeThen);
    fs::remove("f");
  }
  fs::current_path(before);
}

#if defined(__linux__)
constexpr const char* kAccessList = "system.posix_acl_access";

/// An access list in the form of the system: version 2, then tag, permissions and id of each entry.
Bytes AccessList(unsigned char ofUser, unsigned char ofGroup, unsigned char mask) {
  Bytes list = {2, 0, 0, 0};
  const auto add = [&](unsigned char tag, unsigned char permissions, std::uint32_t id) {
    for (const unsigned int byte : {unsigned{tag}, 0u, unsigned{permissions}, 0u, id & 255,
                                    id >> 8 & 255, id >> 16 & 255, id >> 24}) {
      list.push_back(static_cast<unsigned char>(byte));
    }
  };
  constexpr std::uint32_t kNone = 0xFFFFFFFF;
  add(0x01, 6, kNone);      // the owner
  add(0x02, ofUser, 1234);  // a user by number
  add(0x04, ofGroup, kNone);
  add(0x10, mask, kNone);
  add(0x20, 0, kNone);  // all others
  return list;
}

/// An attribute of a file; none where it has none.
Bytes AttributeOf(const std::string& path, const char* name) {
  Bytes value(1000);
  const ssize_t length = ::getxattr(path.c_str(), name, value.data(), value.size());
  value.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
  return value;
}

bool SetAttribute(const std::string& path, const char* name, const Bytes& value) {
  return ::setxattr(path.c_str(), name, value.data(), value.size(), 0) == 0;
}

TEST(ReplaceFile, KeepsAccessListsAndTheAttributesOfUsers) {
  const TempDir dir;
  const std::string path = dir.Write("f", BytesOf("old"));
  const Bytes list = AccessList(6, 0, 6);
  const Bytes note = BytesOf("measured on Monday");
  if (!SetAttribute(path, kAccessList, list) || !SetAttribute(path, "user.note", note)) {
    GTEST_SKIP() << "the file system has no access lists, or no attributes";
  }
  const mode_t mode = ModeOf(path);
  EXPECT_EQ(mode, 0660u);  // the mask stands for the group
  ASSERT_TRUE(ReplaceFile(path, "new"));
  EXPECT_EQ(TextOf(path), "new");
  EXPECT_EQ(AttributeOf(path, kAccessList), list);
  EXPECT_EQ(AttributeOf(path, "user.note"), note);
  EXPECT_EQ(ModeOf(path), mode);
}

TEST(ReplaceFile, GivesNoAccessThatOnlyNewFilesOfTheFolderHave) {
  const TempDir dir;
  const std::string path = dir.Write("f", BytesOf("old"));
  ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
  if (!SetAttribute(dir.path().string(), "system.posix_acl_default", AccessList(7, 7, 7))) {
    GTEST_SKIP() << "the file system has no access lists";
  }
  ASSERT_TRUE(ReplaceFile(path, "new"));
  EXPECT_EQ(AttributeOf(path, kAccessList), Bytes());
  EXPECT_EQ(ModeOf(path), 0640u);
  // One that was not there has what the folder gives.
  ASSERT_TRUE(ReplaceFile(dir.File("g"), "new"));
  EXPECT_NE(AttributeOf(dir.File("g"), kAccessList), Bytes());
}
#endif

TEST(ReplaceFile, RefusesAFileThatMayNotBeWritten) {
  const TempDir dir;
  GiveToNobody(dir.path().string(), 0700);
  const fs::path before = fs::current_path();
  fs::current_path(dir.path());  // the folders above may be closed to others
  dir.Write("f", BytesOf("old"));
  GiveToNobody("f", 0644);
  EXPECT_TRUE(AsNobody([] { return ReplaceFile("f", "writable"); }));
  EXPECT_EQ(TextOf("f"), "writable");
  fs::create_symlink("f", "link");
  for (const mode_t mode : {0444u, 0400u, 0555u}) {
    ASSERT_EQ(::chmod("f", mode), 0);
    EXPECT_FALSE(AsNobody([] { return ReplaceFile("f", "new"); }));
    EXPECT_FALSE(AsNobody([] { return ReplaceFile("link", "new"); }));
    EXPECT_EQ(ModeOf("f"), mode);
    EXPECT_EQ(TextOf("f"), "writable");
  }
  EXPECT_EQ(NamesIn("."), (std::set<std::string>{"f", "link"}));
  fs::current_path(before);
}

TEST(ReplaceFile, RefusesAFolderThatMayNotBeWritten) {
  const TempDir dir;
  const fs::path before = fs::current_path();
  fs::current_path(dir.path());
  dir.Write("f", BytesOf("old"));
  GiveToNobody("f", 0644);
  GiveToNobody(dir.path().string(), 0555);
  EXPECT_FALSE(AsNobody([] { return ReplaceFile("f", "new"); }));
  EXPECT_FALSE(AsNobody([] { return ReplaceFile("g", "new"); }));
  ASSERT_EQ(::chmod(".", 0755), 0);
  EXPECT_EQ(TextOf("f"), "old");
  EXPECT_EQ(NamesIn("."), std::set<std::string>{"f"});
  fs::current_path(before);
}

// Every call in turn, every kind of fault.

TEST(ReplaceFile, AFailureLeavesTheOldFileAndNothingElse) {
  const int handles = OpenHandles();
  for (const Fault fault : kFaults) {
    int failures = 0;
    bool reached = true;
    for (std::size_t which = 0; reached && which < 100; ++which) {
      SCOPED_TRACE(::testing::Message() << "fault " << static_cast<int>(fault) << " at " << which);
      const TempDir dir;
      const std::string path = dir.Write("f", BytesOf("the old content"));
      ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
      bool done = false;
      {
        const FaultAt at(which, fault);
        done = ReplaceFile(path, "the new content, a longer one");
        reached = FaultAt::Reached();
      }
      EXPECT_EQ(TextOf(path), done ? "the new content, a longer one" : "the old content");
      EXPECT_EQ(ModeOf(path), 0640u);
      EXPECT_EQ(NamesIn(dir.path()), std::set<std::string>{"f"});
      EXPECT_EQ(OpenHandles(), handles);
      failures += !done;
      EXPECT_TRUE(done || reached);
    }
    EXPECT_FALSE(reached);
    const bool harmless = fault == Fault::Short || fault == Fault::Interrupted;
    EXPECT_EQ(failures == 0, harmless) << "fault " << static_cast<int>(fault);
  }
}

TEST(ReplaceFile, AFailedCreationLeavesNoFile) {
  const int handles = OpenHandles();
  for (const Fault fault : kFaults) {
    bool reached = true;
    for (std::size_t which = 0; reached && which < 100; ++which) {
      SCOPED_TRACE(::testing::Message() << "fault " << static_cast<int>(fault) << " at " << which);
      const TempDir dir;
      fs::create_symlink("target", dir.path() / "link");
      bool done = false;
      {
        const FaultAt at(which, fault);
        done = ReplaceFile(dir.File("link"), "content");
        reached = FaultAt::Reached();
      }
      const std::set<std::string> whole = {"link", "target"};
      EXPECT_EQ(NamesIn(dir.path()), done ? whole : std::set<std::string>{"link"});
      if (done) {
        EXPECT_EQ(TextOf(dir.File("target")), "content");
      }
      EXPECT_EQ(OpenHandles(), handles);
    }
    EXPECT_FALSE(reached);
  }
}

TEST(ReplaceFile, ReportsEveryFailureBehindTheWriting) {
  // The calls from the last byte on: that they end well is what makes the new file whole.
  std::vector<CallKind> kinds;
  {
    const TempDir dir;
    const std::string path = dir.Write("f", BytesOf("old"));
    const CallLog log;
    std::size_t before = 0;
    ASSERT_TRUE(ReplaceFile(path, [&](AFile& file) {
      const bool done = file.write("new", 3) == 3;
      before = log.calls().size();
      return done;
    }));
    kinds = log.Kinds();
    kinds.erase(kinds.begin(), kinds.begin() + static_cast<std::ptrdiff_t>(before));
  }
  const auto rename = std::find(kinds.begin(), kinds.end(), CallKind::Rename);
  ASSERT_NE(rename, kinds.end());
  ASSERT_NE(std::find(kinds.begin(), rename, CallKind::Sync), rename);
  ASSERT_NE(std::find(kinds.begin(), rename, CallKind::Close), rename);
  auto kind = kinds.begin();
  for (std::size_t which = 0; kind <= rename; ++which) {
    ASSERT_LT(which, 100u);
    const TempDir dir;
    const std::string path = dir.Write("f", BytesOf("old"));
    bool early = true;
    const FaultAt at(which, Fault::Error);
    const bool done = ReplaceFile(path, [&](AFile& file) {
      const bool written = file.write("new", 3) == 3;
      early = FaultAt::Reached();
      return written;
    });
    if (early) continue;  // the fault came before or within the writing
    EXPECT_FALSE(done) << "kind " << static_cast<int>(*kind);
    EXPECT_EQ(TextOf(path), "old");
    ++kind;
  }
}

TEST(ReplaceFile, LeavesNothingWhenTheDiskIsFull) {
  const TempDir dir;
  const std::string path = dir.Write("f", BytesOf("old"));
  bool failed = false;
  bool reached = true;
  for (std::size_t which = 0; reached; ++which) {
    const FaultAt at(which, Fault::FullDisk);
    if (!ReplaceFile(path, std::string(100000, 'n'))) {
      failed = true;
      EXPECT_EQ(TextOf(path), "old");
    }
    reached = FaultAt::Reached();
    EXPECT_EQ(NamesIn(dir.path()), std::set<std::string>{"f"});
    WriteFile(path, BytesOf("old"));
  }
  EXPECT_TRUE(failed);
}

}  // namespace
