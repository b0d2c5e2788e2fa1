// The table at the end of a run: one row for each configuration that an action built, one for every other
// action.
#pragma once

#include "runner/Events.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace kx {

struct TResultRow {
  std::u16string Action; // with the pass of its loop behind it
  int Nesting = 0;       // loops around it
  std::u16string Configuration;
  bool Succeeded = false;
  std::int64_t Errors = 0;
  std::int64_t Warnings = 0;
  std::chrono::milliseconds Elapsed{0};

  TStatusTag Status() const; // stSuccess, stWarning or stError
};

// In the order in which the actions ended. An action that failed although its configurations all succeeded,
// or that never came to one, has a row of its own.
std::vector<TResultRow> ResultRows(const std::vector<TActionResult>& results);

std::string FormatElapsed(std::chrono::milliseconds time); // "0.42 s", "1 min 05 s"
// "succeeded", "warnings", "failed", or "done" where nothing is known.
const char* ResultWord(TStatusTag status);

} // namespace kx
