#include "program/cli/FindingLines.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "program/cli/Output.h"
#include "program/findings/FindingList.h"
#include "program/findings/SourceFiles.h"
#include "program/report/ResultRows.h"

#include <algorithm>
#include <map>
#include <vector>

namespace kx::cli {

namespace {

// The most severe ones, file by file in the order in which the files come up.
std::vector<const TFinding*> Chosen(std::span<const TFinding> findings) {
  std::vector<const TFinding*> chosen = MostSevere(findings, MostFindingLines);
  std::map<std::u16string, std::size_t> files;
  for (const auto* finding : chosen)
    files.emplace(finding->Place.File, files.size());
  std::ranges::stable_sort(chosen, {}, [&files](const TFinding* finding) {
    return std::pair(files.at(finding->Place.File), finding->Place.Line);
  });
  return chosen;
}

} // namespace

TStatusTag StatusOf(TFindingSeverity severity) {
  switch (severity) {
  case TFindingSeverity::Error:
    return TStatusTag::stError;
  case TFindingSeverity::Warning:
    return TStatusTag::stWarning;
  default:
    return TStatusTag::stNormal;
  }
}

std::string PlaceText(const TFindingPlace& place, std::u16string_view here) {
  std::u16string text = SeenFrom(here, place.File);
  if (place.Line > 0) text += u":" + text::FromInteger(place.Line);
  if (place.Line > 0 && place.Column > 0) text += u":" + text::FromInteger(place.Column);
  return NameForTerminal(text);
}

std::string FindingLine(const TFinding& finding, const TPalette& palette) {
  const std::string place = PlaceText(finding.Place, platform::CurrentDirectory());
  std::string line = place + (place.empty() ? "" : ": ") +
                     palette.Paint(WordOf(finding.Severity), StatusOf(finding.Severity)) +
                     (finding.Code.empty() ? "" : " " + NameForTerminal(finding.Code)) + ": " +
                     NameForTerminal(finding.Message);
  if (finding.Occurrences > 1) line += palette.Dim(" (" + CountText(finding.Occurrences, "time") + ")");
  return line + "\n";
}

std::string FindingLines(std::span<const TFinding> findings, std::int64_t more, std::string_view rest,
                         const TPalette& palette) {
  const auto chosen = Chosen(findings);
  std::string lines;
  for (const auto* finding : chosen)
    lines += FindingLine(*finding, palette);
  const TFindingCounts counts = CountOf(findings);
  more += counts.Errors + counts.Warnings - static_cast<std::int64_t>(chosen.size());
  if (more > 0) lines += palette.Dim("and " + std::to_string(more) + " more " + std::string(rest)) + "\n";
  return lines;
}

} // namespace kx::cli
