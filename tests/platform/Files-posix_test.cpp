#include "foundation/platform/Files.h"
#include "foundation/platform/Posix.h"
#include "tests/support/TemporaryFolder.h"

#include <array>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace kx::platform {
namespace {

namespace fs = std::filesystem;

class PosixFiles : public testing::Test, protected tests::TTemporaryFolder {
protected:
  auto EntryCount() const { return std::distance(fs::directory_iterator(Native("")), {}); }
};

TEST_F(PosixFiles, PreferTheExactName) {
  Write("twin.cs");
  Write("TWIN.cs");
  EXPECT_EQ(ResolveExisting(Path("twin.cs")), Path("twin.cs"));
  EXPECT_EQ(ResolveExisting(Path("Twin.cs")), Path("TWIN.cs")) << "of several the smallest";
  EXPECT_NE(*ReadFile(u"/proc/self/status"), "") << "its size reads as 0";
}

TEST_F(PosixFiles, AreReachedThroughMappedDrives) {
  Write("Src/a.cs");
  EXPECT_EQ(ReadFile(u"Q:\\a.cs").Message(), u"Cannot open file Q:\\a.cs. No folder stands for drive Q:");
  MapDrive(u'q', Path());
  EXPECT_TRUE(FileExists(u"Q:\\src\\A.CS"));
  EXPECT_EQ(ResolveForWriting(u"q:/Src/b.cs"), Path("Src/b.cs"));
  FileLookup lookup;
  EXPECT_TRUE(lookup.FileExists(u"Q:\\src\\a.cs"));
  MapDrive(u'Q', u"");
  EXPECT_FALSE(FileExists(u"Q:\\Src\\a.cs"));
}

TEST_F(PosixFiles, SavingRemovesWhatKilledProgramsLeftInTheFolder) {
  for (const char* file : {"abcdefghij", "ABCDEFGHIJKL", "held00000000", "foreign00000", "abcdefghij12"})
    Write(std::string(".kx-") + file + ".tmp", "half of a file");
  fs::create_symlink("elsewhere", Native(".kx-link00000000.tmp"));
  ASSERT_EQ(mkfifo(Native(".kx-pipe00000000.tmp").c_str(), 0600), 0);
  const posix::Descriptor held(open(Native(".kx-held00000000.tmp").c_str(), O_RDONLY));
  ASSERT_EQ(flock(held.Get(), LOCK_EX), 0) << "its owner lives";
  const bool isForeign = chown(Native(".kx-foreign00000.tmp").c_str(), 12345, static_cast<gid_t>(-1)) == 0;
  ASSERT_TRUE(CheckSaveFile(Path("made.txt")));
  EXPECT_EQ(EntryCount(), 7) << "a check changes nothing";
  ASSERT_TRUE(SaveFile(Path("made.txt"), "x"));
  EXPECT_FALSE(fs::exists(Native(".kx-abcdefghij12.tmp")));
  EXPECT_EQ(EntryCount(), isForeign ? 7 : 6) << "what is of another kind or somebody else's stays";
}

TEST_F(PosixFiles, AreReplacedWithTheirModeAndThroughLinks) {
  Write("Target.txt", "old content that is longer");
  fs::permissions(Native("Target.txt"), fs::perms(0640));
  fs::create_directory(Native("sub"));
  fs::create_symlink("../Target.txt", Native("sub/link"));
  fs::create_symlink("made.txt", Native("sub/dangling"));
  ASSERT_TRUE(SaveFile(Path("sub/link"), "new"));
  EXPECT_EQ(*ReadFile(Path("Target.txt")), "new");
  EXPECT_TRUE(fs::is_symlink(Native("sub/link")));
  EXPECT_EQ(fs::status(Native("Target.txt")).permissions(), fs::perms(0640));
  ASSERT_TRUE(SaveFile(Path("SUB/dangling"), "made"));
  EXPECT_EQ(*ReadFile(Path("sub/made.txt")), "made");
  ASSERT_TRUE(SaveFile(Path("target.TXT"), ""));
  EXPECT_EQ(*ReadFile(Path("Target.txt")), "");
  EXPECT_EQ(EntryCount(), 2) << "another file was made, or a temporary one left behind";
}

// An access control list as the system stores it: user::rw-, user:<id>:rw-, group::---, mask::rw-,
// other::---.
std::string AccessListFor(std::uint32_t user) {
  struct TEntry {
    std::uint16_t Tag, Rights;
    std::uint32_t Id;
  };
  constexpr std::uint32_t nobody = 0xFFFFFFFF;
  const std::array<TEntry, 5> entries{
      {{0x01, 6, nobody}, {0x02, 6, user}, {0x04, 0, nobody}, {0x10, 6, nobody}, {0x20, 0, nobody}}};
  std::string list("\2\0\0\0", 4);
  list.resize(4 + sizeof entries);
  std::memcpy(list.data() + 4, entries.data(), sizeof entries);
  return list;
}

struct stat InfoOf(const std::string& file) {
  struct stat info {};
  EXPECT_EQ(stat(file.c_str(), &info), 0);
  return info;
}

// What whoever saves or copies a file must find again: owner, group, mode, a note and the access list.
std::string TraitsOf(const std::string& file) {
  const auto info = InfoOf(file);
  std::string traits;
  for (const auto number : {info.st_uid, info.st_gid, info.st_mode})
    traits += std::to_string(number) + " ";
  for (const char* name : {"user.note", "system.posix_acl_access"}) {
    std::array<char, 256> value{};
    const ssize_t size = getxattr(file.c_str(), name, value.data(), value.size());
    traits += size < 0 ? "none " : std::string(value.data(), static_cast<std::size_t>(size));
  }
  return traits;
}

TEST_F(PosixFiles, KeepWhatTheyHaveBesideTheirContent) {
  constexpr uid_t same = static_cast<uid_t>(-1);
  const std::string list = AccessListFor(4711);
  const auto set = [](const fs::path& file, const char* name, const std::string& value) {
    return setxattr(file.c_str(), name, value.data(), value.size(), 0) == 0;
  };
  // False: this file system or user cannot.
  using TGive = std::function<bool(const fs::path& file)>;
  const std::pair<const char*, TGive> rows[] = {
      {"an attribute", [&](const auto& file) { return set(file, "user.note", "mine"); }},
      {"an access control list",
       [&](const auto& file) { return set(file, "system.posix_acl_access", list); }},
      {"no list where the folder gives one to each new file",
       [&](const auto& file) { return set(file.parent_path(), "system.posix_acl_default", list); }},
      {"another owner", [](const auto& file) { return chown(file.c_str(), 4711, 4712) == 0; }},
      {"a group other than the folder's",
       [](const auto& file) {
         const fs::path folder = file.parent_path();
         return chown(folder.c_str(), same, 4713) == 0 && chmod(folder.c_str(), 02775) == 0;
       }},
      {"a mode with special bits", [](const auto& file) { return chmod(file.c_str(), 06751) == 0; }},
      {"a mode for its owner alone", [](const auto& file) { return chmod(file.c_str(), 0600) == 0; }},
  };
  std::string missing;
  for (const auto& [name, give] : rows) {
    const std::string file = name + std::string("/file"), copy = name + std::string("/copy");
    Write(file, "old");
    chmod(Native(file).c_str(), 0664);
    if (!give(Native(file))) {
      missing.append(missing.empty() ? "" : ", ").append(name);
      continue;
    }
    const std::string before = TraitsOf(Native(file));
    ASSERT_TRUE(SaveFile(Path(file), "new"));
    EXPECT_EQ(*ReadFile(Path(file)), "new");
    EXPECT_EQ(TraitsOf(Native(file)), before) << "saved with " << name;
    EXPECT_TRUE(*CopyToNewFile(Path(file), Path(copy)));
    EXPECT_EQ(TraitsOf(Native(copy)), before) << "copied with " << name;
  }
  if (!missing.empty()) GTEST_SKIP() << "this file system or user cannot give a file " << missing;
}

// While it lives, this thread's effective user is another one, of some groups.
class TOtherUser {
public:
  explicit TOtherUser(std::vector<gid_t> groups) : groups_(getgroups(0, nullptr)) {
    groups_.resize(static_cast<std::size_t>(getgroups(static_cast<int>(groups_.size()), groups_.data())));
    EXPECT_EQ(setgroups(groups.size(), groups.data()), 0);
    EXPECT_TRUE(setegid(4711) == 0 && seteuid(4711) == 0);
  }
  TOtherUser(const TOtherUser&) = delete;
  TOtherUser& operator=(const TOtherUser&) = delete;
  ~TOtherUser() {
    EXPECT_TRUE(seteuid(0) == 0 && setegid(0) == 0 && setgroups(groups_.size(), groups_.data()) == 0);
  }

private:
  std::vector<gid_t> groups_;
};

TEST_F(PosixFiles, AreNotTakenOverFromOtherUsersAndGroups) {
  if (geteuid() != 0) GTEST_SKIP() << "only the superuser can be another user for a while";
  const std::u16string group = u"It belongs to a group that this user is not in, which would lose it";
  const std::u16string user = u"It belongs to another user, and writing it would take it over";
  const std::tuple<const char*, uid_t, gid_t, mode_t, std::u16string> rows[] = {
      {"own", 4711, 4711, 0664, u""},
      {"of a group of mine", 4711, 4712, 0664, u""},
      {"of another group", 4711, 4713, 0664, group},
      {"of a colleague", 4714, 4712, 0664, user},
      {"for everybody", 0, 0, 0666, user},
  };
  fs::permissions(Native(""), fs::perms(0777));
  for (const auto& [name, owner, ownersGroup, mode, reason] : rows) {
    SCOPED_TRACE(name);
    Write(name, "old");
    const std::string file = Native(name), copy = name + std::string(".copy");
    ASSERT_TRUE(chown(file.c_str(), owner, ownersGroup) == 0 && chmod(file.c_str(), mode) == 0);
    const std::string before = TraitsOf(file);
    const TOtherUser other({4712});
    EXPECT_EQ(static_cast<bool>(CheckSaveFile(Path(name))), reason.empty());
    const Status saved = SaveFile(Path(name), "new");
    EXPECT_EQ(saved ? u"" : saved.Message(),
              reason.empty() ? u"" : u"Cannot write file " + Path(name) + u". " + reason);
    EXPECT_EQ(*ReadFile(Path(name)), reason.empty() ? "new" : "old");
    EXPECT_EQ(TraitsOf(file), before);
    // A copy is one's own; what it could not keep is for nobody else.
    EXPECT_TRUE(*CopyToNewFile(Path(name), Path(copy)));
    EXPECT_EQ(InfoOf(Native(copy)).st_mode & 0777, reason.empty() ? mode : mode_t{0600});
  }
}

TEST_F(PosixFiles, AreNotReachedThroughLinksOfOthersInSharedFolders) {
  if (geteuid() != 0) GTEST_SKIP() << "only the superuser can make a link of another user";
  Write("shared/here");
  fs::permissions(Native("shared"), fs::perms(01777));
  Write("mine", "old");
  fs::create_symlink("../mine", Native("shared/link"));
  ASSERT_EQ(lchown(Native("shared/link").c_str(), 4711, 4711), 0);
  EXPECT_EQ(SaveFile(Path("shared/link"), "new").Message(),
            u"Cannot write file " + Path("shared/link") +
                u". It is a link that another user has made in a folder that everybody writes to");
  EXPECT_EQ(*ReadFile(Path("mine")), "old");
}

TEST_F(PosixFiles, AreCopiedWithTheirTimeAndNeverOverOthers) {
  Write("script.rc", "original");
  const std::array<timespec, 2> times{{{1'000'000'000, 0}, {1'100'000'000, 500'000'000}}};
  ASSERT_EQ(utimensat(AT_FDCWD, Native("script.rc").c_str(), times.data(), 0), 0);
  EXPECT_TRUE(*CopyToNewFile(Path("SCRIPT.rc"), Path("script.rc.orig")));
  EXPECT_EQ(InfoOf(Native("script.rc.orig")).st_mtim.tv_sec, 1'100'000'000);
  Write("script.rc", "stamped");
  EXPECT_FALSE(*CopyToNewFile(Path("script.rc"), Path("script.rc.orig")));
  fs::create_symlink("nowhere", Native("dangling"));
  EXPECT_FALSE(*SaveNewFile(Path("dangling"), "x")) << "something of that name is there";
  EXPECT_EQ(*ReadFile(Path("script.rc.orig")), "original");
  EXPECT_EQ(EntryCount(), 3) << "a temporary file was left behind";
}

TEST_F(PosixFiles, AreLeftAloneWhenTheyCannotBeReadOrReplaced) {
  const std::u16string readOnly = Write("readonly", "old"), twin = Write("twin", "old"), pipe = Path("pipe");
  fs::create_hard_link(Native("twin"), Native("other-twin"));
  fs::permissions(Native("readonly"), fs::perms(0444));
  ASSERT_EQ(mkfifo(Native("pipe").c_str(), 0600), 0);
  const std::tuple<std::u16string, std::u16string, std::u16string> rows[] = {
      {Path(), u"Is a directory", u"Is a directory"},
      {Path("none/x"), u"No such file or directory", u"No such file or directory"},
      {pipe, u"It is not a regular file", u"Invalid argument"},
      {readOnly, u"", u"Permission denied"},
      {twin, u"", u"It has 2 names (hard links), and only one of them would lead to the new content"},
      {u"\\\\server\\share\\a", u"Network paths are not available on this system",
       u"Network paths are not available on this system"},
      {twin + std::u16string(1, u'\0') + u".sln", u"Invalid argument", u"Invalid argument"},
  };
  for (const auto& [path, toRead, toWrite] : rows) {
    const auto read = ReadFile(path);
    EXPECT_EQ(read ? u"" : read.Message(),
              toRead.empty() ? u"" : u"Cannot open file " + path + u". " + toRead);
    EXPECT_EQ(SaveFile(path, "new").Message(), u"Cannot write file " + path + u". " + toWrite);
  }
  EXPECT_EQ(*ReadFile(readOnly) + *ReadFile(Path("other-twin")), "oldold");
  EXPECT_EQ(EntryCount(), 4) << "a temporary file was left behind";
}

TEST_F(PosixFiles, SurviveAFullDisk) {
  Write("target", "old");
  const auto previous = signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit little{4096, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &little);
  const Status status = SaveFile(Path("target"), std::string(100'000, 'x'));
  setrlimit(RLIMIT_FSIZE, &before);
  signal(SIGXFSZ, previous);
  EXPECT_EQ(status.Message(), u"Cannot write file " + Path("target") + u". File too large");
  EXPECT_EQ(*ReadFile(Path("target")), "old");
  EXPECT_EQ(EntryCount(), 1) << "the temporary file was left behind";
}

} // namespace
} // namespace kx::platform
