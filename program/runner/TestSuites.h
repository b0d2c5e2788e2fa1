// The unit tests of a run, as its events carry them (TKxUnitTestRun::AsXmlString).
#pragma once

#include "program/runner/Events.h"
#include "program/runner/Past.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

struct TReportedTest {
  std::u16string Name;
  std::u16string Seconds; // as the suite has them, "1.250"
  bool Failed = false;
  bool Skipped = false;
  std::u16string Message = {};
  std::u16string StackTrace = {};
};

struct TReportedSuite {
  std::u16string Name;
  std::u16string Seconds;
  std::vector<TReportedTest> Tests = {};
  std::int64_t Failed = 0;
  std::int64_t Skipped = 0;

  std::int64_t Passed() const { return static_cast<std::int64_t>(Tests.size()) - Failed - Skipped; }
  TTestCounts Counts() const { return {Passed(), Failed, Skipped}; }
};

// "1.250" of a suite or a test; 0 for what is no time.
std::chrono::milliseconds ElapsedOf(std::u16string_view seconds);
TPastTest OutcomeOf(const TReportedTest& test);
// By which earlier runs know the test (TPast::Tests): "suite/name".
std::u16string PastNameOf(const TReportedSuite& suite, const TReportedTest& test);

// The XML of a run of tests when this is the metric that carries one, else null.
const std::u16string* TestSuiteXml(const TKxMetric& metric);
// Nothing for what is no such element.
std::optional<TReportedSuite> ReadTestSuite(std::u16string_view xml);

// Gives the suites of a run names of their own, as readers of JUnit's XML need them: the passes of the loops
// around the action stand behind the name, and a name that was there before has a number. Tests whose class
// is the suite, since they have none, follow it: GitLab takes equal tests of equal classes for one.
class TSuiteNames {
public:
  void On(const TRunEvent& event); // each event of the run
  // The XML, as TKxUnitTestRun writes it, of a suite that the last event brought.
  std::u16string Rename(std::u16string_view xml);

private:
  std::vector<std::u16string> passes_; // one for each action under way; empty outside a loop
  std::vector<std::u16string> told_;   // likewise, of what the last event is of
  std::map<std::u16string, int> seen_; // how often each name has come
};

} // namespace kx
