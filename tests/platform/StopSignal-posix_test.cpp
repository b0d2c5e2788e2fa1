#include "platform/StopSignal.h"

#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>

namespace kx::platform {
namespace {

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
