// The limits of one attempt of an action: how long it may take, and how long it may say nothing.
#pragma once

#include "contract/Process.h"
#include "program/runner/EventLog.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

namespace kx {

enum class TLimitKind { None, Time, Idle };

// While it lives, a thread of its own raises the signal when a limit is reached, and when the stop above it
// is raised, which is no limit: what runs under it is given this signal to end by.
class TLimitWatch {
public:
  // 0: no limit. `above` outlives it, as does the watch of an action around (null: there is none).
  // `terminate` tells the running action to end, on that thread, again and again until this object goes.
  TLimitWatch(const TKxEvent& above, TLimitWatch* outer, std::chrono::seconds time, std::chrono::seconds idle,
              std::function<void()> terminate);
  ~TLimitWatch();
  TLimitWatch(const TLimitWatch&) = delete;
  TLimitWatch& operator=(const TLimitWatch&) = delete;

  const TKxEvent& Signal() const { return signal_; }
  void NoteWord(); // something was said: neither it nor one around is idle
  TLimitKind Reached() const { return reached_; }

private:
  void Watch();
  TLimitKind Look() const;

  const TKxEvent& above_;
  TLimitWatch* const outer_;
  const std::chrono::seconds time_;
  const std::chrono::seconds idle_;
  const std::function<void()> terminate_;
  const TRunClock::time_point start_ = TRunClock::now();
  std::atomic<TRunClock::time_point> lastWord_ = start_;
  std::atomic<TLimitKind> reached_ = TLimitKind::None;
  TKxEvent signal_;
  TKxEvent finished_;
  std::thread thread_; // last: it uses all of the above
};

} // namespace kx
