// What the last lines of a terminal show while a tool runs: what is being done, for how long, how long it
// usually takes, and what it has found so far. On a narrow terminal it is one line.
#pragma once

#include "program/cli/Palette.h"
#include "program/runner/Results.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kx::cli {

// What is under way: an action, or a group of messages within it.
struct TUnderWay {
  std::string Title;
  std::string Progress = {}; // how far the loop around it has come
  bool IsAction = false;
  std::optional<std::chrono::milliseconds> Usual = {}; // from earlier runs
};

struct TStatusEntry {
  TUnderWay What;
  std::chrono::milliseconds Elapsed{0};
};

struct TStatus {
  std::vector<TStatusEntry> Entries = {}; // the innermost last
  std::string Progress = {};              // of the run as a whole; then the entries run side by side
  TProblemCounts Counts = {};
  std::chrono::milliseconds Elapsed{0};
  std::optional<std::chrono::milliseconds> Usual = {}; // of the whole run
};

// As it stands on the terminal; what is painted takes no columns.
struct TStatusRow {
  std::string Text; // UTF-8
  std::size_t Columns = 0;
};

// On a terminal with so many free columns and rows; nothing while nothing is under way.
std::vector<TStatusRow> DrawStatus(const TStatus& status, std::size_t columns, std::size_t rows,
                                   const TPalette& palette);

// What takes rows of these columns away again, the cursor being behind the last one; empty for none.
std::string EraseStatus(std::span<const std::size_t> drawn, std::size_t columns);

} // namespace kx::cli
