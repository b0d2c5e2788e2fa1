// The last lines of a terminal while a tool runs (StatusDrawing.h), below all else that is printed.
#pragma once

#include "program/cli/Palette.h"
#include "program/cli/StatusDrawing.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace kx::cli {

// Draws itself several times a second from a thread of its own; without a terminal it does nothing at all.
// Everything else that goes to the terminal goes through Print, so that the lines never mix with it.
class TStatusLine {
public:
  // `usual` is how long such a run takes, where that is known.
  TStatusLine(bool enabled, const TPalette& palette, std::optional<std::chrono::milliseconds> usual = {});
  ~TStatusLine();
  TStatusLine(const TStatusLine&) = delete;
  TStatusLine& operator=(const TStatusLine&) = delete;

  void Print(std::string_view text);
  std::size_t Push(TUnderWay what); // gives what Remove takes
  void Pop();                       // the innermost
  void Remove(std::size_t key);     // of several that run side by side
  // How far the run has come as a whole, "12 of 40 parts"; what is under way runs side by side from then on.
  void SetProgress(std::string text);
  void SetCounts(const TProblemCounts& counts);

private:
  using TClock = std::chrono::steady_clock;
  struct TEntry {
    TUnderWay What;
    TClock::time_point Since;
    std::size_t Key;
  };
  std::string Erasure();
  std::string Drawing();
  void Work();

  const bool enabled_;
  const TPalette palette_;
  const std::optional<std::chrono::milliseconds> usual_;
  const TClock::time_point start_ = TClock::now();
  std::mutex mutex_;
  std::condition_variable changed_;
  bool ending_ = false;
  std::vector<std::size_t> drawn_; // the columns of the lines that stand there
  TClock::time_point drawnAt_;
  std::vector<TEntry> entries_; // the innermost last
  std::size_t pushed_ = 0;      // so far
  std::string progress_;
  TProblemCounts counts_;
  std::thread thread_;
};

} // namespace kx::cli
