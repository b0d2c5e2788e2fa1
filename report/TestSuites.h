// The unit tests of a run, as its events carry them (TKxUnitTestRun::AsXmlString).
#pragma once

#include "runner/Events.h"

#include <cstdint>
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
};

// The XML of a run of tests when this is the metric that carries one, else null.
const std::u16string* TestSuiteXml(const TKxMetric& metric);
// Nothing for what is no such element.
std::optional<TReportedSuite> ReadTestSuite(std::u16string_view xml);

} // namespace kx
