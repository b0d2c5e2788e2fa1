#include "platform/StopSignal.h"

#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <poll.h>
#include <thread>

namespace kx::platform {
namespace {

bool IsReadable(const StopSignal& signal) {
  pollfd handle{static_cast<int>(signal.WaitHandle()), POLLIN, 0};
  return poll(&handle, 1, 0) == 1;
}

TEST(StopSignal, StaysRaisedUntilItIsCleared) {
  StopSignal signal;
  for (int round = 0; round < 2; ++round) {
    EXPECT_FALSE(signal.IsRaised() || IsReadable(signal) || signal.WaitFor(std::chrono::milliseconds(1)));
    std::thread raiser([&] { signal.Raise(); });
    EXPECT_TRUE(signal.WaitFor(std::chrono::minutes(10)));
    raiser.join();
    signal.Raise();
    EXPECT_TRUE(signal.IsRaised() && IsReadable(signal));
    signal.Clear();
  }
}

TEST(InterruptHandler, RaisesTheSignalAndEndsTheProgramAtTheSecond) {
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    const auto interruptTwice = [&] {
      StopSignal signal;
      const InterruptHandler handler(signal);
      raise(number);
      if (!signal.IsRaised()) std::_Exit(1);
      signal.Clear(); // a new run
      raise(number);
      if (!signal.IsRaised()) std::_Exit(2);
      raise(number);
      std::_Exit(3);
    };
    EXPECT_EXIT(interruptTwice(), testing::KilledBySignal(number), "") << number;
  }
}

} // namespace
} // namespace kx::platform
