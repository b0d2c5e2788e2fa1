#include "platform/Files.h"
#include "platform/Win32.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kx::platform {
namespace {

using win32::Handle;
using win32::WithLongPrefix;

class WindowsFiles : public testing::Test, protected tests::TTemporaryFolder {};

TEST_F(WindowsFiles, MayHaveLongPaths) {
  std::u16string folder = Path();
  for (int i = 0; i < 8; ++i)
    folder += u"\\A folder with a long name \u00E9\u4E2D " + std::u16string(20, u'x');
  ASSERT_GT(folder.size(), 400U);
  ASSERT_TRUE(CreateDirectories(folder));
  const std::u16string file = folder + u"\\File.txt";
  ASSERT_TRUE(SaveFile(file, "1") && SaveFile(file, "2"));
  EXPECT_EQ(*ReadFile(file), "2");
  EXPECT_EQ(ResolveExisting(folder + u"\\.\\FILE.TXT"), file);
  FileLookup lookup;
  EXPECT_TRUE(FileExists(file) && lookup.FileExists(file) && DirectoryExists(folder));
  EXPECT_FALSE(lookup.FileExists(folder + u"\\none"));
  const auto temporary = CreateTemporaryFile(folder, u"kx");
  EXPECT_TRUE(temporary && RemoveFile(*temporary) && RemoveFile(file));
  for (; folder.size() > Path().size(); folder.resize(folder.rfind(u'\\'))) // the library cannot
    RemoveDirectoryW(WithLongPrefix(folder).c_str());
}

TEST_F(WindowsFiles, AreRefusedByNameAndReason) {
  const std::u16string used = Write("used", "old"), readOnly = Write("readonly", "old"), folder = Path();
  SetFileAttributesW(WithLongPrefix(readOnly).c_str(), FILE_ATTRIBUTE_READONLY);
  const Handle user(
      CreateFileW(WithLongPrefix(used).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  ASSERT_TRUE(user.IsOpen());
  const std::tuple<std::u16string, std::u16string_view, std::u16string_view> rows[] = {
      {used, u"It is being used by another process", u"It is being used by another process"},
      {readOnly, u"", u"It is read-only"},
      {folder, u"It is a folder", u"It is a folder"},
      {folder + u"\\NUL", u"It is not a regular file", u"It is not a regular file"},
      {u"con", u"It is not a regular file", u"It is not a regular file"},
  };
  for (const auto& [path, toRead, toWrite] : rows) {
    EXPECT_EQ(toRead.empty() ? u"" : ReadFile(path).Message(),
              toRead.empty() ? u"" : (u"Cannot open file " + path + u". ").append(toRead));
    EXPECT_EQ(SaveFile(path, "new").Message(), (u"Cannot write file " + path + u". ").append(toWrite));
  }
  EXPECT_EQ(*ReadFile(readOnly), "old");
  SetFileAttributesW(WithLongPrefix(readOnly).c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(WindowsFiles, StayHiddenWhenReplaced) {
  const std::wstring native = WithLongPrefix(Write("hidden", "old"));
  SetFileAttributesW(native.c_str(), FILE_ATTRIBUTE_HIDDEN);
  ASSERT_TRUE(SaveFile(Path("hidden"), "new"));
  EXPECT_NE(GetFileAttributesW(native.c_str()) & FILE_ATTRIBUTE_HIDDEN, 0U);
}

} // namespace
} // namespace kx::platform
