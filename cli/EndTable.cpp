#include "cli/ConsoleSink.h"

#include "text/Encoding.h"

#include <algorithm>
#include <array>

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

template <typename TResult>
TRow RowOf(const TActionResult& action, const std::u16string& configuration, const TResult& result) {
  const std::string indent(static_cast<std::size_t>(action.Nesting) * 2, ' ');
  const std::u16string pass = action.Pass.empty() ? u"" : u" (" + action.Pass + u")";
  TRow row;
  row.Cells = {indent + ForTerminal(action.Name + pass),  ForTerminal(configuration),
               result.Succeeded ? "succeeded" : "failed", std::to_string(result.Errors),
               std::to_string(result.Warnings),           FormatElapsed(result.Elapsed)};
  row.Status = !result.Succeeded     ? TStatusTag::stError
               : result.Warnings > 0 ? TStatusTag::stWarning
                                     : TStatusTag::stSuccess;
  return row;
}

// A failed action whose configurations all succeeded, or that never came to one, gets a row of its own.
std::vector<TRow> RowsOf(const TActionResult& action) {
  std::vector<TRow> rows;
  bool failureShown = action.Succeeded;
  for (const auto& configuration : action.Configurations) {
    rows.push_back(RowOf(action, configuration.Configuration, configuration));
    failureShown = failureShown || !configuration.Succeeded;
  }
  if (rows.empty() || !failureShown) rows.push_back(RowOf(action, u"", action));
  return rows;
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

} // namespace

std::string EndTable(const std::vector<TActionResult>& results, const TPalette& palette) {
  std::vector<TRow> rows;
  for (const auto& result : results)
    for (auto& row : RowsOf(result))
      rows.push_back(std::move(row));
  if (rows.empty()) return {};

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
  return table;
}

} // namespace kx::cli
