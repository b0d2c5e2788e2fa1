#include "foundation/platform/StopSignal.h"

#include <gtest/gtest.h>
#include <thread>

namespace kx::platform {
namespace {

TEST(StopSignal, StaysRaisedUntilItIsCleared) {
  StopSignal signal;
  for (int round = 0; round < 2; ++round) {
    EXPECT_FALSE(signal.IsRaised() || signal.IsUrgent() || signal.WaitFor(std::chrono::milliseconds(1)));
    std::thread raiser([&] { signal.Raise(); });
    EXPECT_TRUE(signal.WaitFor(std::chrono::minutes(10)));
    raiser.join();
    signal.Raise();
    EXPECT_TRUE(signal.IsRaised() && !signal.IsUrgent());
    signal.Clear();
    signal.RaiseUrgently();
    EXPECT_TRUE(signal.IsRaised() && signal.IsUrgent());
    signal.Clear();
  }
}

} // namespace
} // namespace kx::platform
