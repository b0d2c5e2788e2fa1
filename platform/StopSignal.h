// A flag that another thread or a signal handler raises and that a waiting thread notices at once.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

namespace kx::platform {

class StopSignal {
public:
  StopSignal();
  ~StopSignal();
  StopSignal(const StopSignal&) = delete;
  StopSignal& operator=(const StopSignal&) = delete;

  void Raise() noexcept; // safe in a signal handler and from any thread
  void Clear() noexcept;
  bool IsRaised() const noexcept;
  // True as soon as it is raised; false when the time is over.
  bool WaitFor(std::chrono::milliseconds time) const;

  // What the process runner waits on (a file descriptor, an event handle).
  std::intptr_t WaitHandle() const;

private:
  struct State;
  std::unique_ptr<State> state_;
};

// While it lives, an interrupt from the terminal (Ctrl-C, on Windows Ctrl-Break and the closing of the
// window too) or a request to terminate raises the signal instead
// of ending the program; a second one within the same run ends it. One at a time.
class InterruptHandler {
public:
  explicit InterruptHandler(StopSignal& signal);
  ~InterruptHandler();
  InterruptHandler(const InterruptHandler&) = delete;
  InterruptHandler& operator=(const InterruptHandler&) = delete;
};

} // namespace kx::platform
