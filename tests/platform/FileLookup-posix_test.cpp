#include "platform/Files.h"
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

TEST_F(FileLookupTest, AnswersAsTheFileSystemDoes) {
  Write("Src/App/App.csproj");
  Write("Src/Été.cs");
  fs::create_symlink("App/App.csproj", Native("Src/link"));
  fs::create_symlink("nowhere", Native("Src/dangling"));
  fs::create_directory_symlink("App", Native("Src/folderlink"));
  const std::pair<std::string_view, bool> rows[] = {
      {"src\\APP\\app.CSPROJ", true},
      {"Src//Lib/../App/./App.csproj", true},
      {"src/éTÉ.CS", true},
      {"src/LINK", true},
      {"Src/folderlink/App.csproj", true},
      {"Src/dangling", false},
      {"Src/App/", false},
      {"Missing/App/App.csproj", false},
      {"Src/Été.cs/x", false},
  };
  for (const auto& [name, exists] : rows) {
    EXPECT_EQ(Exists(name), exists) << name;
    EXPECT_EQ(Exists(name), exists) << name << ", asked again";
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

TEST_F(FileLookupTest, KeepsAListingWhileTheTimeStampIsOldAndTheSame) {
  Write("Src/a.cs");
  const auto longAgo = fs::last_write_time(Native("Src")) - std::chrono::hours(24);
  fs::last_write_time(Native("Src"), longAgo);
  EXPECT_FALSE(Exists("Src/b.cs"));
  Write("Src/b.cs");
  fs::last_write_time(Native("Src"), longAgo);
  EXPECT_FALSE(ExistsNow("Src/b.cs")) << "the folder was listed again although it looks unchanged";
  fs::last_write_time(Native("Src"), longAgo + std::chrono::nanoseconds(1));
  EXPECT_TRUE(ExistsNow("Src/b.cs"));

  Write("Other/c.cs");
  fs::last_write_time(Native("Other"), longAgo + std::chrono::nanoseconds(1));
  fs::rename(Native("Src"), Native("Old"));
  fs::rename(Native("Other"), Native("Src"));
  EXPECT_TRUE(ExistsNow("Src/c.cs")) << "another folder took the old one's place";
}

TEST_F(FileLookupTest, DistrustsAListingAsYoungAsTheFoldersLastChange) {
  Write("Src/a.cs");
  EXPECT_FALSE(Exists("Src/b.cs"));
  const auto listed = fs::last_write_time(Native("Src"));
  Write("Src/b.cs");
  fs::last_write_time(Native("Src"), listed); // as if both had happened within one tick of the clock
  EXPECT_TRUE(ExistsNow("Src/b.cs"));
}

} // namespace
} // namespace kx::platform
