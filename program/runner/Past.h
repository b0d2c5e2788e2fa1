// What earlier runs of the same project left, as far as a report shows it.
#pragma once

#include "program/runner/Results.h"

#include <chrono>
#include <string>
#include <unordered_map>
#include <vector>

namespace kx {

struct TPastRun {
  std::chrono::system_clock::time_point Began;
  TResultKind Result = TResultKind::Failed;
  std::chrono::milliseconds Elapsed{0};
  TProblemCounts Counts = {};
  TTestCounts Tests = {};
  std::u16string Commit = {};
};

enum class TPastTest { Absent, Passed, Failed, NotRun };

struct TPast {
  std::vector<TPastRun> Runs = {}; // the last ones, oldest first, without the run that asks
  // By fingerprint, what is wrong now and was so in the last of them: since which of Runs without a break.
  // What is wrong and not here is new.
  std::unordered_map<std::u16string, std::size_t> KnownSince = {};
  std::vector<TFinding> Fixed = {}; // was wrong in the last of Runs and is no more
  // By "suite/name" as TReportedSuite has them, for tests of this run: one outcome for each of Runs.
  std::unordered_map<std::u16string, std::vector<TPastTest>> Tests = {};
};

} // namespace kx
