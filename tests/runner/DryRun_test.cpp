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
  int messages = 0;
  const auto count = [&messages](std::u16string_view) { ++messages; };
  TDryRunFiles files(count);
  EXPECT_TRUE(files.Replace(file, "new\n"));
  EXPECT_TRUE(files.Replace(file, "new\n"));
  EXPECT_EQ(messages, 1) << "what is there already is no change";
  EXPECT_EQ(*files.Read(file), "new\n");
  EXPECT_EQ(folder.Read("a.txt"), "old\n");
  files.Forget(file);
  EXPECT_EQ(*files.Read(file), "old\n");
  EXPECT_FALSE(files.Replace(locked, "new\n")) << "it would fail in earnest too";
  EXPECT_TRUE(files.CopyIfMissing(file, folder.Path("copy")));

  const auto process = NewDryRunProcess(count);
  process->Settings().Executable = u"/no/such/program";
  process->Run();
  EXPECT_EQ(process->GetExitCode(), 0);
}

} // namespace
} // namespace kx::tests
