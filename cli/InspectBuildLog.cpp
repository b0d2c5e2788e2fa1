#include "cli/Inspect.h"

#include "build/BuildLog.h"
#include "cli/LogReader.h"
#include "cli/Output.h"
#include "text/Encoding.h"

#include <nlohmann/json.hpp>

namespace kx::cli {

namespace {

TBuildLogVerdict Analyse(const std::u16string& file, const TInspectOptions& options,
                         TBuildLog::TOnLine onLine) {
  TBuildLog log(options.MSBuild.value_or(false), static_cast<TVSDotNetVersion>(options.VSVersion),
                std::move(onLine));
  ForEachLogLine(file, options.Encoding, [&log](std::u16string_view line) { log.Feed(line); });
  return log.Verdict();
}

} // namespace

TJson InspectBuildLog(const std::u16string& file, const TInspectOptions& options) {
  const TBuildLogVerdict verdict = Analyse(file, options, {});
  TJson metrics = TJson::array();
  for (const auto& [what, count] : verdict.Metrics)
    metrics.push_back(TJson::array({what == TBuildCount::Errors ? "Errors" : "Warnings", count}));
  return {{"errors", verdict.Errors},
          {"warnings", verdict.Warnings},
          {"failed", verdict.Failed},
          {"statuses", verdict.Statuses},
          {"metrics", std::move(metrics)}};
}

std::string DescribeBuildLog(const TJson& log) {
  const auto number = [](const TJson& value) { return std::to_string(value.get<std::int64_t>()); };
  const TJson& statuses = log["statuses"];
  std::string out = "Errors    " + number(log["errors"]) + "\nWarnings  " + number(log["warnings"]) + "\n";
  if (log["failed"].get<bool>()) out += "The tool's own summary names a failed project.\n";
  return out + "Lines     " + number(statuses[0]) + " plain, " + number(statuses[1]) + " success, " +
         number(statuses[2]) + " warning, " + number(statuses[3]) + " error\n";
}

void PrintBuildLogLines(const std::u16string& file, const TInspectOptions& options, TOutput& output) {
  Analyse(file, options, [&output](TStatusTag status, std::u16string_view line) {
    output.Write(std::to_string(static_cast<int>(status)) + "\t" + text::ToUtf8(line) + "\n");
  });
}

} // namespace kx::cli
