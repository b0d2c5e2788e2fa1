// The unit tests of a run in the XML that JUnit made common: "testsuites" with one "testsuite" for each run
// of tests, in their order. A run without tests leaves a document without suites.
#pragma once

#include "foundation/platform/Files.h"
#include "foundation/platform/Spool.h"
#include "program/report/ReportFormats.h"
#include "program/runner/TestSuites.h"

#include <cstdint>

namespace kx {

// The suites wait in the folder, since their totals stand in front of them.
class TJUnitSink : public IRunReport {
public:
  explicit TJUnitSink(const std::u16string& folder = platform::TemporaryDirectory()) : suites_(folder) {}

  void On(const TRunEvent& event) override;
  platform::Status Write(const TRunReport& report, const platform::PutBytes& put) override;

private:
  TSuiteNames names_;
  platform::Spool suites_;
  std::int64_t tests_ = 0;
  std::int64_t failures_ = 0;
  std::int64_t skipped_ = 0;
};

} // namespace kx
