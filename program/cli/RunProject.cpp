#include "program/cli/RunProject.h"

#include "foundation/platform/Console.h"
#include "foundation/platform/Files.h"
#include "foundation/platform/System.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/WindowsPath.h"
#include "program/cli/CommonOptions.h"
#include "program/cli/ConsoleSink.h"
#include "program/cli/FileKinds.h"
#include "program/cli/HostSession.h"
#include "program/cli/Output.h"
#include "program/cli/RunOutputs.h"
#include "program/cli/Usage.h"
#include "program/history/RunRecorder.h"
#include "program/runner/Project.h"

#include <algorithm>
#include <memory>

namespace kx::cli {

namespace {

// What the actions will change, as far as it can be told; asked only about a file that no run has left.
bool IsChangedByRun(const TProjectRunner& runner, std::u16string_view file) {
  if (!platform::FileExists(file) || IsLeftByRun(file)) return false;
  const text::TStringList changed = runner.FilesToChange();
  return std::ranges::any_of(changed, [file](const auto& other) { return IsSameFile(file, other); });
}

std::unique_ptr<TJsonLinesSink> OpenLog(const TCommonOptions& options) {
  if (options.LogFile.empty()) return nullptr;
  auto log = TJsonLinesSink::Create(text::FromUtf8(options.LogFile));
  if (!log) throw EUsage(u"--log: " + log.Message());
  return *std::move(log);
}

std::u16string TitleOf(TProjectRunner& runner) {
  const TProject& project = runner.Project();
  if (!project.Name.empty()) return project.Name;
  return project.FileName.empty() ? u"kxhost" : text::ExtractFileName(project.FileName);
}

// Only a terminal shows them.
history::TUsualTimes UsualTimes(TProjectRunner& runner, const TCommonOptions& options) {
  if (!CanSteerTerminal()) return {};
  return history::ReadUsualTimes(HistoryOf(options).FileFor(runner.Project().FileName));
}

} // namespace

int RunProject(TProjectRunner& runner, THostSession& session, const TCommonOptions& options,
               const TGateArguments& gateArguments) {
  const TGates gates(gateArguments, runner.Project().Gates);
  RequireHarmlessOutput(options, gates,
                        {runner.Project().FileName, session.Store().FileName(), session.KeyFile()},
                        [&runner](std::u16string_view file) { return IsChangedByRun(runner, file); });
  const auto log = OpenLog(options);
  if (log) runner.AddSink(*log);
  TReports reports(options, TitleOf(runner));
  reports.ForEachSink([&runner](IRunEventSink& sink) { runner.AddSink(sink); });
  history::TRunRecorder history(HistoryOf(options), runner.Project().FileName);
  runner.AddSink(history);
  if (options.DryRun) Print("Dry run: no tool is started and no file is changed.\n\n");
  const platform::InterruptHandler interrupts(session.Stop()); // what the run leaves is written in any case
  TRunReport report;
  {
    TConsoleSink console(options.Verbosity, ChoosePalette(options.Color), ChooseCiDialect(options.Ci),
                         UsualTimes(runner, options));
    runner.AddSink(console);
    report = runner.Run();
  }
  if (const std::u16string trouble = history.Finish(report); !trouble.empty()) WriteError(trouble);
  return EndRun(report, reports, log.get(), gates, options);
}

} // namespace kx::cli
