#include "program/cli/StatusDrawing.h"

#include "foundation/text/Encoding.h"
#include "program/report/ResultRows.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kx::cli {

namespace {

using std::chrono::milliseconds;

constexpr std::size_t WidestLine = 100;   // what is farther apart is hard to read together
constexpr std::size_t FewestColumns = 80; // for more than one line
constexpr std::size_t FewestRows = 8;
constexpr std::size_t MostEntries = 4; // the innermost ones
constexpr std::size_t BarColumns = 30;

std::string Clock(milliseconds time) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time).count();
  const std::string rest = std::to_string(seconds % 60);
  return std::to_string(seconds / 60) + (rest.size() < 2 ? ":0" : ":") + rest;
}

// Letters of East Asia take two columns of a terminal.
std::size_t ColumnsOf(char16_t unit) {
  constexpr std::array<std::pair<char16_t, char16_t>, 6> wide{{{0x1100, 0x115F},
                                                               {0x2E80, 0xA4CF},
                                                               {0xAC00, 0xD7A3},
                                                               {0xF900, 0xFAFF},
                                                               {0xFE30, 0xFE6F},
                                                               {0xFF00, 0xFF60}}};
  return std::ranges::any_of(
             wide, [unit](const auto& range) { return unit >= range.first && unit <= range.second; })
             ? 2
             : 1;
}

// So much of it as there is room for, and how much room it takes.
std::pair<std::string, std::size_t> Cut(const std::string& utf8, std::size_t columns) {
  std::u16string text = text::FromUtf8(utf8);
  std::size_t used = 0;
  std::size_t length = 0;
  for (; length < text.size() && used + ColumnsOf(text[length]) <= columns; ++length)
    used += ColumnsOf(text[length]);
  text.resize(length);
  return {text::ToUtf8(text), used};
}

std::string TimeText(milliseconds elapsed, const std::optional<milliseconds>& usual) {
  const bool isKnown = usual && *usual >= std::chrono::seconds(1);
  return Clock(elapsed) + (isKnown ? " of usually " + Clock(*usual) : "");
}

// Full when it takes longer than usual.
std::string Bar(milliseconds elapsed, milliseconds usual) {
  const auto full = std::min<std::size_t>(BarColumns, BarColumns * static_cast<std::size_t>(elapsed.count()) /
                                                          static_cast<std::size_t>(usual.count()));
  std::string bar;
  for (std::size_t i = 0; i < BarColumns; ++i)
    bar += i < full ? "█" : "░";
  return bar;
}

// Errors and warnings in their colours; nothing for none.
std::string Counts(const TProblemCounts& counts, const TPalette& palette) {
  std::string text;
  if (counts.Errors > 0) text += "  " + palette.Paint(CountText(counts.Errors, "error"), TStatusTag::stError);
  if (counts.Warnings > 0)
    text += "  " + palette.Paint(CountText(counts.Warnings, "warning"), TStatusTag::stWarning);
  return text;
}

TStatusRow ShortRow(const TStatus& status, std::size_t columns, const TPalette& palette) {
  const auto told = std::find_if(status.Entries.rbegin(), status.Entries.rend(),
                                 [](const TStatusEntry& entry) { return !entry.What.Progress.empty(); });
  std::string text = Clock(status.Elapsed);
  if (!status.Progress.empty()) text += "  " + status.Progress;
  if (told != status.Entries.rend()) text += "  " + told->What.Progress;
  text += "  " + status.Entries.back().What.Title + Counts(status.Counts, TPalette(false));
  const auto [shown, used] = Cut(text, columns);
  return {palette.Dim(shown), used};
}

// "  Build (Lib)      project 3 of 17  0:12 of usually 0:40"
TStatusRow EntryRow(const TStatusEntry& entry, std::size_t indent, std::size_t columns,
                    const TPalette& palette) {
  std::string right = entry.What.Progress;
  if (entry.What.IsAction) right += (right.empty() ? "" : "  ") + TimeText(entry.Elapsed, entry.What.Usual);
  const auto [rightShown, rightUsed] = Cut(right, columns / 2);
  const auto [title, used] = Cut(std::string(indent, ' ') + entry.What.Title, columns - rightUsed - 2);
  const std::string gap(columns - used - rightUsed, ' ');
  return {(entry.What.IsAction ? palette.Bold(title) : palette.Dim(title)) + gap + palette.Dim(rightShown),
          columns};
}

// What the run has come to, and how far it usually has come by now.
TStatusRow SumRow(const TStatus& status, std::size_t columns, const TPalette& palette) {
  std::string head;
  std::size_t used = 0;
  if (status.Usual && *status.Usual >= std::chrono::seconds(1)) {
    head = Bar(status.Elapsed, *status.Usual) + "  ";
    used = BarColumns + 2;
  }
  const std::string time =
      TimeText(status.Elapsed, status.Usual) + (status.Progress.empty() ? "" : "  " + status.Progress);
  const std::size_t counts = Counts(status.Counts, TPalette(false)).size();
  used += time.size() + counts;
  return {head + palette.Dim(time) + Counts(status.Counts, palette), std::min(used, columns)};
}

} // namespace

std::vector<TStatusRow> DrawStatus(const TStatus& status, std::size_t columns, std::size_t rows,
                                   const TPalette& palette) {
  if (status.Entries.empty()) return {};
  if (columns + 1 < FewestColumns || rows < FewestRows) return {ShortRow(status, columns, palette)};
  const std::size_t width = std::min(columns, WidestLine);
  const bool areSideBySide = !status.Progress.empty();
  const auto& entries = status.Entries;
  const std::size_t most = areSideBySide ? rows / 2 : MostEntries;
  const std::size_t first = entries.size() - std::min(entries.size(), most);
  std::vector<TStatusRow> lines;
  for (std::size_t i = first; i < entries.size(); ++i)
    lines.push_back(EntryRow(entries[i], areSideBySide ? 0 : (i - first) * 2, width, palette));
  lines.push_back(SumRow(status, width, palette));
  return lines;
}

// The cursor stands behind the last one. A terminal that has become narrower has broken lines that were
// wider.
std::string EraseStatus(std::span<const std::size_t> drawn, std::size_t columns) {
  if (drawn.empty()) return {};
  std::size_t rows = 0;
  for (const std::size_t used : drawn)
    rows += std::max<std::size_t>((used + columns - 1) / columns, 1);
  const std::string up = rows > 1 ? "\x1b[" + std::to_string(rows - 1) + "A" : "";
  return "\r" + up + "\x1b[J"; // and all below it
}

} // namespace kx::cli
