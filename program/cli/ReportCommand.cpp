// kxhost report: what runs would have reported, from their logs.
#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/WindowsPath.h"
#include "program/cli/Commands.h"
#include "program/cli/ConsoleSink.h"
#include "program/cli/Output.h"
#include "program/cli/RunOutputs.h"
#include "program/cli/Usage.h"
#include "program/report/JsonLinesReader.h"
#include "program/report/RunMerge.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <memory>

namespace kx::cli {

namespace {

struct TReportArguments {
  std::vector<std::string> Logs;
  std::string Title;
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
  std::int64_t messages = 0;
  for (const auto& log : logs) {
    auto run = ReadRunLog(log, messages, tell);
    if (!run) {
      WriteError(u"kxhost: " + run.Message());
      return ExitInvalid;
    }
    runs.Add(*std::move(run));
  }
  const TRunReport report = runs.Take();
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
  DefineGates(command, arguments->Gates);
  command.callback([arguments, &common, &exitCode] { exitCode = ReportLogs(*arguments, common); });
}

} // namespace kx::cli
