#include "foundation/platform/Files.h"
#include "foundation/platform/System.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kx::platform {
namespace {

namespace fs = std::filesystem;

class FileLookupTest : public testing::Test, protected tests::TTemporaryFolder {
protected:
  bool Exists(std::string_view name) { return lookup_.FileExists(Path(name)); }
  bool ExistsNow(std::string_view name) {
    lookup_.Refresh();
    return Exists(name);
  }

  FileLookup lookup_;
};

// What was asked before decides which folders are listed already.
TEST_F(FileLookupTest, AnswersAsTheFileSystemDoesInAnyLetterCase) {
  Write("Trunk/Subtitles/lib/l.csproj");
  Write("Trunk/Äpfel/Öl.csproj");
  const std::string_view before[] = {"nothing", "Trunk/x.sln", "trunk/subtitles/x.csproj",
                                     "Trunk/Subtitles/lib/x.csproj", "TRUNK/subtitles/LIB/deep/x.csproj"};
  const std::pair<std::string_view, bool> rows[] = {{"Trunk\\subtitles\\lib\\l.csproj", true},
                                                    {"trunk/SUBTITLES/lib/l.csproj", true},
                                                    {"TRUNK/subtitles/LIB/L.CSPROJ", true},
                                                    {"trunk/äpfel/öl.csproj", true},
                                                    {"Trunk/subtitles/lib/l.csproj . ", true},
                                                    {"Trunk//None/../subtitles/./lib/l.csproj", true},
                                                    {"Trunk/subtitles/libs/l.csproj", false},
                                                    {"Trunk/subtitles/lib/l.csproj/x", false},
                                                    {"Trunk/subtitles/lib", false},
                                                    {"Trunk/subtitles/lib/", false},
                                                    {"Missing/lib/l.csproj", false}};
  for (const auto& asked : before)
    for (const auto& [name, exists] : rows) {
      FileLookup lookup;
      lookup.FileExists(Path(asked));
      EXPECT_EQ(lookup.FileExists(Path(name)), exists) << name << ", after " << asked;
      EXPECT_EQ(lookup.FileExists(Path(name)), exists) << name << ", asked again";
      EXPECT_EQ(FileExists(Path(name)), exists) << name << ", without a look-up";
    }
}

TEST_F(FileLookupTest, SeesChangesAfterARefreshOnly) {
  Write("Src/a.cs");
  EXPECT_FALSE(Exists("Src/b.cs") || Exists("Src/New/c.cs"));
  Write("Src/b.cs");
  Write("Src/New/c.cs");
  EXPECT_FALSE(Exists("Src/b.cs"));
  EXPECT_TRUE(ExistsNow("Src/b.cs") && Exists("src/NEW/c.cs"));
  fs::remove_all(Native("Src/New"));
  fs::rename(Native("Src/b.cs"), Native("Src/d.cs"));
  EXPECT_FALSE(ExistsNow("Src/b.cs") || Exists("Src/New/c.cs"));
}

TEST_F(FileLookupTest, FollowsLinks) {
  if (IsWindows()) GTEST_SKIP() << "only some users can make links";
  Write("Src/App/App.csproj");
  fs::create_symlink("App/App.csproj", Native("Src/link"));
  fs::create_symlink("nowhere", Native("Src/dangling"));
  fs::create_directory_symlink("App", Native("Src/folderlink"));
  EXPECT_TRUE(Exists("src/LINK") && Exists("Src/folderlink/App.csproj"));
  EXPECT_TRUE(ExistsNow("SRC/FolderLink/app.csproj"));
  EXPECT_FALSE(Exists("Src/dangling"));
}

TEST_F(FileLookupTest, KeepsAListingWhileTheTimeStampIsOldAndTheSame) {
  if (IsWindows()) GTEST_SKIP() << "the library cannot give a folder another time";
  Write("Src/a.cs");
  EXPECT_FALSE(Exists("Src/b.cs"));
  const auto listed = fs::last_write_time(Native("Src")), longAgo = listed - std::chrono::hours(24);
  const auto change = [this](const char* file, fs::file_time_type time) {
    Write(file);
    fs::last_write_time(Native(file).parent_path(), time);
  };
  change("Src/b.cs", listed); // as if both had happened within one tick of the clock
  EXPECT_TRUE(ExistsNow("Src/b.cs"));
  change("Src/c.cs", longAgo);
  EXPECT_TRUE(ExistsNow("Src/c.cs"));
  change("Src/d.cs", longAgo);
  EXPECT_FALSE(ExistsNow("Src/d.cs")) << "the folder was listed again although it looks unchanged";
  change("Src/d.cs", longAgo + std::chrono::nanoseconds(1));
  EXPECT_TRUE(ExistsNow("Src/d.cs"));

  change("Other/e.cs", longAgo + std::chrono::nanoseconds(1));
  fs::rename(Native("Src"), Native("Old"));
  fs::rename(Native("Other"), Native("Src"));
  EXPECT_TRUE(ExistsNow("Src/e.cs")) << "another folder took the old one's place";
}

} // namespace
} // namespace kx::platform
