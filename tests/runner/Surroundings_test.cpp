#include "program/runner/Surroundings.h"

#include "foundation/platform/System.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <map>

namespace kx {
namespace {

TEST(Surroundings, ReadTheWorkingCopyFromTheFilesOfGit) {
  const std::string one(40, 'a');
  const std::string other(40, 'b');
  using TFiles = std::map<std::string, std::string>; // below the folder; asked for is "copy/deep"
  const TFiles none,
      branch{{"copy/.git/HEAD", "ref: refs/heads/a/b\n"}, {"copy/.git/refs/heads/a/b", one + "\n"}};
  const TFiles packed{{"copy/.git/HEAD", "ref: refs/heads/b\n"},
                      {"copy/.git/packed-refs", "# pack-refs with: peeled\n" + one +
                                                    " refs/heads/a/refs/heads/b\n" + other +
                                                    " refs/heads/b\n^" + one + "\n"}};
  const TFiles worktree{{"copy/.git", "gitdir: ../main/.git/worktrees/copy\n"},
                        {"main/.git/worktrees/copy/HEAD", "ref: refs/heads/b\n"},
                        {"main/.git/worktrees/copy/commondir", "../..\n"},
                        {"main/.git/refs/heads/b", other + "\n"}};
  struct TCase {
    const char* Name;
    TFiles Files;
    std::string Commit, Branch;
  };
  const TCase cases[] = {
      {"no working copy", none, "", ""},
      {"a branch", branch, one, "a/b"},
      {"one without a commit", TFiles{{"copy/.git/HEAD", "ref: refs/heads/main\n"}}, "", "main"},
      {"a packed one", packed, other, "b"},
      {"a commit by itself", TFiles{{"copy/.git/HEAD", one + "\n"}}, one, ""},
      {"a worktree", worktree, other, "b"},
      {"a long one", TFiles{{"copy/.git/HEAD", std::string(64, '9') + "\n"}}, std::string(64, '9'), ""},
      {"one of 39 digits", TFiles{{"copy/.git/HEAD", std::string(39, 'f') + "\n"}}, "", ""},
      {"one with other letters", TFiles{{"copy/.git/HEAD", std::string(39, '0') + "g\n"}}, "", ""},
      {"one that is no branch",
       TFiles{{"copy/.git/HEAD", "ref: refs/tags/t\n"}, {"copy/.git/packed-refs", one + " refs/tags/t\n"}},
       one, "refs/tags/t"},
      {"what is no commit", TFiles{{"copy/.git/HEAD", "../../etc/passwd\n"}}, "", ""},
  };
  for (const TCase& c : cases) {
    const tests::TTemporaryFolder folder;
    std::filesystem::create_directories(folder.Native("copy/deep"));
    for (const auto& [name, content] : c.Files)
      folder.Write(name, content);
    const TWorkingCopy copy = ReadWorkingCopy(folder.Path("copy/deep"));
    EXPECT_EQ(text::ToUtf8(copy.Commit), c.Commit) << c.Name;
    EXPECT_EQ(text::ToUtf8(copy.Branch), c.Branch) << c.Name;
    const TRunSurroundings around = SurroundingsOf(folder.Path("copy/deep"));
    EXPECT_EQ(around.Commit + u" " + around.Branch, copy.Commit + u" " + copy.Branch) << c.Name;
    EXPECT_EQ(around.Machine + around.System, platform::MachineName() + platform::SystemName());
  }
}

} // namespace
} // namespace kx
