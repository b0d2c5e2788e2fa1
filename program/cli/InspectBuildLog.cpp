#include "contract/Actions.h"
#include "program/cli/Inspect.h"

#include "foundation/text/Encoding.h"
#include "package/build/BuildLog.h"
#include "package/build/SummaryLines.h"
#include "package/build/ToolOutputWords.h"
#include "program/cli/LogReader.h"
#include "program/cli/Output.h"

#include <nlohmann/json.hpp>

namespace kx::cli {

namespace {

// Which tool's summary a line belongs to.
struct TSummaries {
  bool DevEnv = false;
  bool MSBuild = false;

  void Look(std::u16string_view line) {
    const unsigned findings = FindOutputWords(line);
    if ((findings & MayHoldCounts) != 0) DevEnv = DevEnv || ReadCountSummary(line);
    if ((findings & (MayHoldErrorCount | MayHoldWarningCount)) != 0)
      MSBuild = MSBuild || ReadErrorCount(line) || ReadWarningCount(line);
  }
};

TBuildLogVerdict Analyse(const std::u16string& file, const TInspectOptions& options,
                         TBuildLog::TOnLine onLine, TSummaries* summaries = nullptr) {
  TBuildLog log(options.MSBuild.value_or(false), static_cast<TVSDotNetVersion>(options.VSVersion),
                std::move(onLine));
  ForEachLogLine(file, options.Encoding, [&](std::u16string_view line) {
    log.Feed(line);
    if (summaries != nullptr) summaries->Look(line);
  });
  return log.Verdict();
}

} // namespace

TJson InspectBuildLog(const std::u16string& file, const TInspectOptions& options) {
  TSummaries summaries;
  const TBuildLogVerdict verdict = Analyse(file, options, {}, &summaries);
  const bool isMSBuild = options.MSBuild.value_or(false);
  TJson metrics = TJson::array();
  for (const auto& [what, count] : verdict.Metrics)
    metrics.push_back(TJson::array({what == TBuildCount::Errors ? "Errors" : "Warnings", count}));
  return {{"errors", verdict.Errors},
          {"warnings", verdict.Warnings},
          {"failed", verdict.Failed},
          {"statuses", verdict.Statuses},
          {"metrics", std::move(metrics)},
          {"hasSummary", isMSBuild ? summaries.MSBuild : summaries.DevEnv},
          {"hasOtherSummary", isMSBuild ? summaries.DevEnv : summaries.MSBuild}};
}

namespace {

// Why the counts are not those of the lines.
std::string ReasonOfCounts(const TJson& log) {
  const auto number = [&log](std::size_t status) { return log["statuses"][status].get<std::int64_t>(); };
  const auto count = [&log](const char* what) { return log[what].get<std::int64_t>(); };
  if (!log["hasSummary"].get<bool>())
    return log["hasOtherSummary"].get<bool>()
               ? "The summary in this log is that of the other tool: change --tool.\n"
               : "Errors and warnings are those that the tool's summary counts, and this log holds none.\n";
  if (number(2) == count("warnings") && number(3) == count("errors")) return {};
  return "Errors and warnings are those that the tool's summary counts; lines are told by the words in "
         "them.\n";
}

} // namespace

std::string DescribeBuildLog(const TJson& log) {
  const auto number = [](const TJson& value) { return std::to_string(value.get<std::int64_t>()); };
  const TJson& statuses = log["statuses"];
  std::string out = "Errors    " + number(log["errors"]) + "\nWarnings  " + number(log["warnings"]) + "\n";
  if (log["failed"].get<bool>()) out += "The tool's own summary names a failed project.\n";
  return out + "Lines     " + number(statuses[0]) + " plain, " + number(statuses[1]) + " success, " +
         number(statuses[2]) + " warning, " + number(statuses[3]) + " error\n" + ReasonOfCounts(log);
}

void PrintBuildLogLines(const std::u16string& file, const TInspectOptions& options, TOutput& output) {
  Analyse(file, options, [&output](TStatusTag status, std::u16string_view line) {
    output.Write(std::to_string(static_cast<int>(status)) + "\t" + text::ToUtf8(line) + "\n");
  });
}

} // namespace kx::cli
