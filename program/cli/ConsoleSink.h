// The log of a run for people: groups indented, statuses in colour, elapsed times, an end table, on a
// terminal live lines at the bottom while a tool runs, and in the job of a CI system that system's groups and
// annotations.
#pragma once

#include "contract/Actions.h"
#include "program/cli/CommonOptions.h"
#include "program/cli/Palette.h"
#include "program/cli/StatusLine.h"
#include "program/history/Questions.h"
#include "program/parts/PartsRun.h"
#include "program/report/CiDialect.h"
#include "program/report/ResultRows.h"
#include "program/runner/Events.h"

#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace kx::cli {

// Of a run in parts, the live lines show the parts that run; their events are shown when they have ended.
class TConsoleSink : public IRunEventSink, public IPartsWatcher {
public:
  // `usual` says how long the run and its actions take, as far as that is known.
  TConsoleSink(TVerbosity verbosity, TPalette palette, const TCiDialect* ci = nullptr,
               history::TUsualTimes usual = {});
  void On(const TRunEvent& event) override;
  void ExpectParts(std::size_t count);
  void Begin(const TPart& part) override;
  void End(const TPart& part) override;

private:
  void Show(int depth, const TActionStarted& event);
  void Show(int depth, const TActionEnded& event);
  void Show(int depth, const TMessageSent& event);
  void Show(int depth, const TGroupStarted& event);
  void Show(int depth, const TGroupEnded& event);
  void Show(int depth, const TMetricSent& event);
  void Show(int depth, const TRunEnded& event);
  void ShowTests(const TMetricSent& event);
  void Push(TUnderWay what);
  void Pop();
  void Line(int depth, std::string_view text);
  void Title(int depth, std::u16string_view title, const std::string& painted);
  void EndTitle();
  // False for what an ordinary line says.
  bool Annotate(std::u16string_view text, TStatusTag status);
  bool Annotate(const TFinding& finding);
  bool Shows(TStatusTag status) const;
  bool Shows(const TMessageSent& message) const;

  TVerbosity verbosity_;
  TPalette palette_;
  const history::TUsualTimes usual_;
  TStatusLine status_;
  std::size_t parts_ = 0; // of a run in parts; else 0
  std::size_t partsEnded_ = 0;
  std::map<std::u16string, std::size_t> partKeys_; // of the live lines, by the parts' ids
  std::string stamp_;                              // before each line of a diagnostic log
  const TCiDialect* ci_;
  std::u16string ciRoot_;
  std::vector<std::pair<int, std::u16string>> ciGroups_; // open ones by id and title; 0: not shown as one
  int ciGroupCount_ = 0;
  std::map<TFindingSeverity, int> ciProblems_; // that were marked
  std::set<std::u16string> ciMarked_;          // a summary of a tool says them again
  TSuiteNames suiteNames_;
  std::int64_t seconds_ = 0; // of the current event, since 1970
};

// Rows of action, configuration, result, errors, warnings, time; one for each configuration that an action
// built. Behind them a line of what the rows add up to. Empty when nothing ran.
std::string EndTable(const TRunReport& report, const TPalette& palette);

} // namespace kx::cli
