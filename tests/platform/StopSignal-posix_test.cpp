#include "foundation/platform/StopSignal.h"

#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <optional>
#include <thread>
#include <unistd.h>

namespace kx::platform {
namespace {

constexpr std::initializer_list<int> Interrupts{SIGINT, SIGTERM, SIGHUP};

void Expect(bool isTrue, int codeElse) {
  if (!isTrue) std::_Exit(codeElse);
}

// In a program of their own: here what other tests have left of the signals would do as well.
class Interrupted : public testing::Test {
protected:
  Interrupted() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
  ~Interrupted() override { GTEST_FLAG_SET(death_test_style, "fast"); }
};
using InterruptHandlerTest = Interrupted;
using SaveScopeTest = Interrupted;

TEST_F(InterruptHandlerTest, RaisesTheSignalThenUrgentlyAndEndsTheProgramAtTheThird) {
  for (const int number : Interrupts) {
    const auto interruptThrice = [&] {
      StopSignal signal;
      const InterruptHandler handler(signal);
      raise(number);
      Expect(signal.IsRaised() && !signal.IsUrgent(), 1);
      signal.Clear(); // a new run
      raise(number);
      Expect(signal.IsRaised() && !signal.IsUrgent(), 2);
      raise(number);
      Expect(signal.IsUrgent(), 3);
      raise(number);
      std::_Exit(4);
    };
    EXPECT_EXIT(interruptThrice(), testing::KilledBySignal(number), "") << number;
  }
}

TEST_F(InterruptHandlerTest, EndsAProgramThatDoesNotHeedTheSecondUnlessItIsOnItsWayOut) {
  const auto interruptTwice = [](bool isOnItsWayOut) {
    StopSignal signal;
    std::optional<InterruptHandler> handler(std::in_place, signal);
    raise(SIGTERM);
    raise(SIGINT);
    if (isOnItsWayOut) handler.reset();
    std::this_thread::sleep_for(isOnItsWayOut ? std::chrono::milliseconds(2500) : std::chrono::minutes(10));
    std::_Exit(7);
  };
  EXPECT_EXIT(interruptTwice(false), testing::KilledBySignal(SIGINT), "");
  EXPECT_EXIT(interruptTwice(true), testing::ExitedWithCode(7), "");
}

TEST_F(SaveScopeTest, HoldsBackTheEndUntilTheLastSaveIsDone) {
  for (const int number : Interrupts) {
    const auto interruptSave = [&] {
      {
        const SaveScope save;
        {
          const SaveScope within;
          raise(number);
          raise(number);
          const SaveScope another; // of a thread that this one may be waiting for
        }
        static_cast<void>(write(STDERR_FILENO, "saved", 5));
      }
      std::_Exit(1);
    };
    EXPECT_EXIT(interruptSave(), testing::KilledBySignal(number), "saved") << number;
  }
}

TEST_F(SaveScopeTest, LeavesAloneWhatWasIgnored) {
  const auto interruptIgnored = [] {
    for (const int number : Interrupts)
      std::signal(number, SIG_IGN);
    const SaveScope save;
    for (const int number : Interrupts)
      raise(number);
    std::_Exit(7);
  };
  EXPECT_EXIT(interruptIgnored(), testing::ExitedWithCode(7), "");
}

} // namespace
} // namespace kx::platform
