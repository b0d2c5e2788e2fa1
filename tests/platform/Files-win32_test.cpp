#include "foundation/platform/Files.h"
#include "foundation/platform/PrivateFolder.h"
#include "foundation/platform/Win32.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
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

TEST_F(WindowsFiles, OfSeveralNamesAreNotParted) {
  const std::u16string file = Write("twin", "old");
  ASSERT_TRUE(CreateHardLinkW(WithLongPrefix(Path("other")).c_str(), WithLongPrefix(file).c_str(), nullptr));
  EXPECT_EQ(SaveFile(file, "new").Message(),
            u"Cannot write file " + file +
                u". It has 2 names (hard links), and only one of them would lead to the new content");
  EXPECT_EQ(*ReadFile(Path("other")), "old");
}

int CountStreams(const std::wstring& native) {
  WIN32_FIND_STREAM_DATA stream{};
  const HANDLE found = FindFirstStreamW(native.c_str(), FindStreamInfoStandard, &stream, 0);
  if (found == INVALID_HANDLE_VALUE) return 0;
  int count = 1;
  while (FindNextStreamW(found, &stream) != FALSE)
    ++count;
  FindClose(found);
  return count;
}

TEST_F(WindowsFiles, KeepTheirNamedStreamsAndTheTimeOfACopy) {
  const std::u16string file = Write("downloaded", "old");
  const std::u16string stream = file + u":Zone.Identifier";
  const FILETIME time{.dwLowDateTime = 0, .dwHighDateTime = 0x01C00000};
  {
    const Handle zone(
        CreateFileW(WithLongPrefix(stream).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
    DWORD written = 0;
    const bool isKnown = zone.IsOpen() && WriteFile(zone.Get(), "zone", 4, &written, nullptr) != FALSE;
    if (!isKnown || *ReadFile(file) != "old" || CountStreams(WithLongPrefix(file)) != 2)
      GTEST_SKIP() << "this file system has no named streams";
    const Handle whole(CreateFileW(WithLongPrefix(file).c_str(), FILE_WRITE_ATTRIBUTES, 7, nullptr,
                                   OPEN_EXISTING, 0, nullptr));
    SetFileTime(whole.Get(), nullptr, nullptr, &time);
  }
  EXPECT_TRUE(*CopyToNewFile(file, Path("copy")));
  ASSERT_TRUE(SaveFile(file, "new"));
  for (const auto& name : {file, Path("copy")})
    EXPECT_EQ(*ReadFile(name + u":Zone.Identifier"), "zone");
  WIN32_FILE_ATTRIBUTE_DATA info{};
  GetFileAttributesExW(WithLongPrefix(Path("copy")).c_str(), GetFileExInfoStandard, &info);
  EXPECT_EQ(info.ftLastWriteTime.dwHighDateTime, time.dwHighDateTime);
}

TEST_F(WindowsFiles, PrivateFoldersOfKilledProgramsAreRemovedWhenTheyAreOld) {
  const std::filesystem::path below(TemporaryDirectory());
  const struct {
    std::filesystem::path Path;
    DWORD Time; // since 1601, the high half
  } rows[] = {{below / "kx-0abandoned01", 0x01C00000}, {below / "kx-0abandoned02", 0}};
  for (const auto& row : rows) {
    std::filesystem::create_directories(row.Path / "below");
    const FILETIME time{.dwLowDateTime = 0, .dwHighDateTime = row.Time};
    const Handle folder(CreateFileW(row.Path.c_str(), FILE_WRITE_ATTRIBUTES, 7, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    const bool isSet = row.Time == 0 || SetFileTime(folder.Get(), nullptr, nullptr, &time) != FALSE;
    ASSERT_TRUE(isSet);
  }
  PrivateFolder::RemoveAbandoned();
  EXPECT_FALSE(std::filesystem::exists(rows[0].Path));
  EXPECT_TRUE(std::filesystem::exists(rows[1].Path)) << "its owner may not have opened it yet";
  std::filesystem::remove_all(rows[1].Path);
}

TEST_F(WindowsFiles, StayHiddenWhenReplaced) {
  const std::wstring native = WithLongPrefix(Write("hidden", "old"));
  SetFileAttributesW(native.c_str(), FILE_ATTRIBUTE_HIDDEN);
  ASSERT_TRUE(SaveFile(Path("hidden"), "new"));
  EXPECT_NE(GetFileAttributesW(native.c_str()) & FILE_ATTRIBUTE_HIDDEN, 0U);
}

} // namespace
} // namespace kx::platform
