// Runs programs and keeps what they write.
#pragma once

#include "foundation/platform/Process.h"
#include "foundation/text/CommandLine.h"
#include "foundation/text/WindowsPath.h"
#include "tests/support/Processes.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <thread>

namespace kx::platform {

class Process : public testing::Test, protected tests::TTemporaryFolder {
protected:
  // tests/support/TestTool.cpp says what the commands do.
  static ProcessRequest Tool(const std::vector<std::u16string>& commands) {
    std::u16string arguments;
    for (const std::u16string& command : commands)
      arguments += text::QuoteArgument(command) + u" ";
    return {text::JoinPath(ProgramDirectory(), KX_TEST_TOOL), arguments, u"", {}};
  }

  // `onLine` sees each line of standard output.
  Result<ProcessOutcome> Run(const ProcessRequest& request,
                             const std::function<void(std::u16string_view)>& onLine = {}) {
    out_.clear();
    err_.clear();
    ProcessOutput output;
    output.OnStdOut = [&](std::u16string_view line) {
      out_.emplace_back(line);
      if (onLine) onLine(line);
    };
    output.OnStdErr = [&](std::u16string_view line) { err_.emplace_back(line); };
    const StopSignal* stops[] = {&otherStop_, &stop_};
    return RunProcess(request, output, stops);
  }

  int ExitCode(const ProcessRequest& request) {
    const auto outcome = Run(request);
    EXPECT_TRUE(outcome && !outcome->Stopped);
    return outcome ? outcome->ExitCode : -1;
  }

  // The request prints the number of the process that must not survive a stop.
  void ExpectNothingIsLeft(const char* name, const ProcessRequest& request) {
    stop_.Clear();
    std::jthread stopper;
    const auto outcome = Run(request, [&](std::u16string_view) {
      stopper = std::jthread([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20)); // nothing is read meanwhile
        stop_.Raise();
      });
    });
    EXPECT_TRUE(outcome && outcome->Stopped) << name;
    ASSERT_EQ(out_.size(), 1U) << name;
    EXPECT_FALSE(tests::IsRunning(out_[0])) << name << " " << testing::PrintToString(out_[0]);
  }

  StopSignal stop_, otherStop_;
  std::vector<std::u16string> out_, err_;
};

} // namespace kx::platform
