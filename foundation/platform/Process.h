// Runs one program and reads what it writes.
#pragma once

#include "foundation/platform/ProcessInput.h"
#include "foundation/platform/Result.h"
#include "foundation/platform/StopSignal.h"

#include <chrono>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kx::platform {

struct ProcessRequest {
  std::u16string Executable; // a full path
  // Everything behind the program's name, exactly as it is to be passed. Where a system wants single
  // arguments, the text is split by the rules of the Windows C runtime (foundation/text/CommandLine.h).
  std::u16string Arguments;
  // Empty: the current folder. Windows takes no long path here; the tool then sees the folder's short one.
  std::u16string WorkingDirectory;
  std::vector<std::pair<std::u16string, std::u16string>>
      Environment;                       // added to, or replacing, the caller's own
  std::chrono::milliseconds Grace{1000}; // between a polite request to end and the end by force
  std::shared_ptr<ProcessInput> Input{}; // what it reads, for this one run; null: nothing
};

// Whole lines, without their line ends, in the order read; what the tool wrote last without a line end is a
// line too. Called on the thread that runs the process. A line of well-formed UTF-8 is that; any other is in
// the console's or the ANSI page (text::ToolOutputDecoder). A line beyond 64 MiB is delivered in pieces.
struct ProcessOutput {
  std::function<void(std::u16string_view line)> OnStdOut;
  std::function<void(std::u16string_view line)> OnStdErr;
};

struct ProcessOutcome {
  int ExitCode = 0;     // 128 + the signal's number for a tool that a signal ended (Windows: the exception's)
  bool Stopped = false; // ended by one of the stop signals; the exit code then means nothing
};

// Starts the program and returns when it has ended. A stop signal, raised before or during the run, ends the
// program and everything it started: first politely (SIGTERM; Ctrl-Break where there is a console), after the
// time of grace, or once the stop is urgent, by force. The end of this program, however it comes, ends them
// too. Pipes that the tool's own left-behind servers still hold open are not waited for. An exception of a
// callback ends the tool and passes on.
Result<ProcessOutcome> RunProcess(const ProcessRequest& request, const ProcessOutput& output,
                                  std::span<const StopSignal* const> stops);

// "signal 11 (SIGSEGV)", "the exception 0xC0000005": what ended a program with this exit code, as systems and
// shells say it; empty for one that ended by itself.
std::u16string FaultOfExitCode(int code);

} // namespace kx::platform
