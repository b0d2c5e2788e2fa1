#include "platform/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

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

TEST_F(PosixFiles, AreLeftAloneWhenTheyCannotBeReplaced) {
  Write("readonly", "old");
  fs::permissions(Native("readonly"), fs::perms(0444));
  fs::create_directory(Native("folder"));
  ASSERT_EQ(mkfifo(Native("pipe").c_str(), 0600), 0);
  const std::pair<std::string_view, std::u16string> rows[] = {
      {"readonly", u"Permission denied"},
      {"folder", u"Is a directory"},
      {"pipe", u"Invalid argument"},
  };
  for (const auto& [name, reason] : rows)
    EXPECT_EQ(SaveFile(Path(name), "new").Message(), u"Cannot write file " + Path(name) + u". " + reason);
  EXPECT_EQ(*ReadFile(Path("readonly")), "old");
  EXPECT_EQ(EntryCount(), 3) << "a temporary file was left behind";
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
