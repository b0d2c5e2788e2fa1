// The last line of a terminal while a tool runs: what is being done, for how long, and what it has found so
// far.
#pragma once

#include "program/cli/Output.h"
#include "program/cli/Palette.h"
#include "program/runner/Results.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace kx::cli {

// Draws itself every quarter of a second from a thread of its own; without a terminal it does nothing at all.
// Everything else that goes to the terminal goes through Print, so that the line never mixes with it.
class TStatusLine {
public:
  TStatusLine(bool enabled, const TPalette& palette);
  ~TStatusLine();
  TStatusLine(const TStatusLine&) = delete;
  TStatusLine& operator=(const TStatusLine&) = delete;

  void Print(std::string_view text);
  // What is being done now, and how far the loop around it has come; without `progress` that of what is
  // around it holds on.
  void Push(std::string_view title, std::string_view progress = {});
  void Pop();
  void SetCounts(const TProblemCounts& counts);

private:
  struct TEntry {
    std::string Title;
    std::string Progress;
  };
  void Draw();
  void Erase();
  void Work();
  std::string Text() const;

  const bool enabled_;
  const TPalette palette_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool ending_ = false;
  bool drawn_ = false;
  std::vector<TEntry> entries_; // the innermost last
  std::chrono::steady_clock::time_point since_;
  TProblemCounts counts_;
  std::thread thread_;
};

} // namespace kx::cli
