// What a report shows of earlier runs.
#pragma once

#include "program/history/Database.h"
#include "program/history/Outcomes.h"
#include "program/runner/Past.h"

#include <map>
#include <string>

namespace kx::history {

inline constexpr int RunsOfPast = 30;

std::chrono::system_clock::time_point TimeOf(std::int64_t milliseconds); // since 1970

// Whether what the run did not find is gone: not for one that did not get to everything, or that found too
// much.
bool IsComplete(const TRunReport& report);

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
