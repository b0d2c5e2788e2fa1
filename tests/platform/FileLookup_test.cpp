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
