#include "program/report/ResultJson.h"

#include "program/report/ResultRows.h"

namespace kx {

namespace {

// What the results of actions, configurations and runs have in common.
template <typename TResult>
void WriteVerdict(const TResult& result, TJsonWriter& json) {
  json.Member("succeeded", IsSuccess(result.Result));
  json.Member("result", WordOf(result.Result));
}

template <typename TResult>
void WriteCounts(const TResult& result, TJsonWriter& json) {
  json.Member("errors", result.Counts.Errors);
  json.Member("warnings", result.Counts.Warnings);
}

// Of the parts of a run.
template <typename TResult>
void WriteTimes(const TResult& result, TJsonWriter& json) {
  json.Member("elapsedMs", result.Elapsed.count());
  json.Member("beganMs", result.Began.count());
}

void WriteTests(const TTestCounts& tests, TJsonWriter& json) {
  json.ObjectMember("tests", [&] {
    json.Member("passed", tests.Passed);
    json.Member("failed", tests.Failed);
    json.Member("notRun", tests.NotRun);
  });
}

void WriteConfiguration(const TConfigurationResult& result, TJsonWriter& json) {
  json.Member("configuration", result.Configuration);
  WriteVerdict(result, json);
  json.Member("reason", result.Reason);
  WriteCounts(result, json);
  WriteTimes(result, json);
  json.ArrayMember("projects", [&] {
    for (const auto& project : result.Projects)
      json.Object([&] {
        WriteProject(project, json);
        WriteTimes(project, json);
      });
  });
}

} // namespace

void WriteProject(const TProjectResult& result, TJsonWriter& json) {
  json.Member("project", result.Project);
  json.Member("configuration", result.Configuration);
  WriteVerdict(result, json);
  WriteCounts(result, json);
}

void WriteResult(const TActionResult& result, TJsonWriter& json) {
  json.Member("name", result.Name);
  json.Member("type", result.Type);
  json.Member("pass", result.Pass);
  json.Member("nesting", result.Nesting);
  json.Member("isLoop", result.IsLoop);
  WriteVerdict(result, json);
  json.Member("reason", result.Reason);
  WriteCounts(result, json);
  WriteTimes(result, json);
  WriteTests(result.Tests, json);
  json.ArrayMember("configurations", [&] {
    for (const auto& configuration : result.Configurations)
      json.Object([&] { WriteConfiguration(configuration, json); });
  });
}

void WriteRun(const TRunReport& report, TJsonWriter& json) {
  WriteVerdict(report, json);
  json.Member("totals", TotalsText(report));
  WriteCounts(report, json);
  json.Member("elapsedMs", report.Elapsed.count());
  WriteTests(report.Tests, json);
  if (report.MoreFindings > 0) json.Member("moreFindings", report.MoreFindings);
}

} // namespace kx
