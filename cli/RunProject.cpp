#include "cli/Common.h"
#include "cli/ConsoleSink.h"
#include "platform/Console.h"
#include "runner/JsonLinesSink.h"
#include "text/Encoding.h"

namespace kx::cli {

namespace {

int ExitCodeOf(const TRunReport& report) {
  if (report.Stopped) return ExitStopped;
  return report.Succeeded ? ExitSuccess : ExitFailed;
}

std::unique_ptr<TJsonLinesSink> OpenLog(const TCommonOptions& options) {
  if (options.LogFile.empty()) return nullptr;
  auto log = TJsonLinesSink::Create(text::FromUtf8(options.LogFile));
  if (!log) throw EUsage(u"--log: " + log.Message());
  return *std::move(log);
}

} // namespace

int RunProject(TProjectRunner& runner, THostSession& session, const TCommonOptions& options) {
  const TPalette palette = ChoosePalette(options.Color);
  const auto log = OpenLog(options);
  if (log) runner.AddSink(*log);
  TRunReport report;
  {
    TConsoleSink console(options.Verbosity, palette);
    runner.AddSink(console);
    const platform::InterruptHandler interrupts(session.Stop());
    report = runner.Run();
  }
  platform::WriteConsole(platform::ConsoleStream::Output, EndTable(report.Actions, palette));
  if (log && log->HasFailed())
    WriteError(u"Warning : the log " + text::FromUtf8(options.LogFile) +
               u" could not be written completely.");
  return ExitCodeOf(report);
}

} // namespace kx::cli
