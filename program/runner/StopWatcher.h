// Tells the running action that the user has asked to stop.
#pragma once

#include "contract/Actions.h"

#include <condition_variable>
#include <mutex>
#include <stop_token>
#include <thread>
#include <vector>

namespace kx {

// While it lives, a thread of its own waits for the signal and calls TerminateAction of the innermost running
// action that can be terminated: processes end by the signal itself, but an action may be busy with something
// else. The calls are over when the destructor returns.
class TStopWatcher {
public:
  explicit TStopWatcher(const TKxEvent& stop);

  void Enter(TCustomKxAction& action);
  void Leave();

private:
  void Watch(const std::stop_token& finished);
  void TellCurrent();

  const TKxEvent& stop_;
  std::mutex mutex_;
  std::condition_variable_any changed_;
  std::vector<TCustomKxAction*> running_;
  TCustomKxAction* told_ = nullptr;
  std::jthread thread_; // last: it uses all of the above
};

} // namespace kx
