#include "foundation/platform/Files.h"
#include "foundation/platform/Posix.h"
#include "tests/support/TemporaryFolder.h"

#include <array>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <span>
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
  const std::pair<const char*, const char*> kept[] = {
      {"another name", ".kx-abcdefghij.tmp"},      {"letters that none has", ".kx-ABCDEFGHIJKL.tmp"},
      {"its owner lives", ".kx-held00000000.tmp"}, {"somebody else's", ".kx-foreign00000.tmp"},
      {"a link", ".kx-link00000000.tmp"},          {"a pipe", ".kx-pipe00000000.tmp"},
  };
  for (const auto& [name, file] : std::span(kept).first(4))
    Write(file, "x");
  fs::create_symlink("elsewhere", Native(kept[4].second));
  ASSERT_EQ(mkfifo(Native(kept[5].second).c_str(), 0600), 0);
  const posix::Descriptor held(open(Native(kept[2].second).c_str(), O_RDONLY));
  ASSERT_EQ(flock(held.Get(), LOCK_EX), 0);
  const bool isForeign = chown(Native(kept[3].second).c_str(), 12345, static_cast<gid_t>(-1)) == 0;
  Write(".kx-abcdefghij12.tmp", "half of a");
  ASSERT_TRUE(CheckSaveFile(Path("made.txt")));
  EXPECT_TRUE(fs::exists(Native(".kx-abcdefghij12.tmp"))) << "a check changes nothing";
  ASSERT_TRUE(SaveFile(Path("made.txt"), "x"));
  EXPECT_FALSE(fs::exists(Native(".kx-abcdefghij12.tmp")));
  for (const auto& [name, file] : kept)
    EXPECT_TRUE(fs::is_symlink(Native(file)) || fs::exists(Native(file)) ||
                (file == kept[3].second && !isForeign))
        << name;
}

