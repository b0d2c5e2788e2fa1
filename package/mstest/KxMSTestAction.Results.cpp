#include "package/mstest/KxMSTestAction.h"
#include "foundation/platform/Files.h"
#include "foundation/text/Text.h"

#include <algorithm>
#include <array>

namespace kx {

namespace {

// Of the other words (NotExecuted, Inconclusive, NotRunnable) nobody can say that something is wrong.
bool HasFailed(const TKxUnitTestResult& result) {
  constexpr std::array<std::u16string_view, 4> failures{u"Failed", u"Error", u"Timeout", u"Aborted"};
  return std::ranges::find(failures, result.Outcome) != failures.end();
}

bool WasExecuted(const TKxUnitTestResult& result) {
  return result.Outcome != u"NotExecuted";
}

std::u16string Count(std::int64_t number, std::u16string_view what) {
  return text::FromInteger(number) + u" " + std::u16string(what) + (number == 1 ? u"" : u"s");
}

} // namespace

bool TKxMSTestAction::Execute() {
  // However the run ends, a file that it has not written gets its time stamp back.
  struct TEnd {
    std::optional<platform::FileWatch>& Watch;
    ~TEnd() { Watch.reset(); }
  } const end{resultsWatch_};
  return TKxExecuteAbstractAction::Execute();
}

TKxArrayOfMSTestResult TKxMSTestAction::TakeResults(std::u16string& problem) {
  const std::u16string file = u"The results file " + effectiveResultsFile_;
  TKxArrayOfMSTestResult results;
  if (!platform::FileExists(effectiveResultsFile_)) {
    problem = file + u" is missing: MSTest has not written it.";
  } else if (resultsWatch_ && !resultsWatch_->WasWritten()) {
    problem =
        file + u" was there before, and MSTest has not written it: its results are not those of this run.";
  } else {
    std::u16string reason;
    results = readResults_(effectiveResultsFile_, reason);
    if (!reason.empty()) problem = file + u" cannot be read: " + reason;
  }
  temporaryFolder_.reset();
  return results;
}

bool TKxMSTestAction::InterpretResult(int exitCode) {
  TKxArrayOfMSTestResult results;
  std::u16string problem;
  try {
    results = TakeResults(problem);
  } catch (const std::exception& error) {
    SendMessage(u"Could not interpret MSTest results: " + MessageOf(error), TStatusTag::stError);
    SendMessage(u"MSTest test results file: " + effectiveResultsFile_, TStatusTag::stError);
    if (temporaryFolder_) temporaryFolder_->Keep(); // to be looked at
    return false;
  }
  const TKxUnitTestRun run = SendResults(std::move(results));
  if (!problem.empty()) {
    ReportBreach(KxVerdictRules::ResultsMissing, problem);
  } else {
    CheckVerdict(run, exitCode);
  }
  return exitCode == 0;
}

void TKxMSTestAction::CheckVerdict(const TKxUnitTestRun& run, int exitCode) {
  const auto failed = std::ranges::count_if(run.Results(), HasFailed);
  if (run.Results().empty()) {
    ReportBreach(KxVerdictRules::NoTests, u"No test was run: the results file " + effectiveResultsFile_ +
                                              u" holds no result of a unit test.");
  } else if (std::ranges::none_of(run.Results(), WasExecuted)) {
    ReportBreach(KxVerdictRules::NoTests,
                 u"No test was run: " + Count(run.TotalCount(), u"test") + u" found, none executed.");
  } else if (exitCode == 0 && failed > 0) {
    ReportBreach(KxVerdictRules::ErrorsCounted,
                 Count(failed, u"test") + u" failed although MSTest ended with exit code 0.");
  }
}

void TKxMSTestAction::InterpretStopped() {
  if (!platform::FileExists(effectiveResultsFile_)) return; // MSTest writes it at its end
  std::u16string problem;
  TKxArrayOfMSTestResult results = TakeResults(problem);
  if (problem.empty()) {
    SendResults(std::move(results));
  } else {
    SendMessage(u"Warning : " + problem, TStatusTag::stWarning);
  }
}

TKxUnitTestRun TKxMSTestAction::SendResults(TKxArrayOfMSTestResult results) {
  const auto nameless =
      std::ranges::count_if(results, [](const TKxUnitTestResult& result) { return result.TestName.empty(); });
  if (nameless > 0)
    SendMessage(u"Warning : the results file " + effectiveResultsFile_ + u" holds " +
                    Count(nameless, u"result") +
                    u" without a name, as Visual Studio 2005 writes them: their tests count as failed. Run "
                    u"the tests with the MSTest of Visual Studio 2008 or later.",
                TStatusTag::stWarning);
  TKxUnitTestRun run(std::move(results));
  run.SetName(ExpandExpression(GetDescription()));
  SendMetricString(UnitTestCategory, TestResultsMetric, run.AsXmlString());
  SendMetricString(UnitTestCategory, TestRunNameMetric, run.Name());
  if (!publishedToTeamBuild_) SendCounts(run); // else Team Build counts them itself
  return run;
}

void TKxMSTestAction::SendCounts(const TKxUnitTestRun& run) {
  SendMetricInt(UnitTestCategory, u"Tests_Successful", run.PassedCount());
  SendMetricInt(UnitTestCategory, u"Tests_Failed", run.FailedCount());
  SendMetricInt(UnitTestCategory, u"Tests_Not_Run", run.NotRunCount());
  SendMetricInt(UnitTestCategory, u"Tests_Run_Time", run.TotalTime());
}

} // namespace kx
