// What a report shows of earlier runs.
#pragma once

#include "program/history/Database.h"
#include "program/history/Outcomes.h"
#include "program/runner/Past.h"

#include <map>
#include <set>
#include <string>

namespace kx::history {

inline constexpr int RunsOfPast = 30;

std::chrono::system_clock::time_point TimeOf(std::int64_t milliseconds); // since 1970

// Whether a run would have found again what an action told in the run before, so that it is gone when it did
// not. Not where it was stopped or found too much, nor where the action has not run: it was not chosen, its
// condition did not hold, a failure came before it.
class TLookedFor {
public:
  explicit TLookedFor(const TRunReport& report);
  bool operator()(const std::u16string& action) const; // its name with its pass

private:
  bool none_;
  bool all_; // so that what actions told that are not in the project any more is gone, too
  std::set<std::u16string> ran_;
};

// `tests` are those of the run.
TPast ReadPast(TDatabase& database, const TRunReport& report,
               const std::map<std::u16string, TTestOutcome>& tests);

// The columns that MakePastRun reads, from the given one on; so below.
inline constexpr const char* PastRunColumns =
    "began, result, elapsed, errors, warnings, passed, failed, not_run, commit_id";
TPastRun MakePastRun(const TStatement& row, int first);

// The columns that MakeFinding reads, from the given one on.
inline constexpr const char* FindingColumns = "fingerprint, rule, severity, message, file, line, \"column\", "
                                              "code, project, configuration, action, advice";
TFinding MakeFinding(const TStatement& row, int first = 0);

} // namespace kx::history
