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
#include <vector>

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

// The sinks hear of a runner while this lives.
class TListeningScope {
public:
  TListeningScope(TProjectRunner& runner, std::span<IRunEventSink* const> sinks)
      : runner_(runner), sinks_(sinks) {
    for (IRunEventSink* sink : sinks_)
      runner_.AddSink(*sink);
  }
  ~TListeningScope() {
    for (IRunEventSink* sink : sinks_)
      runner_.RemoveSink(*sink);
  }
  TListeningScope(const TListeningScope&) = delete;
  TListeningScope& operator=(const TListeningScope&) = delete;

private:
  TProjectRunner& runner_;
  std::span<IRunEventSink* const> sinks_;
};

} // namespace

TRunReport RunHere(TProjectRunner& runner, std::span<IRunEventSink* const> sinks) {
  const TListeningScope listening(runner, sinks);
  return runner.Run();
}

history::TUsualTimes UsualTimes(TProjectRunner& runner, const TCommonOptions& options) {
  if (!CanSteerTerminal()) return {};
  return history::ReadUsualTimes(HistoryOf(options).FileFor(runner.Project().FileName));
}

int RunProject(TProjectRunner& runner, THostSession& session, const TCommonOptions& options,
               const TGateArguments& gateArguments, const TRunWay& way) {
  const TGates gates(gateArguments, runner.Project().Gates);
  RequireHarmlessOutput(options, gates,
                        {runner.Project().FileName, session.Store().FileName(), session.KeyFile()},
                        [&runner](std::u16string_view file) { return IsChangedByRun(runner, file); });
  const auto log = OpenLog(options);
  std::vector<IRunEventSink*> sinks;
  if (log) sinks.push_back(log.get());
  TReports reports(options, TitleOf(runner));
  reports.ForEachSink([&sinks](IRunEventSink& sink) { sinks.push_back(&sink); });
  history::TRunRecorder history(HistoryOf(options), runner.Project().FileName);
  sinks.push_back(&history);
  if (options.DryRun) Print("Dry run: no tool is started and no file is changed.\n\n");
  const platform::InterruptHandler interrupts(session.Stop()); // what the run leaves is written in any case
  TRunReport report;
  {
    TConsoleSink console(options.Verbosity, ChoosePalette(options.Color), ChooseCiDialect(options.Ci),
                         UsualTimes(runner, options));
    sinks.push_back(&console);
    report = way ? way(sinks, console) : RunHere(runner, sinks);
  }
  if (const std::u16string trouble = history.Finish(report); !trouble.empty()) WriteError(trouble);
  return EndRun(report, reports, log.get(), gates, options);
}

} // namespace kx::cli
