#include "program/runner/DryRun.h"

#include "foundation/text/Encoding.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kx::tests {
namespace {

TEST(DryRun, DescribesWhatChangesBesideTheLinesToo) {
  const std::string head = "Dry run : this would change\r\n--- a.cs\r\n+++ a.cs\r\n";
  const std::tuple<const char*, std::string, std::string, std::string> cases[] = {
      {"UTF-8", "\xC3\xA9\nb\n", "\xC3\xA9\nc\n", "@@ -1,2 +1,2 @@\r\n \xC3\xA9\r\n-b\r\n+c"},
      {"the ANSI page", "\xE9\n", "\xE8\n", "@@ -1,1 +1,1 @@\r\n-\xC3\xA9\r\n+\xC3\xA8"},
      {"line ends", "a\nb\n", "a\r\nb\r\n", "\\ Line ends: LF becomes CR LF"},
      {"mixed line ends", "a\nb\r\n", "a\rb\r", "\\ Line ends: mixed becomes CR"},
      {"the last line end", "a", "a\n",
       "\\ Only the bytes differ: encoding, byte-order mark or the last line end"},
      {"an encoding", "\xEF\xBB\xBF.", ".",
       "\\ Only the bytes differ: encoding, byte-order mark or the last line end"},
  };
  for (const auto& [name, before, after, rest] : cases)
    EXPECT_EQ(text::ToUtf8(DescribeChange(u"a.cs", before, after)), head + rest) << name;
}

TEST(DryRun, StartsNoProcessAndChangesNoFileButGoesOnAsIfItHad) {
  const TTemporaryFolder folder;
  const std::u16string file = folder.Write("a.txt", "old\n");
  const std::u16string locked = folder.Write("locked.txt", "old\n");
  std::filesystem::permissions(folder.Native("locked.txt"), std::filesystem::perms::owner_read);
  std::vector<std::u16string> said;
  const auto say = [&said](std::u16string_view message) { said.emplace_back(message); };
  TDryRunFiles files(say);
  EXPECT_TRUE(files.Replace(file, "new\n"));
  EXPECT_TRUE(files.Replace(file, "new\n"));
  EXPECT_EQ(said.size(), 1U) << "what is there already is no change";
  EXPECT_EQ(*files.Read(file), "new\n");
  EXPECT_EQ(folder.Read("a.txt"), "old\n");
  files.Forget(file);
  EXPECT_EQ(*files.Read(file), "old\n");
  EXPECT_FALSE(files.Replace(locked, "new\n")) << "it would fail in earnest too";
  EXPECT_TRUE(files.CopyIfMissing(file, folder.Path("copy")) && files.CopyIfMissing(file, locked));
  EXPECT_EQ(said.back(), u"Dry run : " + file + u" would be copied to " + folder.Path("copy"));
  EXPECT_TRUE(files.Replace(folder.Path("new.txt"), "x")) << "a file that is not there yet";
  EXPECT_EQ(said.size(), 3U);

  const auto process = NewDryRunProcess(say);
  process->Settings().Executable = u"/no/such/program";
  process->Settings().Parameters = u"-x";
  process->Run();
  EXPECT_EQ(said.back(), u"Dry run : this would start /no/such/program -x");
  EXPECT_EQ(process->GetExitCode(), 0);
}

} // namespace
} // namespace kx::tests
