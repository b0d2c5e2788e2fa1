#include "tests/platform/TestFolder.h"

#include "platform/Posix.h"
#include "text/WindowsPath.h"

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kx::platform {
namespace {

namespace fs = std::filesystem;

class Files : public TestFolder {
protected:
  ~Files() override { MapDrive(u'Q', u""); }

  std::string Mode(std::string_view name) const {
    return std::to_string(static_cast<unsigned>(fs::status(Native(name)).permissions()));
  }
};

TEST_F(Files, AreFoundWithoutRegardToCaseWhenTheExactNameIsMissing) {
  Write("Src/App/Main.cs");
  Write("Src/App/twin.cs");
  Write("Src/App/TWIN.cs");
  const struct {
    std::string_view Asked;
    std::optional<std::string_view> Found;
  } rows[] = {
      {"Src/App/Main.cs", "Src/App/Main.cs"},
      {"SRC/app/MAIN.CS", "Src/App/Main.cs"},
      {"src\\app\\main.cs", "Src/App/Main.cs"},
      {"src/none/../app/./main.cs", "Src/App/Main.cs"},
      {"src/app", "Src/App"},
      {"Src/App/twin.cs", "Src/App/twin.cs"},
      {"Src/App/Twin.cs", "Src/App/TWIN.cs"}, // of several the smallest
      {"src/app/none.cs", std::nullopt},
      {"src/app/main.cs/x", std::nullopt},
  };
  for (const auto& row : rows) {
    const auto found = ResolveExisting(Path(row.Asked));
    EXPECT_EQ(found, row.Found ? std::optional(Path(*row.Found)) : std::nullopt) << row.Asked;
    EXPECT_EQ(FileExists(Path(row.Asked)), found && fs::is_regular_file(text::ToUtf8(*found))) << row.Asked;
    EXPECT_EQ(DirectoryExists(Path(row.Asked)), found && fs::is_directory(text::ToUtf8(*found))) << row.Asked;
  }
  EXPECT_EQ(ResolveForWriting(Path("src\\APP\\New\\a.cs")), Path("Src/App/New/a.cs"));
}

TEST_F(Files, AreReachedThroughMappedDrives) {
  Write("Src/a.cs");
  EXPECT_FALSE(FileExists(u"Q:\\Src\\a.cs"));
  EXPECT_EQ(ReadFile(u"Q:\\a.cs").Message(), u"Cannot open file Q:\\a.cs. No folder stands for drive Q:");
  EXPECT_FALSE(CreateDirectories(u"Q:\\new"));
  MapDrive(u'q', Path(""));
  EXPECT_TRUE(FileExists(u"Q:\\src\\A.CS"));
  EXPECT_TRUE(FileExists(u"q:/Src/a.cs"));
  EXPECT_EQ(ResolveForWriting(u"Q:\\Src\\b.cs"), Path("Src/b.cs"));
  FileLookup lookup;
  EXPECT_TRUE(lookup.FileExists(u"Q:\\src\\a.cs"));
}

TEST_F(Files, AreRefusedByNameAndReason) {
  Write("file.txt", "x");
  fs::create_directory(Native("folder"));
  ASSERT_EQ(mkfifo(Native("pipe").c_str(), 0600), 0);
  const struct {
    std::u16string Path;
    std::u16string_view Reason;
  } rows[] = {
      {Path("missing.txt"), u"No such file or directory"},
      {Path("file.txt/x"), u"Not a directory"},
      {Path("folder"), u"Is a directory"},
      {Path("pipe"), u"It is not a regular file"},
      {u"/dev/zero", u"It is not a regular file"},
      {u"\\\\server\\share\\a", u"Network paths are not available on this system"},
      {Path("file.txt") + std::u16string(1, u'\0') + u".sln", u"Invalid argument"},
      {u"", u"No such file or directory"},
  };
  for (const auto& row : rows) {
    const Result<std::string> bytes = ReadFile(row.Path);
    ASSERT_FALSE(bytes) << testing::PrintToString(row.Path);
    EXPECT_EQ(bytes.Message(),
              std::u16string(u"Cannot open file ").append(row.Path).append(u". ").append(row.Reason));
  }
}

TEST_F(Files, AreReadWholeAndInPieces) {
  std::string bytes;
  for (int i = 0; bytes.size() < 300'000; ++i)
    bytes += std::to_string(i);
  Write("big", bytes);
  Write("empty");
  EXPECT_TRUE(*ReadFile(Path("BIG")) == bytes);
  EXPECT_EQ(*ReadFile(Path("empty")), "");
  EXPECT_NE(*ReadFile(u"/proc/self/status"), "") << "its size reads as 0";

  auto reader = FileReader::Open(Path("big"));
  ASSERT_TRUE(reader);
  EXPECT_EQ(reader->Size(), bytes.size());
  for (int round = 0; round < 2; ++round) {
    std::string read;
    char block[7777];
    for (std::size_t count = 0; (count = *reader->Read(block, sizeof block)) > 0;)
      read.append(block, count);
    EXPECT_TRUE(read == bytes);
    EXPECT_TRUE(reader->Rewind());
  }
}

TEST_F(Files, AreReplacedWithTheirModeAndThroughLinks) {
  Write("Target.txt", "old content that is longer");
  fs::permissions(Native("Target.txt"), fs::perms(0640));
  fs::create_directory(Native("sub"));
  fs::create_symlink("../Target.txt", Native("sub/link"));
  fs::create_symlink("made.txt", Native("sub/dangling"));
  ASSERT_TRUE(ReplaceFile(Path("sub/link"), "new"));
  EXPECT_EQ(Read("Target.txt"), "new");
  EXPECT_TRUE(fs::is_symlink(Native("sub/link")));
  EXPECT_EQ(Mode("Target.txt"), std::to_string(0640));
  ASSERT_TRUE(ReplaceFile(Path("SUB/dangling"), "made"));
  EXPECT_EQ(Read("sub/made.txt"), "made");
  ASSERT_TRUE(ReplaceFile(Path("target.TXT"), ""));
  EXPECT_EQ(Read("Target.txt"), "");
  EXPECT_EQ(EntryCount(), 2U) << "another file was made, or a temporary one left behind";
}

TEST_F(Files, KeepTheirOwner) {
  if (geteuid() != 0) GTEST_SKIP() << "only the superuser can give files away";
  Write("theirs", "old");
  ASSERT_EQ(chown(Native("theirs").c_str(), 12345, 23456), 0);
  ASSERT_EQ(chmod(Native("theirs").c_str(), 04755), 0);
  ASSERT_TRUE(ReplaceFile(Path("theirs"), "new"));
  struct stat info {};
  ASSERT_EQ(stat(Native("theirs").c_str(), &info), 0);
  EXPECT_EQ(info.st_uid, 12345U);
  EXPECT_EQ(info.st_gid, 23456U);
  EXPECT_EQ(info.st_mode & 07777, 04755U);
}

TEST_F(Files, AreLeftAloneWhenTheyCannotBeReplaced) {
  Write("readonly", "old");
  fs::permissions(Native("readonly"), fs::perms(0444));
  fs::create_directory(Native("folder"));
  ASSERT_EQ(mkfifo(Native("pipe").c_str(), 0600), 0);
  const struct {
    std::string_view Name;
    std::u16string_view Reason;
  } rows[] = {
      {"readonly", u"Permission denied"},
      {"folder", u"Is a directory"},
      {"pipe", u"Invalid argument"},
      {"missing/file", u"No such file or directory"},
  };
  for (const auto& row : rows) {
    const Status status = ReplaceFile(Path(row.Name), "new");
    ASSERT_FALSE(status) << row.Name;
    EXPECT_EQ(status.Message(), u"Cannot write file " + Path(row.Name) + u". " + std::u16string(row.Reason));
  }
  EXPECT_EQ(Read("readonly"), "old");
  EXPECT_EQ(EntryCount(), 3U) << "a temporary file was left behind";
}

TEST_F(Files, SurviveAFullDisk) {
  Write("target", "old");
  const auto previous = signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit little{4096, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &little);
  const Status status = ReplaceFile(Path("target"), std::string(100'000, 'x'));
  setrlimit(RLIMIT_FSIZE, &before);
  signal(SIGXFSZ, previous);
  ASSERT_FALSE(status);
  EXPECT_EQ(status.Message(), u"Cannot write file " + Path("target") + u". File too large");
  EXPECT_EQ(Read("target"), "old");
  EXPECT_EQ(EntryCount(), 1U) << "the temporary file was left behind";
}

TEST_F(Files, AndFoldersAreMadeAndRemoved) {
  Write("Existing/file");
  EXPECT_TRUE(CreateDirectories(Path("existing\\a\\b")));
  EXPECT_TRUE(CreateDirectories(Path("Existing/a/b/"))) << "it is there already";
  EXPECT_TRUE(fs::is_directory(Native("Existing/a/b")));
  EXPECT_EQ(CreateDirectories(Path("Existing/file/x")).Message(),
            u"Cannot create folder " + Path("Existing/file/x") + u". Not a directory");
  EXPECT_FALSE(CreateDirectories(Path("Existing/file")));

  EXPECT_TRUE(RemoveFile(Path("EXISTING/FILE")));
  EXPECT_FALSE(fs::exists(Native("Existing/file")));
  fs::create_symlink("nowhere", Native("dangling"));
  EXPECT_TRUE(RemoveFile(Path("dangling")));
  EXPECT_EQ(RemoveFile(Path("gone")).Message(),
            u"Cannot delete file " + Path("gone") + u". No such file or directory");
  EXPECT_FALSE(RemoveFile(Path("Existing")));
}

TEST_F(Files, AreMadeTemporarilyUnderNamesNotTaken) {
  const auto first = CreateTemporaryFile(Path(""), u"MSTRE", u".trx");
  const auto second = CreateTemporaryFile(Path(""), u"MSTRE", u".trx");
  ASSERT_TRUE(first && second);
  EXPECT_NE(*first, *second);
  EXPECT_TRUE(text::ExtractFileName(*first).starts_with(u"MSTRE"));
  EXPECT_EQ(text::ExtractFileExt(*first), u".trx");
  EXPECT_TRUE(FileExists(*first));
  EXPECT_FALSE(CreateTemporaryFile(Path("missing"), u"x"));
}

TEST_F(Files, OfPrograms) {
  Write("bin/tool");
  fs::permissions(Native("bin/tool"), fs::perms(0755));
  Write("bin/data");
  fs::create_directory(Native("bin/folder"));
  const std::string folders = "::relative:" + Native("none").string() + ":" + Native("bin").string();
  const ScopedVariable path("PATH", folders);
  EXPECT_EQ(FindProgram(u"tool"), Path("bin/tool"));
  for (const auto name : {u"data", u"folder", u"none", u"../bin/tool", u""})
    EXPECT_FALSE(FindProgram(name));
}

TEST_F(Files, OfTheUsersSettings) {
  const struct {
    std::optional<std::string> Named, Home;
    std::u16string_view Folder;
  } rows[] = {
      {"/etc/xdg-mine", "/home/someone", u"/etc/xdg-mine"},
      {"relative", "/home/someone", u"/home/someone/.config"},
      {std::nullopt, "/home/someone", u"/home/someone/.config"},
      {std::nullopt, std::nullopt, u""},
  };
  for (const auto& row : rows) {
    const ScopedVariable named("XDG_CONFIG_HOME", row.Named);
    const ScopedVariable home("HOME", row.Home);
    EXPECT_EQ(ConfigDirectory(), row.Folder);
  }
}

} // namespace
} // namespace kx::platform
