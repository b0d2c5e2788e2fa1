#include "program/runner/StopWatcher.h"

namespace kx {

namespace {

// The signal has no way to wake a thread that waits for the end of the run too, so it is looked at.
constexpr std::chrono::milliseconds Pause{20};

} // namespace

TStopWatcher::TStopWatcher(const TKxEvent& stop) : stop_(stop), thread_([this] { Watch(); }) {}

TStopWatcher::~TStopWatcher() {
  finished_.Raise();
  thread_.join();
}

void TStopWatcher::Enter(TCustomKxAction& action) {
  const std::scoped_lock lock(mutex_);
  running_.push_back(&action);
}

void TStopWatcher::Leave() {
  const std::scoped_lock lock(mutex_);
  running_.pop_back();
  told_ = nullptr;
}

void TStopWatcher::BeginAttempt() {
  const std::scoped_lock lock(mutex_);
  told_ = nullptr;
}

void TStopWatcher::Tell() {
  const std::scoped_lock lock(mutex_);
  TellCurrent();
}

// Waits for the system's own event: the condition variables of some run-time libraries lose the end of a
// wait.
void TStopWatcher::Watch() {
  while (!finished_.WaitFor(Pause)) {
    const std::scoped_lock lock(mutex_);
    if (stop_.IsRaised()) TellCurrent();
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
