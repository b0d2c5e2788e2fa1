// The answers of the history as JSON, wherever programs read them. Times are ISO 8601 in universal time,
// results words of WordOf.
#pragma once

#include "foundation/formats/JsonWriter.h"
#include "program/history/Questions.h"

namespace kx::history {

// The members of the object that is open: run, began, result, elapsedMs, errors, warnings, tests (passed,
// failed, notRun), newFindings, fixedFindings, commit, branch.
void WriteRun(const TRememberedRun& run, TJsonWriter& json);
// The same, and machine, system, commandLine, tools, parts (action, configuration, project, nesting, result,
// errors, warnings, beganMs, elapsedMs), metrics (action, configuration, name, value), findings
// (WriteFinding), failedTests.
void WriteDetails(const TRememberedDetails& details, TJsonWriter& json);
// name, runs, failures, changes, flaky, lastFailure (a run; null for none), usualMs, strip (a letter a run,
// oldest first: "p" passed, "f" failed, "n" not run, "-" absent).
void WriteTest(const TTestHistory& test, TJsonWriter& json);
// sinceRun, since, and those of WriteFinding.
void WriteFinding(const TKnownFinding& finding, TJsonWriter& json);
// action, configuration, project (all empty for whole runs), runs, medianMs, lowMs, highMs, lastMs,
// trendPercent.
void WriteTime(const TUsualTime& time, TJsonWriter& json);

} // namespace kx::history
