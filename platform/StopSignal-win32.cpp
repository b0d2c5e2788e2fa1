#include "platform/StopSignal.h"

#include "platform/Win32.h"

#include <algorithm>
#include <atomic>
#include <mutex>

namespace kx::platform {

struct StopSignal::State {
  std::atomic<bool> Raised{false};
  win32::Handle Event{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};

StopSignal::StopSignal() : state_(std::make_unique<State>()) {}
StopSignal::~StopSignal() = default;

void StopSignal::Raise() noexcept {
  state_->Raised.store(true);
  SetEvent(state_->Event.Get());
}

void StopSignal::Clear() noexcept {
  ResetEvent(state_->Event.Get());
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
    WaitForSingleObject(state_->Event.Get(),
                        static_cast<DWORD>(std::min<std::int64_t>(left.count(), 60'000)));
  }
  return true;
}

std::intptr_t StopSignal::WaitHandle() const {
  return reinterpret_cast<std::intptr_t>(state_->Event.Get());
}

namespace {

std::mutex guard; // the system calls the handler on a thread of its own
StopSignal* interrupted = nullptr;

// True when it was the first request of this run.
bool RaiseInterrupted() {
  const std::lock_guard lock(guard);
  if (interrupted == nullptr || interrupted->IsRaised()) return false;
  interrupted->Raise();
  return true;
}

BOOL WINAPI OnInterrupt(DWORD event) {
  const bool first = RaiseInterrupted();
  if (event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT) return first ? TRUE : FALSE;
  // The window closes or the user goes: the program ends with this call's return, after a few seconds in any
  // case. Until then the run can end its tools.
  Sleep(INFINITE);
  return TRUE;
}

} // namespace

InterruptHandler::InterruptHandler(StopSignal& signal) {
  const std::lock_guard lock(guard);
  interrupted = &signal;
  SetConsoleCtrlHandler(OnInterrupt, TRUE);
}

InterruptHandler::~InterruptHandler() {
  const std::lock_guard lock(guard);
  SetConsoleCtrlHandler(OnInterrupt, FALSE);
  interrupted = nullptr;
}

} // namespace kx::platform
