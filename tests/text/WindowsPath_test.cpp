#include "foundation/text/WindowsPath.h"

#include <gtest/gtest.h>

namespace kx::text {
namespace {

TEST(WindowsPath, KnowsItsKinds) {
  EXPECT_TRUE(IsPosixPath(u"/srv/a") && IsAbsolutePath(u"/srv/a"));
  for (const auto path : {u"//server/share", u"\\\\server\\share", u"c:/a", u"a:/", u"Z:\\"})
    EXPECT_TRUE(IsAbsolutePath(path) && !IsPosixPath(path)) << testing::PrintToString(path);
  for (const auto path : {u"C:a", u"\\a", u"", u"1:\\a"})
    EXPECT_FALSE(IsAbsolutePath(path) || IsPosixPath(path)) << testing::PrintToString(path);
}

TEST(WindowsPath, IsTakenApart) {
  const std::pair<std::u16string_view, std::u16string_view> rows[] = {
      {u"C:\\b.txt", u"C:\\|C:\\|b.txt|.txt"},       {u"C:b.txt", u"C:|C:|b.txt|.txt"},
      {u"a/b\\c.d.e", u"a/b\\|a/b|c.d.e|.e"},        {u"C:\\a\\", u"C:\\a\\|C:\\a||"},
      {u"/srv/a:b.txt", u"/srv/|/srv|a:b.txt|.txt"}, {u"/x", u"/|/|x|"}};
  for (const auto& [path, parts] : rows) {
    std::u16string found(ExtractFilePath(path));
    for (const auto& part : {ExtractFileDir(path), ExtractFileName(path), ExtractFileExt(path)})
      found.append(u"|").append(part);
    EXPECT_EQ(found, parts);
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
  EXPECT_EQ(JoinPath(u"", u"b") + JoinPath(u"C:\\a", u"\\"), u"bC:\\a");
}

TEST(ExpandPath, ResolvesAgainstTheFolder) {
  const std::tuple<const char*, std::u16string_view, std::u16string_view, std::u16string_view> rows[] = {
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
      {"relative to another drive", u"D:a", u"C:\\src", u"D:\\a"},
      {"a rooted path in no folder", u"\\a", u"", u"\\a"},
      {"nothing", u"", u"C:\\src", u"C:\\src"},
      {"a separator at the end stays", u"a\\", u"C:\\src", u"C:\\src\\a\\"},
      {"no folder: steps up stay", u"..\\a\\..\\..\\b", u"", u"..\\..\\b"},
  };
  for (const auto& [name, path, folder, expected] : rows)
    EXPECT_EQ(ExpandPath(path, folder), expected) << name;
}

} // namespace
} // namespace kx::text
