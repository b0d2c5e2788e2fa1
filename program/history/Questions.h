// What a person asks the history.
#pragma once

#include "program/history/Database.h"
#include "program/history/Outcomes.h"
#include "program/history/RunRecorder.h"
#include "program/runner/Past.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kx::history {

struct TRememberedRun {
  TNumber Number = 0; // from 1, in the order in which they ended
  TPastRun Run = {};
  std::u16string Branch = {};
  std::int64_t NewFindings = 0;
  std::int64_t FixedFindings = 0;
};

// An action, or a configuration or a project that it built.
struct TPartName {
  std::u16string Action = {}; // with its pass
  std::u16string Configuration = {};
  std::u16string Project = {};
};

struct TRememberedPart {
  TPartName Name = {};
  int Nesting = 0;
  TResultKind Result = TResultKind::Failed;
  TProblemCounts Counts = {};
  std::chrono::milliseconds Began{0};
  std::chrono::milliseconds Elapsed{0};
};

struct TRememberedDetails {
  TRememberedRun Run = {};
  TRunSurroundings Surroundings = {};
  std::vector<TRememberedPart> Parts = {};
  std::vector<TRememberedMetric> Metrics = {};
  std::vector<TFinding> Findings = {};
  std::vector<std::u16string> FailedTests = {};
};

struct TTestHistory {
  std::u16string Name = {};
  std::int64_t Runs = 0; // that executed it
  std::int64_t Failures = 0;
  std::int64_t Changes = 0;           // from one run that executed it to the next
  bool IsFlaky = false;               // changed without another commit, or again and again
  TNumber LastFailure = 0;            // the run; 0 for none
  std::chrono::milliseconds Usual{0}; // the median
  std::vector<TPastTest> Strip = {};  // one for each of the last hundred runs, oldest first
};

struct TKnownFinding {
  TFinding Finding = {};
  TNumber SinceRun = 0; // without a break; it may be too old to be remembered itself
  std::chrono::system_clock::time_point Since = {};
};

// Of those that succeeded.
struct TUsualTime {
  TPartName Part = {}; // without an action: the whole run
  std::int64_t Runs = 0;
  std::chrono::milliseconds Median{0};
  std::chrono::milliseconds Low{0};  // a tenth is faster
  std::chrono::milliseconds High{0}; // a tenth is slower
  std::chrono::milliseconds Last{0};
  int Trend = 0; // per cent by which the newer half's median is above the older half's; 0 for few
};

// What is known of it, for somebody who waits; empty without a history.
struct TUsualTimes {
  std::optional<std::chrono::milliseconds> Run = {};
  std::map<std::u16string, std::chrono::milliseconds> Actions = {}; // by name with pass
};
TUsualTimes ReadUsualTimes(const std::u16string& file); // raises nothing

class THistory {
public:
  // Raises EKxException when there is none, and so do the questions when it cannot be read.
  explicit THistory(const std::u16string& file);

  // The last ones, oldest first.
  std::vector<TRememberedRun> Runs(std::int64_t last);
  TNumber LastRun(); // 0 for none
  std::optional<TRememberedDetails> Details(TNumber run);
  // Those that one of the last runs executed; flaky ones first, then the slowest.
  std::vector<TTestHistory> Tests(std::int64_t last);
  // What is wrong now, the oldest first.
  std::vector<TKnownFinding> Findings();
  // Of all that one of the last runs did, in the order of its last run.
  std::vector<TUsualTime> Times(std::int64_t last);

private:
  TNumber FirstOf(std::int64_t last);
  std::vector<TRememberedPart> PartsOf(TNumber run);
  void ReadOutcomes(TRememberedDetails& details);
  void ReadMetrics(TRememberedDetails& details);

  TDatabase database_;
};

} // namespace kx::history
