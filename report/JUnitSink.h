// The unit tests of a run in the XML that JUnit made common: "testsuites" with one "testsuite" for each run
// of tests, in their order. A run without tests leaves a document without suites.
#pragma once

#include "runner/TestSuites.h"

#include <cstdint>
#include <string>

namespace kx {

class TJUnitSink : public IRunEventSink {
public:
  void On(const TRunEvent& event) override;
  std::string Document() const; // UTF-8

private:
  TSuiteNames names_;
  std::string suites_;
  std::int64_t tests_ = 0;
  std::int64_t failures_ = 0;
  std::int64_t skipped_ = 0;
};

} // namespace kx
