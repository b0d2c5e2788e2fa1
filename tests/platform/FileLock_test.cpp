#include "foundation/platform/FileLock.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/System.h"
#include "foundation/text/Encoding.h"
#include "tests/support/TemporaryFolder.h"

#include <atomic>
#include <gtest/gtest.h>
#include <optional>
#include <thread>

namespace kx::platform {
namespace {

using namespace std::chrono_literals;

class FileLockTest : public testing::Test, protected tests::TTemporaryFolder {};

TEST_F(FileLockTest, IsHeldByOneAtATimeAndLeavesNoFile) {
  std::atomic<int> holders{0}, turns{0};
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i < 8; ++i)
      threads.emplace_back([&] {
        for (int turn = 0; turn < 25; ++turn) {
          const auto lock = FileLock::Acquire(Path("a"), 60s);
          EXPECT_TRUE(lock && ++holders == 1);
          std::this_thread::yield();
          --holders;
          ++turns;
        }
      });
  }
  EXPECT_EQ(turns, 8 * 25);
  EXPECT_FALSE(FileExists(Path("a.lock")));
}

TEST_F(FileLockTest, SaysWhoHoldsItAndWhyItCannotBeHad) {
  std::optional<FileLock> held = *FileLock::Acquire(Path("a"), 0s);
  std::u16string holder;
  const auto refused = FileLock::Acquire(Path("a"), 60s, [&](std::u16string_view name) {
    holder = name;
    return false;
  });
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.Message(), u"Cannot lock file " + Path("a") + u". It is held by " + holder);
  EXPECT_TRUE(holder.starts_with(u"process ") && holder.ends_with(u" on " + MachineName()))
      << text::ToUtf8(holder);
  EXPECT_FALSE(FileLock::Acquire(Path("a"), 20ms));
  held.reset();
  Write("b.lock"); // what a killed process has left
  EXPECT_TRUE(FileLock::Acquire(Path("a"), 0s));
  EXPECT_TRUE(FileLock::Acquire(Path("b"), 0s));
  EXPECT_FALSE(FileExists(Path("b.lock")));
  EXPECT_FALSE(FileLock::Acquire(Path("none/c"), 0s));
}

TEST_F(FileLockTest, IsOneBehindLinksAndInOtherLetterCase) {
  if (IsWindows()) GTEST_SKIP() << "only some users can make links";
  Write("real/Nightly.kxproj");
  std::filesystem::create_symlink("real/Nightly.kxproj", Native("link"));
  std::filesystem::create_directory_symlink("real", Native("folder"));
  const auto held = FileLock::Acquire(Path("link"), 0s);
  ASSERT_TRUE(held);
  EXPECT_TRUE(FileExists(Path("real/Nightly.kxproj.lock")));
  for (const char* name : {"real/Nightly.kxproj", "folder/Nightly.kxproj", "real/nightly.KXPROJ", "link"})
    EXPECT_FALSE(FileLock::Acquire(Path(name), 0s)) << name;
}

} // namespace
} // namespace kx::platform
