#include "program/cli/CheckOutput.h"

#include "foundation/formats/JsonWriter.h"
#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "program/cli/FindingLines.h"
#include "program/cli/Output.h"
#include "program/cli/Palette.h"
#include "program/findings/FindingJson.h"
#include "program/findings/FindingList.h"
#include "program/report/CiDialect.h"
#include "program/report/ResultRows.h"

namespace kx::cli {

namespace {

// "2 errors, 1 warning, 0 notes in 3 files"
std::string CountsOf(const TChecked& checked) {
  const std::string files = " in " + CountText(static_cast<std::int64_t>(checked.Files), "file") + ".\n";
  const TFindingCounts counts = CountOf(checked.Findings);
  return checked.Findings.empty()
             ? "No problems found" + files
             : CountText(counts.Errors, "error") + ", " + CountText(counts.Warnings, "warning") + ", " +
                   CountText(counts.Notes, "note") + files;
}

class TFindingPrinter {
public:
  explicit TFindingPrinter(const TCommonOptions& common)
      : palette_(ChoosePalette(common.Color)), here_(platform::CurrentDirectory()) {}

  void Print(const TFinding& finding) {
    if (finding.Place.File != file_) {
      if (!file_.empty()) output_.Write("\n");
      file_ = finding.Place.File;
    }
    output_.Write(PlaceText(finding.Place, here_) + ": " +
                  palette_.Paint(WordOf(finding.Severity), StatusOf(finding.Severity)) + ": " +
                  NameForTerminal(finding.Message) + " " +
                  palette_.Dim("[" + text::ToUtf8(finding.Rule) + "]") + "\n");
    for (const TFindingStep& step : finding.Steps)
      output_.Write("    " + PlaceText(step.Place, here_) + ": " + NameForTerminal(step.Message) + "\n");
  }

  void PrintMatch(const TChecked::TMatch& match) {
    file_ = match.File;
    output_.Write(PlaceText({.File = match.File}, here_) + ": " +
                  NameForTerminal(text::Join(match.Configurations, u", ")) + "\n");
  }

  void PrintCounts(const std::string& counts) {
    if (!file_.empty()) output_.Write("\n");
    output_.Write(counts);
  }

private:
  TPalette palette_;
  std::u16string here_;
  std::u16string file_; // of the latest finding
  TOutput output_;
};

void MarkProblems(const TCiDialect& dialect, const std::vector<TFinding>& findings) {
  const std::u16string root = CiRootOf(dialect);
  for (const TFinding& finding : findings) {
    if (finding.Severity == TFindingSeverity::Note) continue;
    TFinding named = finding;
    named.Code = finding.Rule;
    PrintCommand(dialect.Problem(named, root));
  }
}

} // namespace

void ShowChecked(const TChecked& checked, const TCommonOptions& common) {
  TFindingPrinter printer(common);
  for (const TChecked::TMatch& match : checked.Configurations)
    printer.PrintMatch(match);
  for (const TFinding& finding : checked.Findings)
    printer.Print(finding);
  printer.PrintCounts(CountsOf(checked));
  if (const TCiDialect* dialect = ChooseCiDialect(common.Ci)) MarkProblems(*dialect, checked.Findings);
}

void WriteCheckedJson(const TChecked& checked) {
  const TFindingCounts counts = CountOf(checked.Findings);
  TOutput output;
  TJsonWriter json([&output](std::string_view utf8) { output.Write(utf8); });
  json.Object([&] {
    json.Member("files", checked.Files);
    json.Member("errors", counts.Errors);
    json.Member("warnings", counts.Warnings);
    json.Member("notes", counts.Notes);
    json.ArrayMember("configurations", [&] {
      for (const TChecked::TMatch& match : checked.Configurations)
        json.Object([&] {
          json.Member("file", match.File);
          json.ValuesMember("names", match.Configurations);
        });
    });
    json.ArrayMember("findings", [&] {
      for (const TFinding& finding : checked.Findings)
        json.Object([&] { WriteFinding(finding, json); });
    });
  });
  json.EndLine();
  json.Flush();
}

} // namespace kx::cli
