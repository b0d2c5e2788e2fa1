#include "foundation/platform/StopSignal.h"

#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

namespace kx::platform {
namespace {

constexpr std::initializer_list<int> Interrupts{SIGINT, SIGTERM, SIGHUP};

void Expect(bool isTrue, int codeElse) {
  if (!isTrue) std::_Exit(codeElse);
}

[[noreturn]] void WaitForTheEnd() {
  for (;;)
    pause();
}

TEST(InterruptHandler, RaisesTheSignalThenUrgentlyAndEndsTheProgramAtTheThird) {
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

TEST(InterruptHandler, EndsAProgramThatDoesNotHeedTheSecond) {
  const auto sleepThroughBoth = [] {
    StopSignal signal;
    const InterruptHandler handler(signal);
    raise(SIGTERM);
    raise(SIGINT);
    WaitForTheEnd();
  };
  EXPECT_EXIT(sleepThroughBoth(), testing::KilledBySignal(SIGINT), "");
}

TEST(InterruptHandler, LeavesAProgramItsTimeThatIsOnItsWayOut) {
  const auto endSlowly = [] {
    StopSignal signal;
    {
      const InterruptHandler handler(signal);
      raise(SIGTERM);
      raise(SIGINT);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2500));
    std::_Exit(7);
  };
  EXPECT_EXIT(endSlowly(), testing::ExitedWithCode(7), "");
}

TEST(SaveScope, HoldsBackTheEndUntilTheLastSaveIsDone) {
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

TEST(SaveScope, LeavesAloneWhatWasIgnored) {
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
