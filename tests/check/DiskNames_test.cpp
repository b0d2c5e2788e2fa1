#include "program/check/DiskNames.h"

#include "foundation/platform/System.h"
#include "foundation/text/Encoding.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kx::check {
namespace {

TEST(DiskNames, AreThoseOfTheDiskLetterByLetter) {
  const tests::TTemporaryFolder folder;
  for (const auto* file : {"a/Sub/File.cs", "a/other.cs", "up.cs"})
    folder.Write(file);
  TDiskNames disk;
  const auto shown = [&](std::u16string_view path) {
    const TNamedFile& found = disk.Find(folder.Path("a"), path);
    return std::string(found.IsFolder ? "folder"
                       : found.Exists ? "file"
                                      : "none") +
           (found.Spelling.empty() ? "" : " " + text::ToUtf8(found.Spelling));
  };
  const std::pair<std::u16string, std::string> rows[] = {
      {u"other.cs", "file"},
      {u"OTHER.cs", "file other.cs"},
      {u".\\sub//file.CS", "file Sub\\File.cs"},
      {u"sub\\File.cs", "file Sub\\File.cs"},
      {u"Sub", "folder"},
      {u"SUB\\", "folder Sub"},
      {u"Sub\\..\\..\\UP.cs", "file Sub\\..\\..\\up.cs"},
      {u"..\\a\\Sub\\File.cs", "file"},
      {u"Sub\\none.cs", "none"},
      {u"none\\File.cs", "none"},
      {u"", "folder"},
      {folder.Path("a/other.cs"), "file"},
      {folder.Path("a/Sub"), "folder"},
      {folder.Path("a/none"), "none"},
  };
  for (const auto& [path, name] : rows) {
    EXPECT_EQ(shown(path), name) << text::ToUtf8(path);
    EXPECT_EQ(shown(path), name) << "asked again";
  }
  EXPECT_FALSE(disk.Find(folder.Path(), u"other.cs").Exists) << "another folder";
  if (platform::IsWindows()) return; // two names that differ in letter case are one there
  folder.Write("b/x.cs");
  folder.Write("b/X.cs");
  EXPECT_EQ(disk.Find(folder.Path("b"), u"x.cs").Spelling, u"");
  EXPECT_EQ(disk.Find(folder.Path("b"), u"X.cs").Spelling, u"");
}

} // namespace
} // namespace kx::check
