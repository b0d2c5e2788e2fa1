#include "foundation/platform/FileTree.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Text.h"
#include "tests/support/TemporaryFolder.h"

#include <array>
#include <gtest/gtest.h>

namespace kx::platform {
namespace {

TEST(FileTree, HoldsEachFileBelowAFolderButThoseOfTheFoldersLeftOut) {
  const tests::TTemporaryFolder folder;
  for (const char* name : {"b/c/d.cs", "a.cs", "b/.GIT/x", "b/.git.cs"})
    folder.Write(name, "12345");
  const std::array<std::u16string_view, 1> without{u".git"};
  const auto files = ListFileTree(folder.Path(), without);
  ASSERT_TRUE(files) << text::ToUtf8(files.Message());
  std::string names;
  for (const FileStamp& file : *files) {
    EXPECT_EQ(file.Size, 5U);
    const auto same = StampOfFile(file.Path);
    ASSERT_TRUE(same);
    EXPECT_EQ(same->Changed, file.Changed);
    EXPECT_LT(std::chrono::abs(std::chrono::system_clock::now() - file.Changed), std::chrono::minutes(5));
    names += text::ToUtf8(text::ReplaceAll(file.Path.substr(folder.Path().size() + 1), u"\\", u"/")) + " ";
  }
  EXPECT_EQ(names, "a.cs b/.git.cs b/c/d.cs ");
  EXPECT_FALSE(ListFileTree(folder.Path() + u"/none", without));
  EXPECT_FALSE(StampOfFile(folder.Path() + u"/none"));
}

} // namespace
} // namespace kx::platform
