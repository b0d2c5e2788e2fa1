#include "foundation/platform/StopSignal.h"

#include "foundation/platform/Win32.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>

namespace kx::platform {

struct StopSignal::State {
  std::atomic<bool> Raised{false};
  std::atomic<bool> Urgent{false};
  win32::Handle Event{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};

StopSignal::StopSignal() : state_(std::make_unique<State>()) {}
StopSignal::~StopSignal() = default;

void StopSignal::Raise() noexcept {
  state_->Raised.store(true);
  SetEvent(state_->Event.Get());
}

void StopSignal::RaiseUrgently() noexcept {
  state_->Urgent.store(true);
  Raise();
}

void StopSignal::Clear() noexcept {
  ResetEvent(state_->Event.Get());
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
    WaitForSingleObject(state_->Event.Get(),
                        static_cast<DWORD>(std::min<std::int64_t>(left.count(), 60'000)));
  }
  return true;
}

std::intptr_t StopSignal::WaitHandle() const {
  return reinterpret_cast<std::intptr_t>(state_->Event.Get());
}

namespace {

constexpr std::chrono::seconds kTimeToEnd(2); // from an urgent stop on

std::mutex guard; // the system calls the handler on a thread of its own
std::condition_variable changed;
StopSignal* interrupted = nullptr;
int saves = 0;
bool isEnding = false;

// While the handler waits here, the program goes on; when it returns, the system ends the program.
void WaitForSaves(std::unique_lock<std::mutex>& lock) {
  isEnding = true;
  changed.wait(lock, [] { return saves == 0; });
}

// True when the program goes on.
bool RaiseInterrupted(bool urgently) {
  std::unique_lock lock(guard);
  StopSignal* const signal = interrupted;
  if (signal != nullptr && !signal->IsUrgent()) {
    if (!urgently && !signal->IsRaised()) {
      signal->Raise();
      return true;
    }
    signal->RaiseUrgently();
    if (changed.wait_for(lock, kTimeToEnd, [&] { return interrupted != signal; })) return true;
  }
  WaitForSaves(lock);
  return false;
}

BOOL WINAPI OnInterrupt(DWORD event) {
  const bool isClosing = event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT;
  const bool goesOn = RaiseInterrupted(isClosing);
  if (!isClosing || !goesOn) return goesOn ? TRUE : FALSE;
  // The window closes or the user goes: the program ends with this call's return, after a few seconds in any
  // case. Until then it can end by itself.
  Sleep(INFINITE);
  return TRUE;
}

// For the rest of the program's life: without a signal to raise it does what the system would do.
void TakeInterrupts() {
  static std::once_flag once;
  std::call_once(once, [] { SetConsoleCtrlHandler(OnInterrupt, TRUE); });
}

} // namespace

InterruptHandler::InterruptHandler(StopSignal& signal) {
  TakeInterrupts();
  const std::lock_guard lock(guard);
  interrupted = &signal;
}

InterruptHandler::~InterruptHandler() {
  const std::lock_guard lock(guard);
  interrupted = nullptr;
  changed.notify_all();
}

SaveScope::SaveScope() {
  TakeInterrupts();
  std::unique_lock lock(guard);
  // One that begins behind the end is none; beside another it may be what that one waits for.
  if (isEnding && saves == 0) changed.wait(lock, [] { return false; });
  ++saves;
}

SaveScope::~SaveScope() {
  const std::lock_guard lock(guard);
  --saves;
  changed.notify_all();
}

} // namespace kx::platform
