#include "program/cli/StatusLine.h"

#include "foundation/platform/Console.h"
#include "foundation/text/Encoding.h"
#include "program/cli/Output.h"
#include "program/report/ResultRows.h"

namespace kx::cli {

namespace {

constexpr auto Interval = std::chrono::milliseconds(250);

std::string Clock(std::chrono::steady_clock::duration time) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time).count();
  const std::string rest = std::to_string(seconds % 60);
  return std::to_string(seconds / 60) + (rest.size() < 2 ? ":0" : ":") + rest;
}

} // namespace

TStatusLine::TStatusLine(bool enabled, const TPalette& palette) : enabled_(enabled), palette_(palette) {
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

void TStatusLine::Print(std::string_view text) {
  const std::scoped_lock lock(mutex_);
  Erase();
  cli::Print(text);
}

void TStatusLine::Push(std::string_view title, std::string_view progress) {
  const std::scoped_lock lock(mutex_);
  if (entries_.empty()) {
    since_ = std::chrono::steady_clock::now();
  } else if (progress.empty()) {
    progress = entries_.back().Progress;
  }
  entries_.push_back({std::string(title), std::string(progress)});
}

void TStatusLine::Pop() {
  const std::scoped_lock lock(mutex_);
  if (!entries_.empty()) entries_.pop_back();
}

void TStatusLine::SetCounts(const TProblemCounts& counts) {
  const std::scoped_lock lock(mutex_);
  counts_ = counts;
}

void TStatusLine::Work() {
  std::unique_lock lock(mutex_);
  while (!changed_.wait_for(lock, Interval, [this] { return ending_; }))
    Draw();
  Erase();
}

std::string TStatusLine::Text() const {
  const TEntry& now = entries_.back();
  std::string text = Clock(std::chrono::steady_clock::now() - since_);
  if (!now.Progress.empty()) text += "  " + now.Progress;
  text += "  " + now.Title;
  if (counts_.Errors > 0) text += "  " + CountText(counts_.Errors, "error");
  if (counts_.Warnings > 0) text += "  " + CountText(counts_.Warnings, "warning");
  return text;
}

void TStatusLine::Draw() {
  if (entries_.empty()) return;
  const int width = platform::TerminalWidth(platform::ConsoleStream::Output);
  const auto columns = static_cast<std::size_t>(width > 1 ? width - 1 : 1);
  std::u16string text = text::FromUtf8(Text());
  if (text.size() > columns) text.resize(columns);
  cli::Print("\r\x1b[2K" + palette_.Dim(ForTerminal(text)));
  drawn_ = true;
}

void TStatusLine::Erase() {
  if (drawn_) cli::Print("\r\x1b[2K");
  drawn_ = false;
}

} // namespace kx::cli
