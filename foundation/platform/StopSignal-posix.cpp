#include "foundation/platform/StopSignal.h"

#include "foundation/platform/Posix.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace kx::platform {

struct StopSignal::State {
  std::atomic<bool> Raised{false};
  std::atomic<bool> Urgent{false};
  posix::Descriptor Event{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
};

static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free,
              "raised in signal handlers");

StopSignal::StopSignal() : state_(std::make_unique<State>()) {}
StopSignal::~StopSignal() = default;

void StopSignal::Raise() noexcept {
  const int error = errno; // a signal handler must leave it alone
  state_->Raised.store(true);
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t count = write(state_->Event.Get(), &one, sizeof one);
  errno = error;
}

void StopSignal::RaiseUrgently() noexcept {
  state_->Urgent.store(true);
  Raise();
}

void StopSignal::Clear() noexcept {
  std::uint64_t count = 0;
  [[maybe_unused]] const ssize_t size = read(state_->Event.Get(), &count, sizeof count);
  state_->Raised.store(false);
  state_->Urgent.store(false);
}

bool StopSignal::IsRaised() const noexcept {
  return state_->Raised.load();
}

bool StopSignal::IsUrgent() const noexcept {
  return state_->Urgent.load();
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

constexpr unsigned kSecondsToEnd = 2; // from an urgent stop on
constexpr std::array<int, 3> kInterrupts{SIGINT, SIGTERM, SIGHUP};

// What the handler knows. It may run on any thread, beside everything else.
std::atomic<StopSignal*> interrupted{nullptr};
std::atomic<bool> hasTerminal{false}; // when `interrupted` was set
std::array<std::atomic<bool>, kInterrupts.size()> wereIgnored{};
std::atomic<int> lastInterrupt{SIGTERM};
std::atomic<int> saves{0};
std::atomic<int> ending{0}; // the signal that ends the program as soon as no save is under way

[[noreturn]] void End(int number) {
  struct sigaction action {};
  action.sa_handler = SIG_DFL;
  sigaction(number, &action, nullptr);
  sigset_t only;
  sigemptyset(&only);
  sigaddset(&only, number);
  pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
  raise(number);
  _exit(128 + number); // never reached
}

void EndWhenSaved(int number) {
  ending.store(number);
  if (saves.load() == 0) End(number);
}

bool OpensTerminal() {
  return posix::Descriptor(open("/dev/tty", O_RDONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)).IsOpen();
}

bool WasIgnored(int number) {
  const auto place = std::ranges::find(kInterrupts, number) - kInterrupts.begin();
  return wereIgnored[static_cast<std::size_t>(place)].load();
}

void Handle(int number, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  for (const int interrupt : kInterrupts)
    sigaddset(&action.sa_mask, interrupt);
  sigaction(number, &action, nullptr);
}

void OnDeadline(int /*alarm*/) {
  EndWhenSaved(lastInterrupt.load());
}

void Interrupt(int number) {
  StopSignal* const signal = interrupted.load();
  if (signal == nullptr) {
    if (!WasIgnored(number)) EndWhenSaved(number);
    return;
  }
  lastInterrupt.store(number);
  const bool isUrgent = signal->IsRaised() || (number == SIGHUP && hasTerminal.load() && !OpensTerminal());
  if (!isUrgent) {
    signal->Raise();
  } else if (!signal->IsUrgent()) {
    signal->RaiseUrgently();
    Handle(SIGALRM, OnDeadline); // no sooner: until now the alarm is whoever's it was
    alarm(kSecondsToEnd);
  } else {
    EndWhenSaved(number);
  }
}

void OnInterrupt(int number) {
  const int error = errno; // a signal handler must leave it alone
  Interrupt(number);
  errno = error;
}

// For the rest of the program's life: without a signal to raise they do what the system would do.
void TakeInterrupts() {
  static std::once_flag once;
  std::call_once(once, [] {
    for (std::size_t i = 0; i < kInterrupts.size(); ++i) {
      struct sigaction before {};
      sigaction(kInterrupts[i], nullptr, &before);
      const bool isIgnored = before.sa_handler == SIG_IGN;
      wereIgnored[i].store(isIgnored);
      const bool lent = kInterrupts[i] == SIGHUP && isIgnored; // started by nohup
      if (!lent) Handle(kInterrupts[i], OnInterrupt);
    }
  });
}

void LeaveSave() {
  const bool isLast = saves.fetch_sub(1) == 1;
  const int number = ending.load();
  if (isLast && number != 0) End(number);
}

} // namespace

InterruptHandler::InterruptHandler(StopSignal& signal) {
  TakeInterrupts();
  hasTerminal.store(OpensTerminal());
  interrupted.store(&signal);
}

InterruptHandler::~InterruptHandler() {
  interrupted.store(nullptr);
  alarm(0);
}

SaveScope::SaveScope() {
  TakeInterrupts();
  // One that begins behind the end is none; beside another it may be what that one waits for.
  if (saves.fetch_add(1) == 0 && ending.load() != 0) LeaveSave();
}

SaveScope::~SaveScope() {
  LeaveSave();
}

} // namespace kx::platform
