#include "program/findings/FindingJson.h"

#include "foundation/formats/JsonMembers.h"

#include <algorithm>
#include <optional>

namespace kx {

namespace {

void WritePlace(const TFindingPlace& place, TJsonWriter& json) {
  json.Member("file", place.File);
  json.Member("line", place.Line > 0 ? std::optional(place.Line) : std::nullopt);
  json.Member("column", place.Column > 0 ? std::optional(place.Column) : std::nullopt);
}

} // namespace

void WriteFinding(const TFinding& finding, TJsonWriter& json) {
  json.Member("rule", finding.Rule);
  json.Member("severity", std::string_view(WordOf(finding.Severity)));
  json.Member("message", finding.Message);
  WritePlace(finding.Place, json);
  json.Member("code", finding.Code);
  json.Member("project", finding.Project);
  json.Member("configuration", finding.Configuration);
  json.Member("action", finding.Action);
  json.Member("occurrences", finding.Occurrences);
  json.Member("fingerprint", finding.Fingerprint);
  json.Member("advice", finding.Advice);
  if (finding.Said > 0) json.Member("said", finding.Said);
  if (finding.Steps.empty()) return;
  json.ArrayMember("steps", [&] {
    for (const auto& step : finding.Steps)
      json.Object([&] {
        WritePlace(step.Place, json);
        json.Member("message", step.Message);
      });
  });
}

namespace {

TFindingPlace ReadPlace(const nlohmann::json& object) {
  return {TextMember(object, "file"), NumberMember<int>(object, "line"), NumberMember<int>(object, "column")};
}

constexpr int MostOccurrences = 1'000'000; // of one log; those of many have a sum

} // namespace

TFinding ReadFinding(const nlohmann::json& object) {
  TFinding finding;
  finding.Rule = TextMember(object, "rule");
  finding.Severity = ReadFindingSeverity(Utf8Member(object, "severity"));
  finding.Message = TextMember(object, "message");
  finding.Place = ReadPlace(object);
  finding.Code = TextMember(object, "code");
  finding.Project = TextMember(object, "project");
  finding.Configuration = TextMember(object, "configuration");
  finding.Action = TextMember(object, "action");
  finding.Occurrences = std::clamp(NumberMember<int>(object, "occurrences"), 1, MostOccurrences);
  finding.Fingerprint = TextMember(object, "fingerprint");
  finding.Advice = TextMember(object, "advice");
  finding.Said = NumberMember<std::int64_t>(object, "said");
  for (const auto& step : ArrayMember(object, "steps"))
    finding.Steps.push_back({ReadPlace(step), TextMember(step, "message")});
  return finding;
}

} // namespace kx
