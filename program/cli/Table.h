// Rows below titles, in columns that are as wide as what stands in them.
#pragma once

#include "contract/Actions.h"
#include "program/cli/Palette.h"

#include <cstddef>
#include <string>
#include <vector>

namespace kx::cli {

// Columns as a terminal counts them: one a code point is near enough for names of actions and tests.
std::size_t Columns(const std::string& utf8);

class TTable {
public:
  struct TColumn {
    const char* Title;
    bool IsRight = false;   // aligned so, as numbers are
    bool IsPainted = false; // in the colour of the row
  };
  explicit TTable(std::vector<TColumn> columns) : columns_(std::move(columns)) {}

  // A cell for each column, ready for the terminal.
  void Add(std::vector<std::string> cells, TStatusTag status = TStatusTag::stNormal);
  bool IsEmpty() const { return rows_.empty(); }
  std::string Text(const TPalette& palette) const;

private:
  struct TRow {
    std::vector<std::string> Cells;
    TStatusTag Status;
  };
  std::string LineOf(const TRow& row, const std::vector<std::size_t>& widths, const TPalette& palette) const;

  std::vector<TColumn> columns_;
  std::vector<TRow> rows_;
};

} // namespace kx::cli
