#include "foundation/text/UnifiedDiff.h"

#include "foundation/text/Text.h"

#include <algorithm>
#include <span>

namespace kx::text {

namespace {

using Lines = std::span<const std::u16string_view>;

constexpr std::size_t Context = 3;
// The search takes time and memory with the square of the differing lines; beyond this all of one text is
// shown as replaced by all of the other.
constexpr std::size_t MostDifferences = 2000;

// One line of the result: its mark (' ', '-' or '+'), and the lines of both texts before which it stands.
struct Edit {
  char16_t Mark;
  std::size_t Before;
  std::size_t After;
};

// How far into `before` a number of edits leads, by diagonal (E. W. Myers, "An O(ND) Difference Algorithm and
// Its Variations"): the place i of row d is diagonal i - d.
using Row = std::vector<std::size_t>;

bool ComesFromAbove(const Row& last, std::size_t i, std::size_t d) {
  return i == 0 || (i != 2 * d && last[i - 2] < last[i]);
}

// The rows up to the one that reaches the end of both texts; empty when there are too many differences.
std::vector<Row> Search(Lines before, Lines after) {
  std::vector<Row> rows;
  for (std::size_t d = 0; d <= std::min(before.size() + after.size(), MostDifferences); ++d) {
    Row row(2 * d + 1, 0);
    for (std::size_t i = 0; i <= 2 * d; i += 2) {
      std::size_t x = 0;
      if (d > 0) x = ComesFromAbove(rows.back(), i, d) ? rows.back()[i] : rows.back()[i - 2] + 1;
      while (x < before.size() && x + d - i < after.size() && before[x] == after[x + d - i])
        ++x;
      row[i] = x;
      if (x < before.size() || x + d - i < after.size()) continue;
      rows.push_back(std::move(row));
      return rows;
    }
    rows.push_back(std::move(row));
  }
  return {};
}

std::vector<Edit> ReplaceEverything(Lines before, Lines after) {
  std::vector<Edit> edits;
  for (std::size_t x = 0; x < before.size(); ++x)
    edits.push_back({u'-', x, 0});
  for (std::size_t y = 0; y < after.size(); ++y)
    edits.push_back({u'+', before.size(), y});
  return edits;
}

// From the end back to the start, then turned round.
std::vector<Edit> Edits(Lines before, Lines after) {
  const auto rows = Search(before, after);
  if (rows.empty()) return ReplaceEverything(before, after);
  std::vector<Edit> edits;
  std::size_t x = before.size();
  std::size_t y = after.size();
  for (std::size_t d = rows.size() - 1; d > 0; --d) {
    const Row& last = rows[d - 1];
    const std::size_t i = x + d - y;
    const bool added = ComesFromAbove(last, i, d);
    const std::size_t lastX = added ? last[i] : last[i - 2];
    const std::size_t lastY = added ? lastX + d - 1 - i : lastX + d + 1 - i;
    while (x > lastX + (added ? 0 : 1))
      edits.push_back({u' ', --x, --y});
    edits.push_back({added ? u'+' : u'-', lastX, lastY});
    x = lastX;
    y = lastY;
  }
  while (x > 0)
    edits.push_back({u' ', --x, --y});
  std::reverse(edits.begin(), edits.end());
  return edits;
}

// "start,count": lines count from 1; where none are left, the number is that of the line before.
std::u16string Range(std::size_t first, std::size_t count) {
  return FromInteger(static_cast<std::int64_t>(count == 0 ? first : first + 1)) + u"," +
         FromInteger(static_cast<std::int64_t>(count));
}

void AppendHunk(std::vector<std::u16string>& lines, std::span<const Edit> hunk, Lines before, Lines after) {
  const auto count = [hunk](char16_t other) {
    return static_cast<std::size_t>(
        std::ranges::count_if(hunk, [other](const Edit& edit) { return edit.Mark != other; }));
  };
  lines.push_back(u"@@ -" + Range(hunk.front().Before, count(u'+')) + u" +" +
                  Range(hunk.front().After, count(u'-')) + u" @@");
  for (const auto& edit : hunk)
    lines.push_back(edit.Mark + std::u16string(edit.Mark == u'+' ? after[edit.After] : before[edit.Before]));
}

} // namespace

std::vector<std::u16string> UnifiedDiff(std::u16string_view before, std::u16string_view after) {
  const auto oldLines = SplitLines(before);
  const auto newLines = SplitLines(after);
  const auto edits = Edits(oldLines, newLines);
  std::vector<std::u16string> lines;
  const auto changed = [](const Edit& edit) { return edit.Mark != u' '; };
  for (auto next = std::ranges::find_if(edits, changed); next != edits.end();) {
    const auto first = next - std::min<std::ptrdiff_t>(Context, next - edits.begin());
    auto last = next; // the last change of the hunk: changes nearer than two contexts belong together
    for (; next != edits.end() && next - last <= static_cast<std::ptrdiff_t>(2 * Context) + 1;
         next = std::find_if(next + 1, edits.end(), changed))
      last = next;
    const auto end = last + 1 + std::min<std::ptrdiff_t>(Context, edits.end() - last - 1);
    AppendHunk(lines, {first, end}, oldLines, newLines);
  }
  return lines;
}

} // namespace kx::text
