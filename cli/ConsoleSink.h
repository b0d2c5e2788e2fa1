// The log of a run for people: groups indented, statuses in colour, elapsed times, an end table, and on a
// terminal a live status line while a tool runs.
#pragma once

#include "cli/Common.h"
#include "cli/StatusLine.h"
#include "runner/Events.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kx::cli {

// Escape sequences, or nothing where there is no colour.
class TPalette {
public:
  explicit TPalette(bool enabled) : enabled_(enabled) {}
  std::string Paint(std::string_view text, TStatusTag status) const;
  std::string Bold(std::string_view text) const;
  std::string Dim(std::string_view text) const;

private:
  std::string Wrap(const char* code, std::string_view text) const;
  bool enabled_;
};
// By the user's choice, NO_COLOR, and whether standard output is a terminal.
TPalette ChoosePalette(TColorChoice choice);

std::string FormatElapsed(std::chrono::milliseconds time); // "0.42 s", "1 min 05 s"

class TConsoleSink : public IRunEventSink {
public:
  TConsoleSink(TVerbosity verbosity, TPalette palette);
  void On(const TRunEvent& event) override;

private:
  void Show(int depth, const TActionStarted& event);
  void Show(int depth, const TActionEnded& event);
  void Show(int depth, const TMessageSent& event);
  void Show(int depth, const TGroupStarted& event);
  void Show(int depth, const TGroupEnded& event);
  void Show(int depth, const TMetricSent& event);
  void Line(int depth, std::string_view text);
  bool Shows(TStatusTag status) const;

  TVerbosity verbosity_;
  TPalette palette_;
  TStatusLine status_;
  std::string stamp_; // before each line of a diagnostic log
};

// Rows of action, configuration, result, errors, warnings, time; one for each configuration that an action
// built.
std::string EndTable(const std::vector<TActionResult>& results, const TPalette& palette);

} // namespace kx::cli
