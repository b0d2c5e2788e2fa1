#include "program/cli/Table.h"

#include <algorithm>

namespace kx::cli {

std::size_t Columns(const std::string& utf8) {
  return static_cast<std::size_t>(std::count_if(
      utf8.begin(), utf8.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

void TTable::Add(std::vector<std::string> cells, TStatusTag status) {
  rows_.push_back({std::move(cells), status});
}

std::string TTable::LineOf(const TRow& row, const std::vector<std::size_t>& widths,
                           const TPalette& palette) const {
  std::string line;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const std::string blanks(widths[i] - std::min(widths[i], Columns(row.Cells[i])), ' ');
    std::string cell = columns_[i].IsRight ? blanks + row.Cells[i] : row.Cells[i];
    if (!columns_[i].IsRight && i + 1 < columns_.size()) cell += blanks;
    line += (i == 0 ? "" : "  ") + (columns_[i].IsPainted ? palette.Paint(cell, row.Status) : cell);
  }
  line.resize(line.find_last_not_of(' ') + 1); // an empty cell at the end
  return line + "\n";
}

std::string TTable::Text(const TPalette& palette) const {
  TRow titles{{}, TStatusTag::stNormal};
  std::vector<std::size_t> widths;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    titles.Cells.emplace_back(columns_[i].Title);
    widths.push_back(Columns(titles.Cells.back()));
    for (const TRow& row : rows_)
      widths.back() = std::max(widths.back(), Columns(row.Cells[i]));
  }
  std::string text = palette.Bold(LineOf(titles, widths, TPalette(false)));
  for (const TRow& row : rows_)
    text += LineOf(row, widths, palette);
  return text;
}

} // namespace kx::cli
