// The table at the end of a run: one row for each configuration that an action built, one for every other
// action; a loop above what it ran.
#pragma once

#include "program/runner/Events.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace kx {

struct TResultRow {
  std::u16string Action; // with the pass of its loop behind it
  int Nesting = 0;       // loops around it
  bool IsOutcome = true; // else it adds up or explains what other rows have
  std::u16string Configuration = {};
  TResultKind Result = TResultKind::Failed;
  std::u16string Reason = {};
  TProblemCounts Counts = {};
  std::chrono::milliseconds Elapsed{0};

  TStatusTag Status() const; // that of the result; stWarning for a success with warnings
  std::string Word() const;  // "succeeded", "failed (nothing-built)"
};

// In the order in which the actions began. What an action with configurations says beside them (a failed
// stamping, a rule that it broke) is a row of its own behind theirs, "(the rest)".
std::vector<TResultRow> ResultRows(const std::vector<TActionResult>& results);

// "2 succeeded, 1 failed; 3 errors, 1 warning; 12 tests, 1 failed": what the rows (loops that only
// add up apart) come to.
std::string TotalsText(const TRunReport& report);
// "1 warning", "2 warnings".
std::string CountText(std::int64_t count, const char* what);

std::string FormatElapsed(std::chrono::milliseconds time); // "0.42 s", "1 min 05 s"
// How a group ended: "succeeded", "warnings", "failed", or "done" where nothing is known.
const char* GroupWord(TStatusTag status);

} // namespace kx
