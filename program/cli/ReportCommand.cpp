// kxhost report: what runs would have reported, from their logs.
#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/cli/Commands.h"
#include "program/cli/ConsoleSink.h"
#include "program/cli/Output.h"
#include "program/cli/RunOutputs.h"
#include "program/cli/Usage.h"
#include "program/findings/FindingList.h"
#include "program/report/JsonLinesReader.h"
#include "program/report/RunMerge.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <tuple>
#include <utility>

namespace kx::cli {

namespace {

struct TReportArguments {
  std::vector<std::string> Logs;
  std::string Title;
  std::size_t Parts = 0; // that must have left a log; 0: it is not known
  TGateArguments Gates;
};

std::vector<std::u16string> FullPaths(const std::vector<std::string>& files) {
  std::vector<std::u16string> paths;
  paths.reserve(files.size());
  for (const auto& file : files)
    paths.push_back(text::ExpandPath(text::FromUtf8(file), platform::CurrentDirectory()));
  return paths;
}

// The log itself was shown by the runs; a CI system is given what it keeps beside its log.
class TForCi : public IRunEventSink {
public:
  explicit TForCi(const TCommonOptions& options)
      : ci_(ChooseCiDialect(options.Ci)), console_(TVerbosity::Quiet, ChoosePalette(options.Color), ci_) {}
  void On(const TRunEvent& event) override {
    const bool isKept =
        std::holds_alternative<TMetricSent>(event.What) || std::holds_alternative<TRunEnded>(event.What);
    if (ci_ != nullptr && isKept) console_.On(event);
  }

private:
  const TCiDialect* ci_;
  TConsoleSink console_;
};

// The parts whose logs have been read.
class TPartsSeen {
public:
  // A dry run has done nothing. One that was begun anew elsewhere may have left two logs.
  void Add(const TRunReport& run) {
    if (!run.Part || run.Result == TResultKind::WouldRun) return;
    places_[ProjectOf(run)].emplace(run.Part->Place, run.Part->Pass);
  }
  // Of one project.
  std::size_t Count() const {
    std::size_t most = 0;
    for (const auto& [project, places] : places_)
      most = std::max(most, places.size());
    return most;
  }

private:
  std::map<std::u16string, std::set<std::pair<std::size_t, int>>> places_;
};

// A copy of a log would count everything in it once more.
class TRunsSeen {
public:
  // Throws EUsage for a run that another log has told.
  void Add(const TRunReport& run, const std::u16string& log) {
    const TPartOfRun part = run.Part.value_or(TPartOfRun{});
    const auto [seen, isNew] = logs_.try_emplace(
        TKey(run.Surroundings.Machine, run.File, run.Began, run.Elapsed, part.Place, part.Pass), log);
    if (!isNew)
      throw EUsage(u"\"" + log + u"\" holds the same run as \"" + seen->second + u"\": give each run once.");
  }

private:
  using TKey = std::tuple<std::u16string, std::u16string, std::chrono::system_clock::time_point,
                          std::chrono::milliseconds, std::size_t, int>;
  std::map<TKey, std::u16string> logs_;
};

// A machine that is lost takes the log with it: without a word of that, what is left might tell of a success.
void BookMissing(TRunReport& report, std::size_t seen, std::size_t all, std::int64_t message,
                 const std::function<void(const TRunEvent&)>& tell) {
  if (seen >= all) return;
  const auto count = [](std::size_t parts) { return text::FromInteger(static_cast<std::int64_t>(parts)); };
  const std::u16string text = u"There is no log of " + count(all - seen) + u" of " + count(all) +
                              u" parts: what became of them is not known.";
  TActionResult row{
      .Name = u"Parts without a log", .Result = TResultKind::Failed, .Reason = u"parts-missing"};
  row.Counts.Errors = 1;
  row.Began = report.Elapsed;
  TFinding finding{.Rule = row.Reason,
                   .Severity = TFindingSeverity::Error,
                   .Message = text,
                   .Action = row.Name,
                   .Said = message};
  SetFingerprints({&finding, 1}, report.Root);
  const auto now = report.Began + report.Elapsed;
  tell({now, 0, TActionStarted{.Name = row.Name, .Description = row.Name}});
  tell({now, 1, TMessageSent{text, TStatusTag::stError}});
  tell({now, 0, TActionEnded{row}});
  report.Result = TResultKind::Failed;
  report.IsPartial = true;
  report.Counts += row.Counts;
  report.Actions.push_back(std::move(row));
  report.Findings.push_back(std::move(finding));
}

int ReportLogs(const TReportArguments& arguments, const TCommonOptions& common) {
  const TGates gates(arguments.Gates, {});
  const auto logs = FullPaths(arguments.Logs);
  RequireHarmlessOutput(common, gates, logs, [](std::u16string_view /*file*/) { return false; });
  TReports reports(common, arguments.Title.empty() ? text::ExtractFileName(logs.front())
                                                   : text::FromUtf8(arguments.Title));
  TForCi console(common);
  const auto tell = [&](const TRunEvent& event) {
    reports.ForEachSink([&event](IRunEventSink& sink) { sink.On(event); });
    console.On(event);
  };
  TRunMerge runs;
  TRunsSeen seen;
  TPartsSeen parts;
  std::int64_t messages = 0;
  for (const auto& log : logs) {
    auto run = ReadRunLog(log, messages, tell);
    if (!run) {
      WriteError(u"kxhost: " + run.Message());
      return ExitInvalid;
    }
    seen.Add(*run, log);
    parts.Add(*run);
    runs.Add(*std::move(run));
  }
  TRunReport report = runs.Take();
  BookMissing(report, parts.Count(), arguments.Parts, messages + 1, tell);
  tell({report.Began + report.Elapsed, 0, TRunEnded{report}, report.Counts});
  return EndRun(report, reports, nullptr, gates, common);
}

} // namespace

void DefineReport(CLI::App& command, const TCommonOptions& common, int& exitCode) {
  const auto arguments = std::make_shared<TReportArguments>();
  command
      .add_option("LOG", arguments->Logs, "Logs that kxhost run --log has written; several make one report")
      ->required();
  command.add_option("--title", arguments->Title, "What the reports are headed with")->type_name("TEXT");
  command
      .add_option("--parts", arguments->Parts,
                  "The logs are of so many parts of one run; fewer are a failure")
      ->type_name("N")
      ->check(CLI::PositiveNumber);
  DefineGates(command, arguments->Gates);
  command.callback([arguments, &common, &exitCode] { exitCode = ReportLogs(*arguments, common); });
}

} // namespace kx::cli
