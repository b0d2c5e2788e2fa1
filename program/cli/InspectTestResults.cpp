#include "program/cli/Inspect.h"
#include "program/cli/Output.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "package/mstest/TestResultsFile.h"

#include <nlohmann/json.hpp>

namespace kx::cli {

namespace {

TJson TimeToJson(const std::optional<TKxDateTime>& time) {
  return time ? TJson(text::ToUtf8(DateTimeText(*time))) : TJson();
}

TJson ResultToJson(const TKxUnitTestResult& result) {
  return {{"passed", result.Passed},
          {"executed", result.Executed},
          {"testName", text::ToUtf8(result.TestName)},
          {"errorMessage", text::ToUtf8(result.ErrorMessage)},
          {"stackTrace", text::ToUtf8(result.StackTrace)},
          {"durationMs", result.Duration},
          {"startTime", TimeToJson(result.StartTime)},
          {"endTime", TimeToJson(result.EndTime)}};
}

TJson CountsToJson(const TKxUnitTestRun& run) {
  return {{"passed", run.PassedCount()},
          {"failed", run.FailedCount()},
          {"notRun", run.NotRunCount()},
          {"totalMs", run.TotalTime()}};
}

// A file of many results is larger as an object than as the text of one, so each is written by itself.
void WriteJson(const TKxUnitTestRun& run, const std::string& name, TOutput& output) {
  output.Write(name.empty() ? "{" : "{\"file\":" + ToText(name) + ",");
  output.Write("\"results\":[");
  bool first = true;
  for (const auto& result : run.Results()) {
    output.Write((first ? "" : ",") + ToText(ResultToJson(result)));
    first = false;
  }
  output.Write("]," + ToLine(CountsToJson(run)).substr(1));
}

// The failed tests, each with the first line of what it says.
void WriteForPeople(const TKxUnitTestRun& run, TOutput& output) {
  const auto number = [](std::int64_t value) { return std::to_string(value); };
  output.Write("Passed   " + number(run.PassedCount()) + "\nFailed   " + number(run.FailedCount()) +
               "\nNot run  " + number(run.NotRunCount()) + "\nTime     " + number(run.TotalTime()) + " ms\n");
  for (const auto& result : run.Results()) {
    if (result.Passed) continue;
    const auto lines = text::SplitLines(text::Trim(result.ErrorMessage));
    const std::u16string message = lines.empty() ? u"" : u": " + std::u16string(lines[0]);
    output.Write("  " + ForTerminal(result.TestName + message) + "\n");
  }
}

} // namespace

void PrintTestResults(const TInspectedFile& file, const TInspectOptions& options, TOutput& output) {
  if (const auto opened = platform::FileReader::Open(file.Path); !opened)
    throw EKxException(opened.Message());
  std::u16string reason;
  const TKxUnitTestRun run(InterpretMSTestOutput(file.Path, reason));
  // A run goes on with such a file, as with one without results; whoever looks into it wants to know.
  if (!reason.empty()) WriteError(u"Warning : No results were read: " + reason);
  if (options.Json) {
    WriteJson(run, file.Name, output);
  } else {
    WriteForPeople(run, output);
  }
}

} // namespace kx::cli
