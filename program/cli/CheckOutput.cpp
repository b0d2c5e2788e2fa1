#include "program/cli/CheckOutput.h"

#include "foundation/formats/JsonWriter.h"
#include "foundation/platform/Files.h"
#include "foundation/platform/System.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/cli/Output.h"
#include "program/cli/Palette.h"
#include "program/report/CiDialect.h"

#include <algorithm>
#include <array>

namespace kx::cli {

namespace {

constexpr std::array Severities{TFindingSeverity::Error, TFindingSeverity::Warning, TFindingSeverity::Note};

std::size_t CountOf(std::span<const TFinding> findings, TFindingSeverity severity) {
  return static_cast<std::size_t>(std::ranges::count(findings, severity, &TFinding::Severity));
}

std::string Counted(std::size_t count, std::string_view what) {
  return std::to_string(count) + " " + std::string(what) + (count == 1 ? "" : "s");
}

// "2 errors, 1 warning and 0 notes in 3 files"
std::string CountsOf(std::span<const TFinding> findings, std::size_t files) {
  if (findings.empty()) return "No problems found in " + Counted(files, "file") + ".\n";
  std::string text;
  for (const TFindingSeverity severity : Severities)
    text += (text.empty() ? "" : ", ") + Counted(CountOf(findings, severity), WordOf(severity));
  return text + " in " + Counted(files, "file") + ".\n";
}

class TFindingPrinter {
public:
  explicit TFindingPrinter(const TCommonOptions& common)
      : palette_(ChoosePalette(common.Color)),
        here_(text::IncludeTrailingPathDelimiter(platform::CurrentDirectory())) {}

  void Print(const TFinding& finding) {
    if (finding.Place.File != file_) {
      if (!file_.empty()) output_.Write("\n");
      file_ = finding.Place.File;
    }
    output_.Write(PlaceOf(finding.Place) + ": " + Severity(finding.Severity) + ": " +
                  NameForTerminal(finding.Message) + " " +
                  palette_.Dim("[" + text::ToUtf8(finding.Rule) + "]") + "\n");
    for (const TFindingStep& step : finding.Steps)
      output_.Write("    " + PlaceOf(step.Place) + ": " + NameForTerminal(step.Message) + "\n");
  }

  void PrintCounts(const std::string& counts) {
    if (!file_.empty()) output_.Write("\n");
    output_.Write(counts);
  }

private:
  // "src/App.sln:12:5", seen from the current folder.
  std::string PlaceOf(const TFindingPlace& place) const {
    std::u16string_view file = place.File;
    if (file.starts_with(here_)) file.remove_prefix(here_.size());
    std::string text = NameForTerminal(file);
    if (place.Line > 0) text += ":" + std::to_string(place.Line);
    if (place.Column > 0) text += ":" + std::to_string(place.Column);
    return text;
  }

  std::string Severity(TFindingSeverity severity) const {
    const TStatusTag status = severity == TFindingSeverity::Error     ? TStatusTag::stError
                              : severity == TFindingSeverity::Warning ? TStatusTag::stWarning
                                                                      : TStatusTag::stNormal;
    return palette_.Paint(WordOf(severity), status);
  }

  TPalette palette_;
  std::u16string here_;
  std::u16string file_; // of the latest finding
  TOutput output_;
};

// The system that reads the log; null when it is none that is known, or not asked for.
const TCiDialect* DialectOf(const TCommonOptions& common) {
  if (common.Ci.empty()) return nullptr;
  return common.Ci == "auto" ? DetectCiDialect() : FindCiDialect(common.Ci);
}

void MarkProblem(const TCiDialect& dialect, const TFinding& finding) {
  const auto root =
      dialect.RootVariable.empty() ? std::nullopt : platform::EnvironmentVariable(dialect.RootVariable);
  TFinding named = finding;
  named.Code = finding.Rule;
  PrintCommand(dialect.Problem(named, root.value_or(u"")));
}

void WritePlace(const TFindingPlace& place, TJsonWriter& json) {
  json.Member("file", place.File);
  json.Member("line", place.Line > 0 ? std::optional(place.Line) : std::nullopt);
  json.Member("column", place.Column > 0 ? std::optional(place.Column) : std::nullopt);
}

void WriteFinding(const TFinding& finding, TJsonWriter& json) {
  json.Member("rule", finding.Rule);
  json.Member("severity", std::string_view(WordOf(finding.Severity)));
  json.Member("message", finding.Message);
  WritePlace(finding.Place, json);
  json.Member("project", finding.Project);
  json.Member("advice", finding.Advice);
  json.ArrayMember("steps", [&] {
    for (const TFindingStep& step : finding.Steps)
      json.Object([&] {
        WritePlace(step.Place, json);
        json.Member("message", step.Message);
      });
  });
}

} // namespace

void ShowFindings(std::span<const TFinding> findings, std::size_t files, const TCommonOptions& common) {
  TFindingPrinter printer(common);
  for (const TFinding& finding : findings)
    printer.Print(finding);
  printer.PrintCounts(CountsOf(findings, files));
  if (const TCiDialect* dialect = DialectOf(common))
    for (const TFinding& finding : findings)
      if (finding.Severity != TFindingSeverity::Note) MarkProblem(*dialect, finding);
}

void WriteFindingsJson(std::span<const TFinding> findings, std::size_t files) {
  TOutput output;
  TJsonWriter json([&output](std::string_view utf8) { output.Write(utf8); });
  json.Object([&] {
    json.Member("files", files);
    for (const TFindingSeverity severity : Severities)
      json.Member(std::string(WordOf(severity)) + "s", CountOf(findings, severity));
    json.ArrayMember("findings", [&] {
      for (const TFinding& finding : findings)
        json.Object([&] { WriteFinding(finding, json); });
    });
  });
  json.EndLine();
  json.Flush();
}

} // namespace kx::cli
