#include "program/runner/LimitWatch.h"

namespace kx {

namespace {

// As often as the watcher of stops looks.
constexpr std::chrono::milliseconds Pause{20};

} // namespace

TLimitWatch::TLimitWatch(const TKxEvent& above, TLimitWatch* outer, std::chrono::seconds time,
                         std::chrono::seconds idle, std::function<void()> terminate)
    : above_(above), outer_(outer), time_(time), idle_(idle), terminate_(std::move(terminate)),
      thread_([this] { Watch(); }) {}

TLimitWatch::~TLimitWatch() {
  finished_.Raise();
  thread_.join();
}

void TLimitWatch::NoteWord() {
  const auto now = TRunClock::now();
  for (TLimitWatch* watch = this; watch != nullptr; watch = watch->outer_)
    watch->lastWord_ = now;
}

TLimitKind TLimitWatch::Look() const {
  const auto now = TRunClock::now();
  if (time_.count() > 0 && now - start_ >= time_) return TLimitKind::Time;
  if (idle_.count() > 0 && now - lastWord_.load() >= idle_) return TLimitKind::Idle;
  return TLimitKind::None;
}

// Whoever asked first has ended it: the user is never taken for a limit.
void TLimitWatch::Watch() {
  while (!finished_.WaitFor(Pause)) {
    if (above_.IsUrgent()) signal_.RaiseUrgently();
    if (above_.IsRaised()) signal_.Raise();
    if (!signal_.IsRaised()) reached_ = Look();
    if (reached_ == TLimitKind::None) continue;
    signal_.Raise();
    terminate_();
  }
}

} // namespace kx
