#include "contract/Actions.h"
#include "program/cli/ConsoleSink.h"
#include "program/cli/Output.h"

#include "foundation/text/Encoding.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace kx::cli {

namespace {

constexpr std::size_t ColumnCount = 6;
constexpr std::size_t ResultColumn = 2;
constexpr std::array<const char*, ColumnCount> Titles{"Action", "Configuration", "Result",
                                                      "Errors", "Warnings",      "Time"};
constexpr std::array<bool, ColumnCount> RightAligned{false, false, false, true, true, true};

struct TRow {
  std::array<std::string, ColumnCount> Cells;
  TStatusTag Status = TStatusTag::stNormal;
};

// Columns as a terminal counts them: one a code point is near enough for names of actions and configurations.
std::size_t Columns(const std::string& utf8) {
  return static_cast<std::size_t>(std::count_if(
      utf8.begin(), utf8.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

std::string Aligned(const std::string& cell, std::size_t width, bool right) {
  const std::string blanks(width - std::min(width, Columns(cell)), ' ');
  return right ? blanks + cell : cell + blanks;
}

TRow RowOf(const TResultRow& result) {
  const std::string indent(static_cast<std::size_t>(result.Nesting) * 2, ' ');
  TRow row;
  row.Cells = {indent + NameForTerminal(result.Action),
               NameForTerminal(result.Configuration),
               result.Word(),
               std::to_string(result.Counts.Errors),
               std::to_string(result.Counts.Warnings),
               FormatElapsed(result.Elapsed)};
  row.Status = result.Status();
  return row;
}

std::string LineOf(const TRow& row, const std::array<std::size_t, ColumnCount>& widths,
                   const TPalette& palette) {
  std::string line;
  for (std::size_t i = 0; i < ColumnCount; ++i) {
    const std::string cell = Aligned(row.Cells[i], widths[i], RightAligned[i]);
    line += (i == 0 ? "" : "  ") + (i == ResultColumn ? palette.Paint(cell, row.Status) : cell);
  }
  return line + "\n";
}

// "Finished with failures: ..."; the word alone is painted.
std::string EndLine(const TRunReport& report, const TPalette& palette) {
  std::string word = WordOf(report.Result);
  word.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(word.front())));
  return palette.Paint(word, StatusOf(report.Result)) + ": " + TotalsText(report) + "; " +
         FormatElapsed(report.Elapsed) + "\n";
}

} // namespace

std::string EndTable(const TRunReport& report, const TPalette& palette) {
  std::vector<TRow> rows;
  for (const auto& result : ResultRows(report.Actions))
    rows.push_back(RowOf(result));
  if (rows.empty()) return "\n" + EndLine(report, palette);

  TRow titles;
  std::copy(Titles.begin(), Titles.end(), titles.Cells.begin());
  std::array<std::size_t, ColumnCount> widths{};
  for (std::size_t i = 0; i < ColumnCount; ++i) {
    widths[i] = Columns(titles.Cells[i]);
    for (const auto& row : rows)
      widths[i] = std::max(widths[i], Columns(row.Cells[i]));
  }
  std::string table = "\n" + palette.Bold(LineOf(titles, widths, TPalette(false)));
  for (const auto& row : rows)
    table += LineOf(row, widths, palette);
  return table + "\n" + EndLine(report, palette);
}

} // namespace kx::cli
