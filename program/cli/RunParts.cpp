#include "program/cli/RunParts.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/cli/Output.h"
#include "program/cli/PartArguments.h"
#include "program/cli/RunProject.h"
#include "program/cli/Usage.h"
#include "program/history/PassedParts.h"
#include "program/parts/PartsRun.h"
#include "program/parts/Resume.h"
#include "program/plan/Plan.h"
#include "program/runner/ActionGraph.h"
#include "program/runner/Messages.h"
#include "program/runner/Surroundings.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <chrono>
#include <span>
#include <thread>
#include <utility>

namespace kx::cli {

namespace {

// As many as there are processors, where the project says that actions may run side by side.
std::size_t JobsOf(const TPartsArguments& arguments, const TActionGraph& graph) {
  if (arguments.Jobs) return *arguments.Jobs;
  return graph.IsPlain() ? 1 : std::max(1U, std::thread::hardware_concurrency());
}

TResumeSettings SettingsOf(TProjectRunner& runner, THostSession& session, const TCommonOptions& common,
                           const TRunArguments& run) {
  std::string all;
  for (const auto* list : {&run.Variables, &run.Rules, &common.Overrides, &common.Plugins, &common.Drives})
    for (const auto& text : *list)
      all += text + "\n";
  if (const auto store = platform::ReadFile(session.Store().FileName())) all += *store;
  return {text::FromUtf8(all), TGates(run.Gates, runner.Project().Gates).CountFindings()};
}

// What became of a plain project's actions, each of which is a part: the outermost ones, in their order.
std::vector<TPartResult> ResultsOf(const TRunReport& report, std::size_t parts) {
  constexpr std::chrono::milliseconds rounded{1}; // times are whole ones
  std::vector<TPartResult> results;
  for (const TActionResult& action : report.Actions)
    if (action.Nesting == 0 && results.size() < parts)
      results.push_back({.Kind = action.Result,
                         .HasFindings = HasFindings(report), // one told by two actions is kept once
                         .Began = report.Began + action.Began,
                         .Ended = report.Began + action.Began + action.Elapsed + rounded});
  results.resize(parts);
  return results;
}

void StorePassed(const std::u16string& history, const history::TPassedParts& parts) {
  if (const auto trouble = history::RememberPassedParts(history, parts); !trouble.empty())
    WriteError(trouble);
}

// Of a run in this process, for a later one that resumes it. Solutions are not read any more once the user
// has stopped it: then nothing is known.
void RememberPassed(TProjectRunner& runner, const TRunReport& report, std::span<const std::size_t> places,
                    const std::u16string& history, const TResumeSettings& settings) {
  if (IsSuccess(report.Result)) return;
  history::TPassedParts passed;
  try {
    if (report.Result != TResultKind::Stopped) {
      const TPlan plan = MakePlan(runner, {}, places);
      const TResume resume(runner.Project(), plan, settings);
      passed = resume.Remember(ResultsOf(report, plan.Parts.size()), {}, {});
    }
    StorePassed(history, passed);
  } catch (const std::exception& error) { // the run has ended as it has, whatever is known of it later
    WriteError(u"What this run has done is not remembered for --resume. " + MessageOf(error));
  }
}

int RunInOneProcess(TProjectRunner& runner, THostSession& session, const TCommonOptions& common,
                    const TRunArguments& run, const std::vector<std::size_t>& places) {
  const std::u16string history = HistoryOf(common).FileFor(runner.Project().FileName);
  const bool remembers = !common.DryRun && !history.empty();
  const TResumeSettings settings = remembers ? SettingsOf(runner, session, common, run) : TResumeSettings();
  return RunProject(runner, session, common, run.Gates,
                    [&](std::span<IRunEventSink* const> sinks, TConsoleSink& /*console*/) {
                      TRunReport report = RunHere(runner, sinks);
                      if (remembers) RememberPassed(runner, report, places, history, settings);
                      return report;
                    });
}

// One run of several processes.
class TRunOfParts {
public:
  TRunOfParts(TProjectRunner& runner, THostSession& session, const TCommonOptions& common,
              const TRunArguments& run, const TGivenSecrets& secrets, const TPlan& plan)
      : runner_(runner), session_(session), common_(common), run_(run), secrets_(secrets), plan_(plan),
        resume_(runner.Project(), plan, SettingsOf(runner, session, common, run)),
        history_(HistoryOf(common).FileFor(runner.Project().FileName)) {}

