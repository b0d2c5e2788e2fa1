#include "program/report/ResultJson.h"

#include "foundation/formats/JsonMembers.h"
#include "program/report/ResultRows.h"

#include <algorithm>
#include <array>
#include <utility>

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

// What a run was of and ran on; const or not as the report is.
auto TextsOf(auto& report) {
  auto& around = report.Surroundings;
  return std::array{std::pair{"file", &report.File},
                    std::pair{"root", &report.Root},
                    std::pair{"machine", &around.Machine},
                    std::pair{"system", &around.System},
                    std::pair{"commit", &around.Commit},
                    std::pair{"branch", &around.Branch},
                    std::pair{"commandLine", &around.CommandLine}};
}

using TJson = nlohmann::json;

// As milliseconds three years; millions of them have a sum.
constexpr std::int64_t MostOfOne = 100'000'000'000;
constexpr int MostDepth = 1'000;

template <typename TResult>
void ReadParts(const TJson& object, TResult& result) {
  result.Result = ReadResultKind(Utf8Member(object, "result")).value_or(TResultKind::Failed);
  result.Counts = {CountMember(object, "errors"), CountMember(object, "warnings")};
  result.Elapsed = DurationMember(object, "elapsedMs");
}

TTestCounts ReadTests(const TJson& object) {
  const TJson* tests = FindMember(object, "tests");
  if (tests == nullptr) return {};
  return {CountMember(*tests, "passed"), CountMember(*tests, "failed"), CountMember(*tests, "notRun")};
}

template <typename TResult>
void ReadPlaceInRun(const TJson& object, TResult& result) {
  ReadParts(object, result);
  result.Began = DurationMember(object, "beganMs");
}

TProjectResult ReadProject(const TJson& object) {
  TProjectResult result;
  ReadPlaceInRun(object, result);
  result.Project = TextMember(object, "project");
  result.Configuration = TextMember(object, "configuration");
  return result;
}

TConfigurationResult ReadConfiguration(const TJson& object) {
  TConfigurationResult result;
  ReadPlaceInRun(object, result);
  result.Configuration = TextMember(object, "configuration");
  result.Reason = TextMember(object, "reason");
  for (const TJson& project : ArrayMember(object, "projects"))
    result.Projects.push_back(ReadProject(project));
  return result;
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
  if (report.NothingExecuted) json.Member("nothingExecuted", true);
  if (report.IsPartial) json.Member("partial", true);
  if (report.Part)
    json.ObjectMember("part", [&] {
      json.Member("place", report.Part->Place);
      json.Member("pass", report.Part->Pass);
    });
  for (const auto& [name, text] : TextsOf(report))
    if (!text->empty()) json.Member(name, *text);
}

std::int64_t CountMember(const TJson& object, const char* name) {
  return std::clamp(NumberMember<std::int64_t>(object, name), std::int64_t{0}, MostOfOne);
}

std::chrono::milliseconds DurationMember(const TJson& object, const char* name) {
  return std::chrono::milliseconds(CountMember(object, name));
}

int DepthMember(const TJson& object, const char* name) {
  return std::clamp(NumberMember<int>(object, name), 0, MostDepth);
}

TActionResult ReadResult(const TJson& object) {
  TActionResult result;
  ReadPlaceInRun(object, result);
  result.Name = TextMember(object, "name");
  result.Type = TextMember(object, "type");
  result.Pass = TextMember(object, "pass");
  result.Nesting = DepthMember(object, "nesting");
  result.IsLoop = FlagMember(object, "isLoop");
  result.Reason = TextMember(object, "reason");
  result.Tests = ReadTests(object);
  for (const TJson& configuration : ArrayMember(object, "configurations"))
    result.Configurations.push_back(ReadConfiguration(configuration));
  return result;
}

TRunReport ReadRun(const TJson& object) {
  TRunReport report;
  ReadParts(object, report);
  report.Tests = ReadTests(object);
  report.MoreFindings = CountMember(object, "moreFindings");
  report.NothingExecuted = FlagMember(object, "nothingExecuted");
  report.IsPartial = FlagMember(object, "partial");
  if (const TJson* part = FindMember(object, "part"); part != nullptr)
    report.Part = {NumberMember<std::size_t>(*part, "place"), NumberMember<int>(*part, "pass")};
  for (const auto& [name, text] : TextsOf(report))
    *text = TextMember(object, name);
  return report;
}

} // namespace kx
