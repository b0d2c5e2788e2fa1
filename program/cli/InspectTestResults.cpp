#include "program/cli/Inspect.h"
#include "program/cli/Output.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "package/mstest/TestResultsFile.h"

namespace kx::cli {

namespace {

std::optional<std::u16string> TimeText(const std::optional<TKxDateTime>& time) {
  if (!time) return std::nullopt;
  return DateTimeText(*time);
}

void WriteResult(const TKxUnitTestResult& result, TJsonWriter& json) {
  json.Member("passed", result.Passed);
  json.Member("executed", result.Executed);
  json.Member("testName", result.TestName);
  json.Member("errorMessage", result.ErrorMessage);
  json.Member("stackTrace", result.StackTrace);
  json.Member("durationMs", result.Duration);
  json.Member("startTime", TimeText(result.StartTime));
  json.Member("endTime", TimeText(result.EndTime));
}

class TInspectedResults : public IInspected {
public:
  explicit TInspectedResults(TKxUnitTestRun run) : run_(std::move(run)) {}

  void WriteMembers(TJsonWriter& json) const override {
    json.ArrayMember("results", [&] {
      for (const auto& result : run_.Results())
        json.Object([&] { WriteResult(result, json); });
    });
    json.Member("passed", run_.PassedCount());
    json.Member("failed", run_.FailedCount());
    json.Member("notRun", run_.NotRunCount());
    json.Member("totalMs", run_.TotalTime());
  }

  // The failed tests, each with the first line of what it says.
  void Describe(TOutput& output) const override {
    const auto number = [](std::int64_t value) { return std::to_string(value); };
    output.Write("Passed   " + number(run_.PassedCount()) + "\nFailed   " + number(run_.FailedCount()) +
                 "\nNot run  " + number(run_.NotRunCount()) + "\nTime     " + number(run_.TotalTime()) +
                 " ms\n");
    for (const auto& result : run_.Results()) {
      if (result.Passed) continue;
      const auto lines = text::SplitLines(text::Trim(result.ErrorMessage));
      const std::u16string message = lines.empty() ? u"" : u": " + std::u16string(lines[0]);
      output.Write("  " + ForTerminal(result.TestName + message) + "\n");
    }
  }

private:
  TKxUnitTestRun run_;
};

} // namespace

TInspected InspectTestResults(const std::u16string& file, const TInspectOptions& /*options*/) {
  if (const auto opened = platform::FileReader::Open(file); !opened) throw EKxException(opened.Message());
  std::u16string reason;
  TKxUnitTestRun run(InterpretMSTestOutput(file, reason));
  // A run goes on with such a file, as with one without results; whoever looks into it wants to know.
  if (!reason.empty()) throw EKxException(u"No results were read: " + reason);
  return std::make_shared<TInspectedResults>(std::move(run));
}

} // namespace kx::cli
