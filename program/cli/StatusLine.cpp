#include "program/cli/StatusLine.h"

#include "foundation/platform/Console.h"
#include "program/cli/Output.h"

#include <algorithm>
#include <utility>

namespace kx::cli {

namespace {

using std::chrono::milliseconds;

constexpr auto Interval = milliseconds(100);

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

std::string TStatusLine::Drawing() {
  const auto now = TClock::now();
  const auto since = [now](TClock::time_point then) {
    return std::chrono::duration_cast<milliseconds>(now - then);
  };
  TStatus status{.Progress = progress_, .Counts = counts_, .Elapsed = since(start_), .Usual = usual_};
  for (const TEntry& entry : entries_)
    status.Entries.push_back({entry.What, since(entry.Since)});
  const auto size = platform::SizeOfTerminal(platform::ConsoleStream::Output);
  const auto columns = static_cast<std::size_t>(std::max(size.Columns - 1, 1));
  std::string text;
  for (const TStatusRow& row : DrawStatus(status, columns, static_cast<std::size_t>(size.Rows), palette_)) {
    text += (drawn_.empty() ? "" : "\n") + row.Text;
    drawn_.push_back(row.Columns);
  }
  if (!drawn_.empty()) drawnAt_ = now;
  return text;
}

std::string TStatusLine::Erasure() {
  if (drawn_.empty()) return {};
  const auto columns = std::max(platform::SizeOfTerminal(platform::ConsoleStream::Output).Columns, 1);
  return EraseStatus(std::exchange(drawn_, {}), static_cast<std::size_t>(columns));
}

} // namespace kx::cli
