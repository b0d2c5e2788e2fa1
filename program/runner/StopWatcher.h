// Tells the running action that the user has asked to stop.
#pragma once

#include "contract/Actions.h"

#include <mutex>
#include <thread>
#include <vector>

namespace kx {

// While it lives, a thread of its own waits for the signal and calls TerminateAction of the innermost running
// action that can be terminated: processes end by the signal itself, but an action may be busy with something
// else. The calls are over when the destructor returns.
class TStopWatcher {
public:
  explicit TStopWatcher(const TKxEvent& stop);
  ~TStopWatcher();
  TStopWatcher(const TStopWatcher&) = delete;
  TStopWatcher& operator=(const TStopWatcher&) = delete;

  void Enter(TCustomKxAction& action);
  void Leave();
  void BeginAttempt(); // of the innermost: what it was told was for the attempt before
  void Tell();         // the innermost, whatever the signal says

private:
  void Watch();
  void TellCurrent();

  const TKxEvent& stop_;
  std::mutex mutex_;
  std::vector<TCustomKxAction*> running_;
  TCustomKxAction* told_ = nullptr;
  TKxEvent finished_;
  std::thread thread_; // last: it uses all of the above
};

} // namespace kx
