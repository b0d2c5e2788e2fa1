#include "program/cli/StatusLine.h"

#include "foundation/platform/Console.h"
#include "foundation/text/Encoding.h"
#include "program/cli/Output.h"
#include "program/report/ResultRows.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kx::cli {

namespace {

using std::chrono::milliseconds;

constexpr auto Interval = milliseconds(100);
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

} // namespace

TStatusLine::TStatusLine(bool enabled, const TPalette& palette, std::optional<milliseconds> usual)
    : enabled_(enabled), palette_(palette), usual_(usual) {
  if (enabled_) thread_ = std::thread([this] { Work(); });
}

TStatusLine::~TStatusLine() {
  if (!enabled_) return;
  {
    const std::scoped_lock lock(mutex_);
    ending_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

// The lines move down below what is printed, unless so much comes that drawing them would be most of the
// work.
void TStatusLine::Print(std::string_view text) {
  const std::scoped_lock lock(mutex_);
  const bool draws = !drawn_.empty() && TClock::now() - drawnAt_ >= Interval;
  std::string all = Erasure();
  all += text;
  if (draws) all += Drawing();
  cli::Print(all);
}

std::size_t TStatusLine::Push(TUnderWay what) {
  const std::scoped_lock lock(mutex_);
  entries_.push_back({std::move(what), TClock::now(), ++pushed_});
  return pushed_;
}

void TStatusLine::Pop() {
  const std::scoped_lock lock(mutex_);
  if (!entries_.empty()) entries_.pop_back();
}

void TStatusLine::Remove(std::size_t key) {
  const std::scoped_lock lock(mutex_);
  std::erase_if(entries_, [key](const TEntry& entry) { return entry.Key == key; });
}

void TStatusLine::SetProgress(std::string text) {
  const std::scoped_lock lock(mutex_);
  progress_ = std::move(text);
}

void TStatusLine::SetCounts(const TProblemCounts& counts) {
  const std::scoped_lock lock(mutex_);
  counts_ = counts;
}

void TStatusLine::Work() {
  std::unique_lock lock(mutex_);
  while (!changed_.wait_for(lock, Interval, [this] { return ending_; })) {
    const std::string erasure = Erasure();
    cli::Print(erasure + Drawing());
  }
  cli::Print(Erasure());
}

// Errors and warnings in their colours; nothing for none.
std::string TStatusLine::Counts(const TPalette& palette) const {
  std::string text;
  if (counts_.Errors > 0)
    text += "  " + palette.Paint(CountText(counts_.Errors, "error"), TStatusTag::stError);
  if (counts_.Warnings > 0)
    text += "  " + palette.Paint(CountText(counts_.Warnings, "warning"), TStatusTag::stWarning);
  return text;
}

TStatusLine::TLine TStatusLine::ShortLine(std::size_t columns) const {
  const auto told = std::find_if(entries_.rbegin(), entries_.rend(),
                                 [](const TEntry& entry) { return !entry.What.Progress.empty(); });
  std::string text = Clock(std::chrono::duration_cast<milliseconds>(TClock::now() - start_));
  if (!progress_.empty()) text += "  " + progress_;
  if (told != entries_.rend()) text += "  " + told->What.Progress;
  text += "  " + entries_.back().What.Title + Counts(TPalette(false));
  const auto [shown, used] = Cut(text, columns);
  return {palette_.Dim(shown), used};
}

// "  Build (Lib)      project 3 of 17  0:12 of usually 0:40"
TStatusLine::TLine TStatusLine::EntryLine(const TEntry& entry, std::size_t indent,
                                          std::size_t columns) const {
  std::string right = entry.What.Progress;
  if (entry.What.IsAction)
    right +=
        (right.empty() ? "" : "  ") +
        TimeText(std::chrono::duration_cast<milliseconds>(TClock::now() - entry.Since), entry.What.Usual);
  const auto [rightShown, rightUsed] = Cut(right, columns / 2);
  const auto [title, used] = Cut(std::string(indent, ' ') + entry.What.Title, columns - rightUsed - 2);
  const std::string gap(columns - used - rightUsed, ' ');
  return {(entry.What.IsAction ? palette_.Bold(title) : palette_.Dim(title)) + gap + palette_.Dim(rightShown),
          columns};
}

// What the run has come to, and how far it usually has come by now.
TStatusLine::TLine TStatusLine::SumLine(std::size_t columns) const {
  const auto elapsed = std::chrono::duration_cast<milliseconds>(TClock::now() - start_);
  std::string head;
  std::size_t used = 0;
  if (usual_ && *usual_ >= std::chrono::seconds(1)) {
    head = Bar(elapsed, *usual_) + "  ";
    used = BarColumns + 2;
  }
  const std::string time = TimeText(elapsed, usual_) + (progress_.empty() ? "" : "  " + progress_);
  const std::size_t counts = Counts(TPalette(false)).size();
  used += time.size() + counts;
  return {head + palette_.Dim(time) + Counts(palette_), std::min(used, columns)};
}

std::vector<TStatusLine::TLine> TStatusLine::Lines(std::size_t columns, std::size_t rows) const {
  if (columns + 1 < FewestColumns || rows < FewestRows) return {ShortLine(columns)};
  const std::size_t width = std::min(columns, WidestLine);
  const bool areSideBySide = !progress_.empty();
  const std::size_t most = areSideBySide ? rows / 2 : MostEntries;
  const std::size_t first = entries_.size() - std::min(entries_.size(), most);
  std::vector<TLine> lines;
  for (std::size_t i = first; i < entries_.size(); ++i)
    lines.push_back(EntryLine(entries_[i], areSideBySide ? 0 : (i - first) * 2, width));
  lines.push_back(SumLine(width));
  return lines;
}

std::string TStatusLine::Drawing() {
  if (entries_.empty()) return {};
  const auto size = platform::SizeOfTerminal(platform::ConsoleStream::Output);
  const auto columns = static_cast<std::size_t>(std::max(size.Columns - 1, 1));
  std::string text;
  for (const TLine& line : Lines(columns, static_cast<std::size_t>(size.Rows))) {
    text += (drawn_.empty() ? "" : "\n") + line.Text;
    drawn_.push_back(line.Columns);
  }
  drawnAt_ = TClock::now();
  return text;
}

// The cursor stands behind the last line. A terminal that has become narrower has broken lines that were
// wider.
std::string TStatusLine::Erasure() {
  if (drawn_.empty()) return {};
  const auto columns = static_cast<std::size_t>(
      std::max(platform::SizeOfTerminal(platform::ConsoleStream::Output).Columns, 1));
  std::size_t rows = 0;
  for (const std::size_t used : std::exchange(drawn_, {}))
    rows += std::max<std::size_t>((used + columns - 1) / columns, 1);
  const std::string up = rows > 1 ? "\x1b[" + std::to_string(rows - 1) + "A" : "";
  return "\r" + up + "\x1b[J"; // and all below it
}

} // namespace kx::cli