TEST_F(PosixFiles, AreRefusedByNameAndReason) {
  const std::u16string file = Write("file.txt"), pipe = Path("pipe"), folder = Path();
  ASSERT_EQ(mkfifo(Native("pipe").c_str(), 0600), 0);
  const std::pair<std::u16string, std::u16string_view> rows[] = {
      {folder, u"Is a directory"},
      {pipe, u"It is not a regular file"},
      {u"\\\\server\\share\\a", u"Network paths are not available on this system"},
      {file + std::u16string(1, u'\0') + u".sln", u"Invalid argument"},
  };
  for (const auto& [path, reason] : rows)
    EXPECT_EQ(ReadFile(path).Message(), (u"Cannot open file " + path + u". ").append(reason));
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

std::string Attribute(const std::string& file, const char* name) {
  std::array<char, 256> value{};
  const ssize_t size = getxattr(file.c_str(), name, value.data(), value.size());
  return size < 0 ? "none" : std::string(value.data(), static_cast<std::size_t>(size));
}

struct stat InfoOf(const std::string& file) {
  struct stat info {};
  EXPECT_EQ(stat(file.c_str(), &info), 0);
  return info;
}

// What whoever saves or copies a file must find again, row by row.
struct TTrait {
  const char* Name;
  std::function<bool(const std::string& file)> Give; // False: this file system or user cannot
  std::function<std::string(const std::string& file)> Show;
};

const auto Traits = std::to_array<TTrait>({
    {"an attribute", [](const auto& file) { return setxattr(file.c_str(), "user.note", "mine", 4, 0) == 0; },
     [](const auto& file) { return Attribute(file, "user.note"); }},
    {"an access control list",
     [](const auto& file) {
       const std::string list = AccessListFor(4711);
       return setxattr(file.c_str(), "system.posix_acl_access", list.data(), list.size(), 0) == 0;
     },
     [](const auto& file) { return Attribute(file, "system.posix_acl_access"); }},
    {"no list where the folder gives one to each new file",
     [](const auto& file) {
       const std::string list = AccessListFor(4711);
       return setxattr(fs::path(file).parent_path().c_str(), "system.posix_acl_default", list.data(),
                       list.size(), 0) == 0;
     },
     [](const auto& file) { return Attribute(file, "system.posix_acl_access"); }},
    {"another owner", [](const auto& file) { return chown(file.c_str(), 4711, 4712) == 0; },
     [](const auto& file) {
       return std::to_string(InfoOf(file).st_uid) + ":" + std::to_string(InfoOf(file).st_gid);
     }},
    {"a group other than the folder's",
     [](const auto& file) {
       const std::string folder = fs::path(file).parent_path();
       return chown(folder.c_str(), static_cast<uid_t>(-1), 4713) == 0 && chmod(folder.c_str(), 02775) == 0;
     },
     [](const auto& file) { return std::to_string(InfoOf(file).st_gid); }},
    {"a mode with special bits", [](const auto& file) { return chmod(file.c_str(), 06751) == 0; },
     [](const auto& file) { return std::to_string(InfoOf(file).st_mode); }},
    {"a mode for its owner alone", [](const auto& file) { return chmod(file.c_str(), 0600) == 0; },
     [](const auto& file) { return std::to_string(InfoOf(file).st_mode); }},
});

TEST_F(PosixFiles, KeepWhatTheyHaveBesideTheirContent) {
  std::string missing;
  for (std::size_t i = 0; i < Traits.size(); ++i) {
    const std::string name = std::to_string(i) + "/file", copy = std::to_string(i) + "/copy";
    SCOPED_TRACE(Traits[i].Name);
    Write(name, "old");
    chmod(Native(name).c_str(), 0664);
    if (!Traits[i].Give(Native(name))) {
      missing.append(missing.empty() ? "" : ", ").append(Traits[i].Name);
      continue;
    }
    const std::string before = Traits[i].Show(Native(name));
    ASSERT_TRUE(SaveFile(Path(name), "new"));
    EXPECT_EQ(*ReadFile(Path(name)), "new");
    EXPECT_EQ(Traits[i].Show(Native(name)), before) << "saved";
    EXPECT_TRUE(*CopyToNewFile(Path(name), Path(copy)));
    EXPECT_EQ(Traits[i].Show(Native(copy)), before) << "copied";
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
  const struct {
    const char* Name;
    uid_t Owner;
    gid_t Group;
    mode_t Mode;
    std::u16string_view Reason; // empty: it is written
  } rows[] = {
      {"own", 4711, 4711, 0664, u""},
      {"of a group of mine", 4711, 4712, 0664, u""},
      {"of another group", 4711, 4713, 0664,
       u"It belongs to a group that this user is not in, which would lose it"},
      {"of a colleague", 4714, 4712, 0664, u"It belongs to another user, and writing it would take it over"},
      {"for everybody", 0, 0, 0666, u"It belongs to another user, and writing it would take it over"},
  };
  fs::permissions(Native(""), fs::perms(0777));
  for (const auto& row : rows) {
    SCOPED_TRACE(row.Name);
    Write(row.Name, "old");
    ASSERT_TRUE(chown(Native(row.Name).c_str(), row.Owner, row.Group) == 0 &&
                chmod(Native(row.Name).c_str(), row.Mode) == 0);
    const TOtherUser other({4712});
    EXPECT_EQ(static_cast<bool>(CheckSaveFile(Path(row.Name))), row.Reason.empty());
    const Status saved = SaveFile(Path(row.Name), "new");
    const std::u16string message = saved ? std::u16string() : saved.Message();
    EXPECT_EQ(message, row.Reason.empty()
                           ? std::u16string()
                           : (u"Cannot write file " + Path(row.Name) + u". ").append(row.Reason));
    EXPECT_EQ(*ReadFile(Path(row.Name)), row.Reason.empty() ? "new" : "old");
    const auto info = InfoOf(Native(row.Name));
    EXPECT_TRUE(info.st_uid == row.Owner && info.st_gid == row.Group && (info.st_mode & 07777) == row.Mode);
    // A copy is one's own; what it could not keep is for nobody else.
    const std::string copy = std::string(row.Name) + ".copy";
    EXPECT_TRUE(*CopyToNewFile(Path(row.Name), Path(copy)));
    EXPECT_EQ(InfoOf(Native(copy)).st_mode & 0777, row.Reason.empty() ? row.Mode : mode_t{0600});
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

TEST_F(PosixFiles, AreLeftAloneWhenTheyCannotBeReplaced) {
  Write("readonly", "old");
  Write("twin", "old");
  fs::create_hard_link(Native("twin"), Native("folder-twin"));
  fs::permissions(Native("readonly"), fs::perms(0444));
  fs::create_directory(Native("folder"));
  ASSERT_EQ(mkfifo(Native("pipe").c_str(), 0600), 0);
  const std::pair<std::string_view, std::u16string> rows[] = {
      {"readonly", u"Permission denied"},
      {"folder", u"Is a directory"},
      {"pipe", u"Invalid argument"},
      {"twin", u"It has 2 names (hard links), and only one of them would lead to the new content"},
  };
  for (const auto& [name, reason] : rows)
    EXPECT_EQ(SaveFile(Path(name), "new").Message(), u"Cannot write file " + Path(name) + u". " + reason);
  EXPECT_EQ(*ReadFile(Path("readonly")), "old");
  EXPECT_EQ(*ReadFile(Path("folder-twin")), "old");
  EXPECT_EQ(EntryCount(), 5) << "a temporary file was left behind";
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
