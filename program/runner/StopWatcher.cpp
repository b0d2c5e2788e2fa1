#include "program/runner/StopWatcher.h"

namespace kx {

namespace {

// The signal has no way to wake a thread that waits for the end of the run too, so it is looked at.
constexpr std::chrono::milliseconds Pause{20};

} // namespace

TStopWatcher::TStopWatcher(const TKxEvent& stop)
    : stop_(stop), thread_([this](const std::stop_token& finished) { Watch(finished); }) {}

void TStopWatcher::Enter(TCustomKxAction& action) {
  const std::scoped_lock lock(mutex_);
  running_.push_back(&action);
}

void TStopWatcher::Leave() {
  const std::scoped_lock lock(mutex_);
  running_.pop_back();
  told_ = nullptr;
}

void TStopWatcher::Watch(const std::stop_token& finished) {
  std::unique_lock lock(mutex_);
  while (!finished.stop_requested()) {
    if (stop_.IsRaised()) TellCurrent();
    changed_.wait_for(lock, finished, Pause, [] { return false; });
  }
}

void TStopWatcher::TellCurrent() {
  if (running_.empty() || told_ == running_.back()) return;
  told_ = running_.back();
  try {
    if (told_->CanTerminate()) told_->TerminateAction();
  } catch (...) {
    // An action that fails to stop goes on to its end; there is nobody here to tell.
  }
}

} // namespace kx
