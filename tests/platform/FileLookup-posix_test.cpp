#include "tests/platform/FileLookupFixture.h"

namespace kx::platform {
namespace {

namespace fs = std::filesystem;

using PosixFileLookup = TFileLookupFixture;

TEST_F(PosixFileLookup, FollowsLinks) {
  Write("Src/App/App.csproj");
  fs::create_symlink("App/App.csproj", Native("Src/link"));
  fs::create_symlink("nowhere", Native("Src/dangling"));
  fs::create_directory_symlink("App", Native("Src/folderlink"));
  EXPECT_TRUE(Exists("src/LINK") && Exists("Src/folderlink/App.csproj"));
  EXPECT_TRUE(ExistsNow("SRC/FolderLink/app.csproj"));
  EXPECT_FALSE(Exists("Src/dangling"));
}

TEST_F(PosixFileLookup, KeepsAListingWhileTheTimeStampIsOldAndTheSame) {
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

TEST_F(PosixFileLookup, DistrustsAListingAsYoungAsTheFoldersLastChange) {
  Write("Src/a.cs");
  EXPECT_FALSE(Exists("Src/b.cs"));
  const auto listed = fs::last_write_time(Native("Src"));
  Write("Src/b.cs");
  fs::last_write_time(Native("Src"), listed); // as if both had happened within one tick of the clock
  EXPECT_TRUE(ExistsNow("Src/b.cs"));
}

} // namespace
} // namespace kx::platform
