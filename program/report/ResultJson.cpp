#include "program/report/ResultJson.h"

#include "foundation/text/Encoding.h"
#include "program/report/ResultRows.h"

namespace kx {

namespace {

// Keys stay in the order in which they are written here.
using TJson = nlohmann::ordered_json;

// What the results of actions, configurations and runs have in common.
template <typename TResult>
void AddVerdict(TJson& json, const TResult& result) {
  json["succeeded"] = IsSuccess(result.Result);
  json["result"] = WordOf(result.Result);
}

template <typename TResult>
void AddFigures(TJson& json, const TResult& result) {
  json["errors"] = result.Counts.Errors;
  json["warnings"] = result.Counts.Warnings;
  json["elapsedMs"] = result.Elapsed.count();
}

TJson TestsJson(const TTestCounts& tests) {
  return {{"passed", tests.Passed}, {"failed", tests.Failed}, {"notRun", tests.NotRun}};
}

TJson ConfigurationJson(const TConfigurationResult& result) {
  TJson json{{"configuration", text::ToUtf8(result.Configuration)}};
  AddVerdict(json, result);
  json["reason"] = text::ToUtf8(result.Reason);
  AddFigures(json, result);
  return json;
}

} // namespace

TJson ResultJson(const TActionResult& result) {
  TJson json{{"name", text::ToUtf8(result.Name)},
             {"type", text::ToUtf8(result.Type)},
             {"pass", text::ToUtf8(result.Pass)},
             {"nesting", result.Nesting},
             {"isLoop", result.IsLoop}};
  AddVerdict(json, result);
  json["reason"] = text::ToUtf8(result.Reason);
  AddFigures(json, result);
  json["tests"] = TestsJson(result.Tests);
  json["configurations"] = TJson::array();
  for (const auto& configuration : result.Configurations)
    json["configurations"].push_back(ConfigurationJson(configuration));
  return json;
}

TJson RunJson(const TRunReport& report) {
  TJson json = TJson::object();
  AddVerdict(json, report);
  json["totals"] = TotalsText(report);
  AddFigures(json, report);
  json["tests"] = TestsJson(report.Tests);
  return json;
}

} // namespace kx
