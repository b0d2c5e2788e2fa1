// The log of a run for people: groups indented, statuses in colour, elapsed times, an end table, on a
// terminal a live status line while a tool runs, and in the job of a CI system that system's groups and
// annotations.
#pragma once

#include "cli/Common.h"
#include "cli/StatusLine.h"
#include "report/CiDialect.h"
#include "report/ResultRows.h"
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

class TConsoleSink : public IRunEventSink {
public:
  TConsoleSink(TVerbosity verbosity, TPalette palette, const TCiDialect* ci = nullptr);
  void On(const TRunEvent& event) override;

private:
  void Show(int depth, const TActionStarted& event);
  void Show(int depth, const TActionEnded& event);
  void Show(int depth, const TMessageSent& event);
  void Show(int depth, const TGroupStarted& event);
  void Show(int depth, const TGroupEnded& event);
  void Show(int depth, const TMetricSent& event);
  void Line(int depth, std::string_view text);
  void Title(int depth, std::u16string_view title, const std::string& painted);
  void EndTitle();
  bool Annotate(std::u16string_view text, TStatusTag status);
  std::string Shown(std::u16string_view text) const;
  bool Shows(TStatusTag status) const;

  TVerbosity verbosity_;
  TPalette palette_;
  TStatusLine status_;
  std::string stamp_; // before each line of a diagnostic log
  const TCiDialect* ci_;
  std::u16string ciRoot_;
  std::vector<std::pair<int, std::u16string>> ciGroups_; // open ones by id and title; 0: not shown as one
  int ciGroupCount_ = 0;
  std::int64_t seconds_ = 0; // of the current event, since 1970
};

// Rows of action, configuration, result, errors, warnings, time; one for each configuration that an action
// built.
std::string EndTable(const std::vector<TActionResult>& results, const TPalette& palette);

} // namespace kx::cli