  TRunReport Run(std::size_t jobs, const TPartsArguments& arguments, std::span<IRunEventSink* const> sinks,
                 TConsoleSink& console) {
    session_.Stop().Clear();
    TPartsSettings settings;
    settings.Jobs = jobs;
    settings.KeepGoing = arguments.KeepGoing;
    const auto known = arguments.Resume ? history::ReadPassedParts(history_) : history::TPassedParts();
    settings.PassedOver = resume_.MayPassOver(known);
    const auto places = CountUp(settings.PassedOver);
    if (runner_.HasUnstoredNumbers()) return RunAlone(places, settings.KeepGoing, sinks);
    settings.Process = ProcessOfParts(WordsOf(plan_.File, run_, common_), run_, secrets_);
    console.ExpectParts(plan_.Parts.size());
    auto [report, results, remarks] =
        RunParts(plan_, runner_.Project(), settings, session_.Stop(), sinks, console);
    for (const auto& remark : remarks)
      WriteError(remark);
    if (!IsSuccess(report.Result))
      StorePassed(history_, resume_.Remember(results, settings.PassedOver, known));
    Complete(report);
    for (IRunEventSink* sink : sinks)
      sink->On({report.Began + report.Elapsed, 0, TRunEnded{report}, report.Counts});
    return report;
  }

private:
  // Once, before anything begins, so that no order of the parts changes the numbers.
  std::vector<std::size_t> CountUp(const std::set<std::size_t>& passedOver) {
    std::set<std::size_t> remaining;
    for (std::size_t i = 0; i < plan_.Parts.size(); ++i)
      if (!passedOver.contains(i)) remaining.insert(plan_.Parts[i].Place);
    std::vector places(remaining.begin(), remaining.end());
    runner_.Choose({.Only = places});
    runner_.CountUp();
    return places;
  }

  // Processes of their own would read the numbers from the project's file, which is to stay as it is.
  TRunReport RunAlone(std::vector<std::size_t> places, bool keepGoing,
                      std::span<IRunEventSink* const> sinks) {
    WriteError(
        u"kxhost: --no-save keeps what is counted up within this process, so that all actions run in it, "
        u"one after the other.");
    runner_.Choose({.Only = std::move(places), .KeepGoing = keepGoing, .NumbersAreCounted = true});
    return RunHere(runner_, sinks);
  }

  void Complete(TRunReport& report) {
    report.File = runner_.Project().FileName;
    report.Surroundings = SurroundingsOf(text::ExtractFileDir(report.File));
    report.Surroundings.CommandLine = session_.CommandLine();
    session_.Secrets()->Mask(report.Surroundings.CommandLine);
  }

  TProjectRunner& runner_;
  THostSession& session_;
  const TCommonOptions& common_;
  const TRunArguments& run_;
  const TGivenSecrets& secrets_;
  const TPlan& plan_;
  const TResume resume_;
  const std::u16string history_;
};

} // namespace

void DefineParts(CLI::App& command, TPartsArguments& arguments) {
  command
      .add_option("--jobs", arguments.Jobs,
                  "So many parts at a time, each a process of its own (default: 1, and as many as there are "
                  "processors where the project has needs, groups or parallel loops)")
      ->type_name("N")
      ->check(CLI::Range(1, 1024));
  command.add_flag("--keep-going", arguments.KeepGoing,
                   "Behind a failure, run everything that does not need what failed");
  command.add_flag("--resume", arguments.Resume,
                   "Pass over what the last run did before it failed, where nothing has changed since");
}

int RunActions(TProjectRunner& runner, THostSession& session, const TCommonOptions& common,
               const TRunArguments& run, const TGivenSecrets& secrets, const std::vector<std::string>& names,
               const TPartsArguments& arguments) {
  const TActionGraph graph(runner.Project());
  const auto places = PlacesOf(runner.Project(), names);
  const std::size_t jobs = JobsOf(arguments, graph);
  if (common.DryRun || (jobs == 1 && graph.IsPlain() && !arguments.Resume)) {
    runner.Choose({.Only = places, .KeepGoing = arguments.KeepGoing});
    return RunInOneProcess(runner, session, common, run, places);
  }
  const TPlan plan = MakePlan(runner, UsualTimes(runner, common), places);
  RequireNoClash(plan);
  TRunOfParts parts(runner, session, common, run, secrets, plan);
  return RunProject(runner, session, common, run.Gates,
                    [&](std::span<IRunEventSink* const> sinks, TConsoleSink& console) {
                      return parts.Run(jobs, arguments, sinks, console);
                    });
}

} // namespace kx::cli
