// Processes that actions run through the host.
#pragma once

#include "foundation/platform/StopSignal.h"

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace kx {

// The host's event object: one side raises it, the other waits.
using TKxEvent = platform::StopSignal;

// What is said of work that ended because the user asked for it.
inline constexpr std::u16string_view TerminatedByUser = u"Action Terminated by User.";
// Raises EKxException with it when there is a `stop` and it is raised.
void RaiseIfStopped(const TKxEvent* stop);

// Reported for a run that a stop request of the user ended.
inline constexpr int ExitCodeTerminated = 999;

class IKxProcess;

struct TKxProcessSettings {
  std::u16string Executable;
  std::u16string Parameters; // exactly as passed
  std::u16string StartingDirectory;
  const TKxEvent* TerminateEvent = nullptr; // besides the host's own stop request
  // Whole lines; called on the thread that runs the process.
  std::function<void(IKxProcess& process, std::u16string_view text)> OnStdOutData;
  std::function<void(IKxProcess& process, std::u16string_view text)> OnStdErrData;
};

class IKxProcess {
public:
  virtual ~IKxProcess() = default;
  virtual TKxProcessSettings& Settings() = 0;
  // Runs to the end. Raises EKxException when the program cannot be started.
  virtual void Run() = 0;
  virtual int GetExitCode() const = 0; // ExitCodeTerminated after a stop
};

// The real one: the program is started on this machine. `stop` outlives the process.
std::shared_ptr<IKxProcess> NewSystemProcess(const TKxEvent& stop);

} // namespace kx
