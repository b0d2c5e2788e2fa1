#include "foundation/text/WindowsPath.h"

#include <gtest/gtest.h>

namespace kx::text {
namespace {

TEST(WindowsPath, KnowsItsKinds) {
  EXPECT_TRUE(IsPosixPath(u"/srv/a") && IsAbsolutePath(u"/srv/a"));
  for (const auto path : {u"//server/share", u"\\\\server\\share", u"c:/a"})
    EXPECT_TRUE(IsAbsolutePath(path) && !IsPosixPath(path)) << testing::PrintToString(path);
  for (const auto path : {u"C:a", u"\\a", u"", u"1:\\a"})
    EXPECT_FALSE(IsAbsolutePath(path) || IsPosixPath(path)) << testing::PrintToString(path);
}

TEST(WindowsPath, IsTakenApart) {
  const struct {
    std::u16string_view Path, FilePath, FileDir, FileName, Extension;
  } rows[] = {
      {u"C:\\b.txt", u"C:\\", u"C:\\", u"b.txt", u".txt"},
      {u"C:b.txt", u"C:", u"C:", u"b.txt", u".txt"},
      {u"a/b\\c.d.e", u"a/b\\", u"a/b", u"c.d.e", u".e"},
      {u"C:\\a\\", u"C:\\a\\", u"C:\\a", u"", u""},
      {u"/srv/a:b.txt", u"/srv/", u"/srv", u"a:b.txt", u".txt"},
      {u"/x", u"/", u"/", u"x", u""},
  };
  for (const auto& row : rows) {
    const auto name = testing::PrintToString(row.Path);
    EXPECT_EQ(ExtractFilePath(row.Path), row.FilePath) << name;
    EXPECT_EQ(ExtractFileDir(row.Path), row.FileDir) << name;
    EXPECT_EQ(ExtractFileName(row.Path), row.FileName) << name;
    EXPECT_EQ(ExtractFileExt(row.Path), row.Extension) << name;
  }
  EXPECT_EQ(ChangeFileExt(u"C:\\a.b\\c", u".suo"), u"C:\\a.b\\c.suo");
}

TEST(TrailingDelimiter, IsOfThePathsOwnKind) {
  EXPECT_EQ(IncludeTrailingPathDelimiter(u""), u"");
  EXPECT_EQ(IncludeTrailingPathDelimiter(u"C:\\a"), u"C:\\a\\");
  EXPECT_EQ(IncludeTrailingPathDelimiter(u"/srv"), u"/srv/");
  EXPECT_EQ(ExcludeTrailingPathDelimiter(u"C:\\a\\"), u"C:\\a");
  EXPECT_EQ(ExcludeTrailingPathDelimiter(u"C:\\"), u"C:\\");
}

TEST(JoinPath, PutsOneSeparatorBetween) {
  EXPECT_EQ(JoinPath(u"C:\\a\\", u"\\b"), u"C:\\a\\b");
  EXPECT_EQ(JoinPath(u"/srv", u"a\\b.cs"), u"/srv/a/b.cs");
  EXPECT_EQ(JoinPath(u"C:\\a", u"D:\\b"), u"D:\\b");
}

TEST(ExpandPath, ResolvesAgainstTheFolder) {
  const struct {
    const char* Case;
    std::u16string_view Path, Folder, Expected;
  } rows[] = {
      {"steps up", u"..\\lib\\.\\a", u"C:\\src\\app\\", u"C:\\src\\lib\\a"},
      {"never above the root of a drive", u"..\\..\\..\\a", u"C:\\src", u"C:\\a"},
      {"never above a share", u"..\\..\\a", u"\\\\server\\share\\x", u"\\\\server\\share\\a"},
      {"never above the system's root", u"../../../a", u"/srv", u"/a"},
      {"up to the root itself", u"..", u"C:\\src", u"C:\\"},
      {"a POSIX folder turns all separators", u"App\\x\\..\\a.cs", u"/srv", u"/srv/App/a.cs"},
      {"an absolute path stands alone", u"D:/x//y/./z", u"C:\\src", u"D:\\x\\y\\z"},
      {"a share stands alone", u"//server/share/a/../b", u"C:\\src", u"\\\\server\\share\\b"},
      {"a POSIX path stands alone", u"/srv//a\\b/../c", u"C:\\src", u"/srv/a/c"},
      {"a rooted path takes the drive", u"\\a", u"C:\\src\\app", u"C:\\a"},
      {"a rooted path takes the share", u"\\a", u"\\\\server\\share\\x", u"\\\\server\\share\\a"},
      {"relative to the folder's drive", u"c:a", u"C:\\src", u"C:\\src\\a"},
      {"a separator at the end stays", u"a\\", u"C:\\src", u"C:\\src\\a\\"},
      {"no folder: steps up stay", u"..\\a\\..\\..\\b", u"", u"..\\..\\b"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(ExpandPath(row.Path, row.Folder), row.Expected) << row.Case;
}

} // namespace
} // namespace kx::text
