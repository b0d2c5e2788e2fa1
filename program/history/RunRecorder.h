// Remembers a run, and tells its report of those before it.
#pragma once

#include "program/history/Outcomes.h"
#include "program/history/Place.h"
#include "program/runner/Events.h"
#include "program/runner/TestSuites.h"

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace kx::history {

// What is kept; the oldest runs go first.
struct TLimits {
  std::int64_t Runs = 1'000;
  std::chrono::days Age{400};
};

struct TRememberedMetric {
  std::u16string Action; // with its pass
  std::u16string Configuration;
  std::u16string Name; // "category.name"
  std::int64_t Value = 0;
};

class TRunRecorder : public IRunEventSink {
public:
  // Does nothing at all for a project that is not remembered.
  TRunRecorder(const TPlace& place, const std::u16string& project, TLimits limits = {});

  void On(const TRunEvent& event) override;
  // Once the run has ended: gives the report its past and adds the run to it, or nothing of it. No failure is
  // one of the run: what is to be said of it, in one line, or nothing. Waits some seconds at most for others.
  std::u16string Finish(TRunReport& report);

private:
  void Keep(const TMetricSent& sent);
  void KeepTests(const std::u16string& xml);
  void ReadAndAdd(TRunReport& report);

  const std::u16string file_;
  const bool isOwn_;
  const TLimits limits_;
  TSuiteNames suiteNames_;
  std::vector<std::u16string> actions_; // running ones, the innermost last
  std::map<std::u16string, TTestOutcome> tests_;
  std::vector<TRememberedMetric> metrics_;
};

} // namespace kx::history
