// A flag that another thread or a signal handler raises and that a waiting thread notices at once.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>

namespace kx::platform {

class StopSignal {
public:
  StopSignal();
  ~StopSignal();
  StopSignal(const StopSignal&) = delete;
  StopSignal& operator=(const StopSignal&) = delete;

  void Raise() noexcept; // safe in a signal handler and from any thread
  // Raised, and no more time for good manners: the user has asked twice, or the terminal is gone. As safe.
  void RaiseUrgently() noexcept;
  void Clear() noexcept;
  bool IsRaised() const noexcept;
  bool IsUrgent() const noexcept;
  // True as soon as it is raised; false when the time is over.
  bool WaitFor(std::chrono::milliseconds time) const;

  // What the process runner waits on (a file descriptor, an event handle).
  std::intptr_t WaitHandle() const;

private:
  struct State;
  std::unique_ptr<State> state_;
};

// Whether one of them has been raised.
bool AnyRaised(std::span<const StopSignal* const> signals);
bool AnyUrgent(std::span<const StopSignal* const> signals);

// While it lives, an interrupt from the terminal (Ctrl-C, on Windows Ctrl-Break too) or a request to
// terminate raises the signal instead of ending the program. A second one within the same run, or the closing
// of the terminal, raises it urgently; a program that has not let this object go two seconds later is ended.
// A third one ends it at once. One at a time.
class InterruptHandler {
public:
  explicit InterruptHandler(StopSignal& signal);
  ~InterruptHandler();
  InterruptHandler(const InterruptHandler&) = delete;
  InterruptHandler& operator=(const InterruptHandler&) = delete;
};

// What is written while it lives is written to its end: an interrupt or request that would end the program
// takes effect when the last of these is gone.
class SaveScope {
public:
  SaveScope();
  ~SaveScope();
  SaveScope(const SaveScope&) = delete;
  SaveScope& operator=(const SaveScope&) = delete;
};

} // namespace kx::platform
