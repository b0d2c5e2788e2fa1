#include "program/report/FindingReports.h"

#include "foundation/formats/JsonWriter.h"
#include "program/findings/SourceFiles.h"
#include "program/report/Sarif.h"
#include "program/runner/RunFindings.h"

#include <algorithm>

namespace kx {

namespace {

std::string_view GitLabSeverity(TFindingSeverity severity) {
  switch (severity) {
  case TFindingSeverity::Note:
    return "info";
  case TFindingSeverity::Warning:
    return "minor";
  default:
    return "major";
  }
}

// GitLab takes nothing that lacks one of these members, nor what comes behind it.
void WriteCodeQuality(const TFinding& finding, const TRunReport& report, TJsonWriter& json) {
  std::u16string file = finding.Place.File.empty() ? report.File : finding.Place.File;
  file = file.empty() ? u"kxhost" : SeenFrom(report.Root, file);
  json.Member("description", finding.Message.empty() ? finding.Rule : finding.Message);
  json.Member("check_name", finding.Rule);
  json.Member("fingerprint", finding.Fingerprint);
  json.Member("severity", GitLabSeverity(finding.Severity));
  json.ObjectMember("location", [&] {
    json.Member("path", file);
    json.ObjectMember("lines", [&] { json.Member("begin", std::max(1, finding.Place.Line)); });
  });
}

} // namespace

platform::Status WriteRunSarif(const TRunReport& report, const platform::PutBytes& put) {
  const auto explain = [](std::u16string_view rule) { return std::u16string(ExplainRunRule(rule)); };
  return WriteSarif(report.Findings, {report.Root, explain, report.File}, put);
}

platform::Status WriteRunCodeQuality(const TRunReport& report, const platform::PutBytes& put) {
  platform::Status status = platform::Done{};
  TJsonWriter json([&](std::string_view utf8) {
    if (status) status = put(utf8);
  });
  json.Array([&] {
    for (const auto& finding : report.Findings)
      json.Object([&] { WriteCodeQuality(finding, report, json); });
  });
  json.EndLine();
  json.Flush();
  return status;
}

} // namespace kx
