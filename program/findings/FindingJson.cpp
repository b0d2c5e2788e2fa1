#include "program/findings/FindingJson.h"

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
  if (finding.Steps.empty()) return;
  json.ArrayMember("steps", [&] {
    for (const auto& step : finding.Steps)
      json.Object([&] {
        WritePlace(step.Place, json);
        json.Member("message", step.Message);
      });
  });
}

} // namespace kx
