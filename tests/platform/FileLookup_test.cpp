#include "tests/platform/FileLookupFixture.h"

namespace kx::platform {
namespace {

namespace fs = std::filesystem;

using FileLookupTest = TFileLookupFixture;

TEST_F(FileLookupTest, AnswersAsTheFileSystemDoes) {
  Write("Src/App/App.csproj");
  Write("Src/Été.cs");
  const std::pair<std::string_view, bool> rows[] = {
      {"src\\APP\\app.CSPROJ", true},
      {"Src//Lib/../App/./App.csproj", true},
      {"src/éTÉ.CS", true},
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

// What was asked before decides which folders are listed already.
TEST_F(FileLookupTest, FindsWhatIsBelowFoldersInOtherLetterCase) {
  Write("Trunk/Subtitles/lib/l.csproj");
  Write("Trunk/Äpfel/Öl.csproj");
  const std::string_view before[] = {"nothing", "Trunk/x.sln", "trunk/subtitles/x.csproj",
                                     "Trunk/Subtitles/lib/x.csproj", "TRUNK/subtitles/LIB/deep/x.csproj"};
  const std::pair<std::string_view, bool> rows[] = {
      {"Trunk\\subtitles\\lib\\l.csproj", true}, {"trunk/SUBTITLES/lib/l.csproj", true},
      {"TRUNK/subtitles/LIB/L.CSPROJ", true},    {"trunk/äpfel/öl.csproj", true},
      {"Trunk/subtitles/lib/l.csproj . ", true}, {"Trunk/subtitles/libs/l.csproj", false},
      {"Trunk/subtitles/lib/l.csproj/x", false}, {"Trunk/subtitles/lib", false},
  };
  for (const auto& asked : before)
    for (const auto& [name, exists] : rows) {
      FileLookup lookup;
      lookup.FileExists(Path(asked));
      EXPECT_EQ(lookup.FileExists(Path(name)), exists) << name << ", after " << asked;
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

} // namespace
} // namespace kx::platform
