#include "platform/FileLock.h"

#include "platform/Files.h"
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
          const auto lock = FileLock::Acquire(Path("a.lock"), 60s);
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

TEST_F(FileLockTest, SaysWhyItCannotBeHad) {
  std::optional<FileLock> held = *FileLock::Acquire(Path("a.lock"), 0s);
  const auto refused = FileLock::Acquire(Path("a.lock"), 20ms);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.Message(), u"Cannot lock file " + Path("a.lock") + u". Another program holds it");
  held.reset();
  Write("b.lock"); // what a killed process has left
  EXPECT_TRUE(FileLock::Acquire(Path("a.lock"), 0s));
  EXPECT_TRUE(FileLock::Acquire(Path("b.lock"), 0s));
  EXPECT_FALSE(FileLock::Acquire(Path("none/c.lock"), 0s));
}

} // namespace
} // namespace kx::platform
