// The results of a run and of its actions as JSON, wherever programs read them.
#pragma once

#include "program/runner/Results.h"

#include <nlohmann/json.hpp>

namespace kx {

// name, type, pass, nesting, isLoop, succeeded, result, reason, errors, warnings, tests, elapsedMs,
// configurations (configuration, succeeded, result, reason, errors, warnings, elapsedMs). "result" is a word
// of WordOf; "reason" the rule that was broken, or empty.
nlohmann::ordered_json ResultJson(const TActionResult& result);

// succeeded, result, totals (a line for people), errors, warnings, tests (passed, failed, notRun), elapsedMs.
nlohmann::ordered_json RunJson(const TRunReport& report);

} // namespace kx
