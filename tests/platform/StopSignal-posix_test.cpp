#include "platform/StopSignal.h"

#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <optional>
#include <poll.h>
#include <thread>

namespace kx::platform {
namespace {

using std::chrono::milliseconds;
using std::chrono::minutes;

bool IsReadable(const StopSignal& signal) {
  pollfd handle{static_cast<int>(signal.WaitHandle()), POLLIN, 0};
  return poll(&handle, 1, 0) == 1;
}

TEST(StopSignal, StaysRaisedUntilItIsCleared) {
  StopSignal signal;
  EXPECT_FALSE(signal.WaitFor(milliseconds(0)));
  EXPECT_FALSE(IsReadable(signal));
  for (int round = 0; round < 2; ++round) {
    signal.Raise();
    signal.Raise();
    EXPECT_TRUE(signal.IsRaised());
    EXPECT_TRUE(signal.WaitFor(minutes(1)));
    EXPECT_TRUE(IsReadable(signal));
    signal.Clear();
    EXPECT_FALSE(signal.IsRaised());
    EXPECT_FALSE(IsReadable(signal));
    EXPECT_FALSE(signal.WaitFor(milliseconds(1)));
  }
}

TEST(StopSignal, WakesAWaitingThread) {
  StopSignal signal;
  std::thread waker([&] { signal.Raise(); });
  EXPECT_TRUE(signal.WaitFor(minutes(10)));
  waker.join();
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

TEST(InterruptHandler, GivesTheOldBehaviourBack) {
  const auto interruptAfterwards = [] {
    StopSignal signal;
    { const InterruptHandler handler(signal); }
    raise(SIGTERM);
    std::_Exit(3);
  };
  EXPECT_EXIT(interruptAfterwards(), testing::KilledBySignal(SIGTERM), "");
}

TEST(InterruptHandler, LeavesAHangUpIgnoredThatWasIgnoredBefore) {
  const auto hangUp = [] {
    std::signal(SIGHUP, SIG_IGN);
    StopSignal signal;
    const InterruptHandler handler(signal);
    raise(SIGHUP);
    std::_Exit(signal.IsRaised() ? 1 : 0);
  };
  EXPECT_EXIT(hangUp(), testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace kx::platform
