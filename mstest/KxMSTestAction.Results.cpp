#include "mstest/KxMSTestAction.h"
#include "platform/Files.h"

namespace kx {

bool TKxMSTestAction::InterpretResult(int exitCode) {
  TKxArrayOfMSTestResult results;
  try {
    results = readResults_(effectiveResultsFile_);
  } catch (const std::exception& error) {
    SendMessage(u"Could not interpret MSTest results: " + MessageOf(error), TStatusTag::stError);
    SendMessage(u"MSTest test results file: " + effectiveResultsFile_, TStatusTag::stError);
    return false; // a temporary file stays, to be looked at
  }
  // One that cannot be deleted harms nobody.
  if (resultsFileIsTemporary_) static_cast<void>(platform::RemoveFile(effectiveResultsFile_));
  TKxUnitTestRun run(std::move(results));
  run.SetName(ExpandExpression(GetDescription()));
  SendResults(run);
  return exitCode == 0;
}

void TKxMSTestAction::SendResults(const TKxUnitTestRun& run) {
  SendMetricString(UnitTestCategory, TestResultsMetric, run.AsXmlString());
  SendMetricString(UnitTestCategory, TestRunNameMetric, run.Name());
  if (publishedToTeamBuild_) return; // Team Build counts them itself
  SendMetricInt(UnitTestCategory, u"Tests_Successful", run.PassedCount());
  SendMetricInt(UnitTestCategory, u"Tests_Failed", run.FailedCount());
  SendMetricInt(UnitTestCategory, u"Tests_Not_Run", run.NotRunCount());
  SendMetricInt(UnitTestCategory, u"Tests_Run_Time", run.TotalTime());
}

} // namespace kx
