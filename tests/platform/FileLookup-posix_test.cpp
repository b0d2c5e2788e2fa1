#include "tests/platform/TestFolder.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace kx::platform {
namespace {

namespace fs = std::filesystem;

class FileLookupTest : public TestFolder {
protected:
  bool Exists(std::string_view name) { return lookup_.FileExists(Path(name)); }

  void SetTime(std::string_view name, const timespec& time) const {
    const timespec times[2] = {time, time};
    ASSERT_EQ(utimensat(AT_FDCWD, Native(name).c_str(), times, 0), 0);
  }
  timespec TimeOf(std::string_view name) const {
    struct stat info {};
    stat(Native(name).c_str(), &info);
    return info.st_mtim;
  }

  FileLookup lookup_;
};

TEST_F(FileLookupTest, AnswersAsTheFileSystemDoes) {
  Write("Src/App/App.csproj");
  Write("Src/Été.cs");
  Write("Src/same.rc", "small");
  Write("Src/SAME.RC", "capital");
  fs::create_symlink("App/App.csproj", Native("Src/link"));
  fs::create_symlink("nowhere", Native("Src/dangling"));
  fs::create_directory_symlink("App", Native("Src/folderlink"));
  const struct {
    std::string_view Name;
    bool Exists;
  } rows[] = {
      {"Src/App/App.csproj", true},
      {"src/APP/app.CSPROJ", true},
      {"Src\\App\\App.csproj", true},
      {"Src/Lib/../App/./App.csproj", true},
      {"Src//App/App.csproj", true},
      {"src/éTÉ.CS", true},
      {"Src/Same.rc", true},
      {"Src/link", true},
      {"src/LINK", true},
      {"Src/folderlink/App.csproj", true},
      {"Src/dangling", false},
      {"Src/folderlink", false},
      {"Src/App", false},
      {"Src/App/", false},
      {"Src", false},
      {"Src/Lib/Lib.csproj", false},
      {"Missing/App/App.csproj", false},
      {"Src/same.rc/x", false},
      {"Src/App/App.csproj.user", false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Exists(row.Name), row.Exists) << row.Name;
    EXPECT_EQ(Exists(row.Name), row.Exists) << row.Name << ", asked again";
    EXPECT_EQ(FileExists(Path(row.Name)), row.Exists) << row.Name << ", without a look-up";
  }
  EXPECT_FALSE(lookup_.FileExists(u""));
  EXPECT_FALSE(lookup_.FileExists(u"Q:\\unmapped\\a.sln"));
}

TEST_F(FileLookupTest, SeesChangesAfterARefreshOnly) {
  Write("Src/a.cs");
  EXPECT_FALSE(Exists("Src/b.cs"));
  EXPECT_FALSE(Exists("Src/New/c.cs"));
  Write("Src/b.cs");
  Write("Src/New/c.cs");
  EXPECT_FALSE(Exists("Src/b.cs"));
  lookup_.Refresh();
  EXPECT_TRUE(Exists("Src/b.cs"));
  EXPECT_TRUE(Exists("Src/New/c.cs"));
  fs::remove_all(Native("Src/New"));
  fs::rename(Native("Src/b.cs"), Native("Src/d.cs"));
  lookup_.Refresh();
  EXPECT_FALSE(Exists("Src/New/c.cs"));
  EXPECT_FALSE(Exists("Src/b.cs"));
  EXPECT_TRUE(Exists("src/D.CS"));
}

TEST_F(FileLookupTest, KeepsAListingWhileTheTimeStampIsOldAndTheSame) {
  const timespec longAgo{1'000'000'000, 123};
  Write("Src/a.cs");
  SetTime("Src", longAgo);
  EXPECT_FALSE(Exists("Src/b.cs"));
  Write("Src/b.cs");
  SetTime("Src", longAgo);
  lookup_.Refresh();
  EXPECT_FALSE(Exists("Src/b.cs")) << "the folder was listed again although it looks unchanged";
  SetTime("Src", {1'000'000'000, 124});
  lookup_.Refresh();
  EXPECT_TRUE(Exists("Src/b.cs"));
}

TEST_F(FileLookupTest, DistrustsAListingAsYoungAsTheFoldersLastChange) {
  Write("Src/a.cs");
  EXPECT_FALSE(Exists("Src/b.cs"));
  const timespec listed = TimeOf("Src");
  Write("Src/b.cs");
  SetTime("Src", listed); // as if both had happened within one tick of the clock
  lookup_.Refresh();
  EXPECT_TRUE(Exists("Src/b.cs"));
}

TEST_F(FileLookupTest, NoticesAFolderPutInTheOldOnesPlace) {
  const timespec longAgo{1'000'000'000, 0};
  Write("Src/a.cs");
  Write("Other/b.cs");
  SetTime("Src", longAgo);
  SetTime("Other", longAgo);
  EXPECT_TRUE(Exists("Src/a.cs"));
  fs::rename(Native("Src"), Native("Old"));
  fs::rename(Native("Other"), Native("Src"));
  lookup_.Refresh();
  EXPECT_FALSE(Exists("Src/a.cs"));
  EXPECT_TRUE(Exists("Src/b.cs"));
}

} // namespace
} // namespace kx::platform
