#include "program/history/HistoryJson.h"

#include "contract/UnitTests.h"
#include "program/findings/FindingJson.h"

namespace kx::history {

namespace {

std::u16string TimeText(std::chrono::system_clock::time_point time) {
  return DateTimeText(std::chrono::floor<std::chrono::milliseconds>(time)) + u"Z";
}

void WritePart(const TRememberedPart& part, TJsonWriter& json) {
  json.Member("action", part.Name.Action);
  json.Member("configuration", part.Name.Configuration);
  json.Member("project", part.Name.Project);
  json.Member("nesting", part.Nesting);
  json.Member("result", WordOf(part.Result));
  json.Member("errors", part.Counts.Errors);
  json.Member("warnings", part.Counts.Warnings);
  json.Member("beganMs", part.Began.count());
  json.Member("elapsedMs", part.Elapsed.count());
}

void WriteMetric(const TRememberedMetric& metric, TJsonWriter& json) {
  json.Member("action", metric.Action);
  json.Member("configuration", metric.Configuration);
  json.Member("name", metric.Name);
  json.Member("value", metric.Value);
}

} // namespace

void WriteRun(const TRememberedRun& run, TJsonWriter& json) {
  json.Member("run", run.Number);
  json.Member("began", TimeText(run.Run.Began));
  json.Member("result", WordOf(run.Run.Result));
  json.Member("elapsedMs", run.Run.Elapsed.count());
  json.Member("errors", run.Run.Counts.Errors);
  json.Member("warnings", run.Run.Counts.Warnings);
  json.ObjectMember("tests", [&] {
    json.Member("passed", run.Run.Tests.Passed);
    json.Member("failed", run.Run.Tests.Failed);
    json.Member("notRun", run.Run.Tests.NotRun);
  });
  json.Member("newFindings", run.NewFindings);
  json.Member("fixedFindings", run.FixedFindings);
  json.Member("commit", run.Run.Commit);
  json.Member("branch", run.Branch);
}

void WriteDetails(const TRememberedDetails& details, TJsonWriter& json) {
  WriteRun(details.Run, json);
  json.Member("machine", details.Surroundings.Machine);
  json.Member("system", details.Surroundings.System);
  json.Member("commandLine", details.Surroundings.CommandLine);
  json.ValuesMember("tools", details.Surroundings.Tools);
  json.ArrayMember("parts", [&] {
    for (const auto& part : details.Parts)
      json.Object([&] { WritePart(part, json); });
  });
  json.ArrayMember("metrics", [&] {
    for (const auto& metric : details.Metrics)
      json.Object([&] { WriteMetric(metric, json); });
  });
  json.ArrayMember("findings", [&] {
    for (const auto& finding : details.Findings)
      json.Object([&] { kx::WriteFinding(finding, json); });
  });
  json.ValuesMember("failedTests", details.FailedTests);
}

void WriteTest(const TTestHistory& test, TJsonWriter& json) {
  json.Member("name", test.Name);
  json.Member("runs", test.Runs);
  json.Member("failures", test.Failures);
  json.Member("changes", test.Changes);
  json.Member("flaky", test.IsFlaky);
  json.Member("lastFailure", test.LastFailure == 0 ? std::nullopt : std::optional(test.LastFailure));
  json.Member("usualMs", test.Usual.count());
  std::string strip;
  for (const TPastTest outcome : test.Strip)
    strip += std::string_view("-pfn")[static_cast<std::size_t>(outcome)];
  json.Member("strip", strip);
}

void WriteFinding(const TKnownFinding& finding, TJsonWriter& json) {
  json.Member("sinceRun", finding.SinceRun);
  json.Member("since", TimeText(finding.Since));
  kx::WriteFinding(finding.Finding, json);
}

void WriteTime(const TUsualTime& time, TJsonWriter& json) {
  json.Member("action", time.Part.Action);
  json.Member("configuration", time.Part.Configuration);
  json.Member("project", time.Part.Project);
  json.Member("runs", time.Runs);
  json.Member("medianMs", time.Median.count());
  json.Member("lowMs", time.Low.count());
  json.Member("highMs", time.High.count());
  json.Member("lastMs", time.Last.count());
  json.Member("trendPercent", time.Trend);
}

} // namespace kx::history
