// Unit-test results as the host keeps them.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

using TKxDateTime = std::chrono::time_point<std::chrono::system_clock, std::chrono::milliseconds>;

struct TKxUnitTestResult {
  bool Passed = false;
  bool Executed = false;
  std::u16string TestName = {};
  std::u16string ErrorMessage = {};
  std::u16string StackTrace = {};
  std::int64_t Duration = 0; // milliseconds
  std::optional<TKxDateTime> StartTime = {};
  std::optional<TKxDateTime> EndTime = {};
  std::u16string ClassName = {}; // empty where the results name none
  std::u16string Outcome = {};   // the tool's own word: "Failed", "Timeout"
};

// An action reports a run as metrics of one category. The text metric TestResultsMetric is the run's
// AsXmlString: from it a host has the single tests.
inline constexpr std::u16string_view UnitTestCategory = u"Unit_Tests";
inline constexpr std::u16string_view TestResultsMetric = u"Test_Results";
inline constexpr std::u16string_view TestRunNameMetric = u"Test_Run_Name";

// One run of a set of tests.
class TKxUnitTestRun {
public:
  // Counts what was executed as passed or failed, and its time; what was not as not run.
  explicit TKxUnitTestRun(std::vector<TKxUnitTestResult> results);

  void SetName(std::u16string_view name) { name_ = name; }

  const std::vector<TKxUnitTestResult>& Results() const { return results_; }
  const std::u16string& Name() const { return name_; }
  std::int64_t TotalCount() const { return PassedCount() + FailedCount() + NotRunCount(); }
  std::int64_t PassedCount() const { return passed_; }
  std::int64_t FailedCount() const { return failed_; }
  std::int64_t NotRunCount() const { return notRun_; }
  std::int64_t TotalTime() const { return totalTime_; } // milliseconds

  // One element "testsuite" as JUnit reports have it, a document of its own or a part of a larger report. A
  // test without a class has the run's name in its place. A failure says its message twice, since readers
  // look at the attribute or at the text only: the text goes on with the stack trace. Characters that XML
  // forbids are left out, line ends are kept.
  std::u16string AsXmlString() const;

private:
  std::vector<TKxUnitTestResult> results_;
  std::u16string name_;
  std::int64_t passed_ = 0;
  std::int64_t failed_ = 0;
  std::int64_t notRun_ = 0;
  std::int64_t totalTime_ = 0;
};

// "2010-04-01T10:20:30.123"
std::u16string DateTimeText(TKxDateTime time);

} // namespace kx
