#include "text/WindowsPath.h"

#include <gtest/gtest.h>

namespace kx::text {
namespace {

TEST(WindowsPath, KnowsItsKinds) {
  const struct {
    std::u16string_view Path;
    bool Posix, Absolute;
  } rows[] = {
      {u"/srv/a", true, true},
      {u"/", true, true},
      {u"//server/share", false, true},
      {u"\\\\server\\share", false, true},
      {u"/\\server", false, true},
      {u"C:\\a", false, true},
      {u"c:/a", false, true},
      {u"C:a", false, false},
      {u"C:", false, false},
      {u"\\a", false, false},
      {u"a/b", false, false},
      {u"", false, false},
      {u"1:\\a", false, false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(IsPosixPath(row.Path), row.Posix) << testing::PrintToString(row.Path);
    EXPECT_EQ(IsAbsolutePath(row.Path), row.Absolute) << testing::PrintToString(row.Path);
  }
}

TEST(WindowsPath, IsTakenApart) {
  const struct {
    std::u16string_view Path, FilePath, FileDir, FileName, Extension;
  } rows[] = {
      {u"C:\\a\\b.txt", u"C:\\a\\", u"C:\\a", u"b.txt", u".txt"},
      {u"C:\\b.txt", u"C:\\", u"C:\\", u"b.txt", u".txt"},
      {u"C:b.txt", u"C:", u"C:", u"b.txt", u".txt"},
      {u"b", u"", u"", u"b", u""},
      {u"a.b\\c", u"a.b\\", u"a.b", u"c", u""},
      {u"a/b\\c.d.e", u"a/b\\", u"a/b", u"c.d.e", u".e"},
      {u"C:\\a\\", u"C:\\a\\", u"C:\\a", u"", u""},
      {u"\\\\server\\share\\x.sln", u"\\\\server\\share\\", u"\\\\server\\share", u"x.sln", u".sln"},
      {u"/srv/a:b.txt", u"/srv/", u"/srv", u"a:b.txt", u".txt"},
      {u"/x", u"/", u"/", u"x", u""},
      {u"\\x", u"\\", u"\\", u"x", u""},
      {u"a\\.hidden", u"a\\", u"a", u".hidden", u".hidden"},
      {u"", u"", u"", u"", u""},
  };
  for (const auto& row : rows) {
    const auto name = testing::PrintToString(row.Path);
    EXPECT_EQ(ExtractFilePath(row.Path), row.FilePath) << name;
    EXPECT_EQ(ExtractFileDir(row.Path), row.FileDir) << name;
    EXPECT_EQ(ExtractFileName(row.Path), row.FileName) << name;
    EXPECT_EQ(ExtractFileExt(row.Path), row.Extension) << name;
  }
}

TEST(ChangeFileExt, ChangesTheNameOnly) {
  EXPECT_EQ(ChangeFileExt(u"C:\\a.b\\c.sln", u".suo"), u"C:\\a.b\\c.suo");
  EXPECT_EQ(ChangeFileExt(u"C:\\a.b\\c", u".suo"), u"C:\\a.b\\c.suo");
  EXPECT_EQ(ChangeFileExt(u"/srv/c.tar.gz", u""), u"/srv/c.tar");
}

TEST(TrailingDelimiter, IsOfThePathsOwnKind) {
  const struct {
    std::u16string_view Path, With, Without;
  } rows[] = {
      {u"", u"", u""},
      {u"C:\\a", u"C:\\a\\", u"C:\\a"},
      {u"C:\\a\\", u"C:\\a\\", u"C:\\a"},
      {u"C:/a/", u"C:/a/", u"C:/a"},
      {u"/srv", u"/srv/", u"/srv"},
      {u"/", u"/", u"/"},
      {u"C:\\", u"C:\\", u"C:\\"},
      {u"\\\\server\\share\\", u"\\\\server\\share\\", u"\\\\server\\share"},
      {u"a", u"a\\", u"a"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(IncludeTrailingPathDelimiter(row.Path), row.With);
    EXPECT_EQ(ExcludeTrailingPathDelimiter(row.Path), row.Without);
  }
}

TEST(JoinPath, PutsOneSeparatorBetween) {
  const struct {
    std::u16string_view Folder, Name, Joined;
  } rows[] = {
      {u"C:\\a", u"b", u"C:\\a\\b"},
      {u"C:\\a\\", u"\\b", u"C:\\a\\b"},
      {u"/srv", u"a\\b.cs", u"/srv/a/b.cs"},
      {u"C:/a", u"b/c", u"C:\\a\\b\\c"},
      {u"C:\\a", u"D:\\b", u"D:\\b"},
      {u"C:\\a", u"/srv/b", u"/srv/b"},
      {u"C:\\a", u"\\\\s\\t", u"\\\\s\\t"},
      {u"", u"b", u"b"},
      {u"C:\\a", u"", u"C:\\a"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(JoinPath(row.Folder, row.Name), row.Joined);
}

TEST(ExpandPath, ResolvesAgainstTheFolder) {
  const struct {
    const char* Case;
    std::u16string_view Path, Folder, Expected;
  } rows[] = {
      {"below the folder", u"App\\App.csproj", u"C:\\src", u"C:\\src\\App\\App.csproj"},
      {"a folder with a separator", u"a", u"C:\\src\\", u"C:\\src\\a"},
      {"steps up", u"..\\lib\\.\\a", u"C:\\src\\app", u"C:\\src\\lib\\a"},
      {"never above the root of a drive", u"..\\..\\..\\a", u"C:\\src", u"C:\\a"},
      {"never above a share", u"..\\..\\a", u"\\\\server\\share\\x", u"\\\\server\\share\\a"},
      {"never above the system's root", u"../../../a", u"/srv", u"/a"},
      {"up to the root itself", u"..", u"C:\\src", u"C:\\"},
      {"a POSIX folder turns all separators", u"App\\x\\..\\App.csproj", u"/srv/Src",
       u"/srv/Src/App/App.csproj"},
      {"an absolute path stands alone", u"D:/x//y/./z", u"C:\\src", u"D:\\x\\y\\z"},
      {"a share stands alone", u"//server/share/a/../b", u"C:\\src", u"\\\\server\\share\\b"},
      {"a POSIX path stands alone", u"/srv//a\\b/../c", u"C:\\src", u"/srv/a/c"},
      {"a rooted path takes the drive", u"\\a", u"C:\\src\\app", u"C:\\a"},
      {"a rooted path takes the share", u"\\a", u"\\\\server\\share\\x", u"\\\\server\\share\\a"},
      {"a rooted path below a POSIX folder", u"\\a", u"/srv/x", u"/a"},
      {"relative to the folder's drive", u"c:a", u"C:\\src", u"C:\\src\\a"},
      {"relative to another drive", u"D:a", u"C:\\src", u"D:\\a"},
      {"no path is the folder", u"", u"C:\\src\\.\\x", u"C:\\src\\x"},
      {"a separator at the end stays", u"a\\", u"C:\\src", u"C:\\src\\a\\"},
      {"three dots are a name", u"...\\a", u"C:\\src", u"C:\\src\\...\\a"},
      {"no folder: steps up stay", u"..\\a\\..\\..\\b", u"", u"..\\..\\b"},
  };
  for (const auto& row : rows) {
    const std::u16string expanded = ExpandPath(row.Path, row.Folder);
    EXPECT_EQ(expanded, row.Expected) << row.Case;
    EXPECT_EQ(ExpandPath(expanded, u"Z:\\elsewhere"), IsAbsolutePath(expanded) ? expanded : u"Z:\\b")
        << row.Case;
  }
}

} // namespace
} // namespace kx::text
