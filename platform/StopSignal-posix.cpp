#include "platform/StopSignal.h"

#include "platform/Posix.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace kx::platform {

struct StopSignal::State {
  std::atomic<bool> Raised{false};
  posix::Descriptor Event{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
};

static_assert(std::atomic<bool>::is_always_lock_free, "raised in signal handlers");

StopSignal::StopSignal() : state_(std::make_unique<State>()) {}
StopSignal::~StopSignal() = default;

void StopSignal::Raise() noexcept {
  const int error = errno; // a signal handler must leave it alone
  state_->Raised.store(true);
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t count = write(state_->Event.Get(), &one, sizeof one);
  errno = error;
}

void StopSignal::Clear() noexcept {
  std::uint64_t count = 0;
  [[maybe_unused]] const ssize_t size = read(state_->Event.Get(), &count, sizeof count);
  state_->Raised.store(false);
}

bool StopSignal::IsRaised() const noexcept {
  return state_->Raised.load();
}

bool StopSignal::WaitFor(std::chrono::milliseconds time) const {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::min(time, std::chrono::milliseconds(std::chrono::hours(24 * 365)));
  while (!IsRaised()) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    if (left.count() <= 0) return false;
    pollfd event{state_->Event.Get(), POLLIN, 0};
    poll(&event, 1, static_cast<int>(std::min<std::int64_t>(left.count(), 60'000)));
  }
  return true;
}

std::intptr_t StopSignal::WaitHandle() const {
  return state_->Event.Get();
}

namespace {

constexpr std::array<int, 3> kInterrupts{SIGINT, SIGTERM, SIGHUP};

std::atomic<StopSignal*> interrupted{nullptr};
std::array<struct sigaction, kInterrupts.size()> previous;

void OnInterrupt(int number) {
  StopSignal* signal = interrupted.load();
  if (signal == nullptr) return;
  if (!signal->IsRaised()) {
    signal->Raise();
    return;
  }
  // Asked twice: whoever waits is in a hurry. It arrives when this handler has returned.
  struct sigaction ending {};
  ending.sa_handler = SIG_DFL;
  sigaction(number, &ending, nullptr);
  raise(number);
}

} // namespace

InterruptHandler::InterruptHandler(StopSignal& signal) {
  interrupted.store(&signal);
  struct sigaction action {};
  action.sa_handler = OnInterrupt;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  for (std::size_t i = 0; i < kInterrupts.size(); ++i) {
    sigaction(kInterrupts[i], nullptr, &previous[i]);
    const bool lent = kInterrupts[i] == SIGHUP && previous[i].sa_handler == SIG_IGN; // started by nohup
    if (!lent) sigaction(kInterrupts[i], &action, nullptr);
  }
}

InterruptHandler::~InterruptHandler() {
  for (std::size_t i = 0; i < kInterrupts.size(); ++i)
    sigaction(kInterrupts[i], &previous[i], nullptr);
  interrupted.store(nullptr);
}

} // namespace kx::platform
