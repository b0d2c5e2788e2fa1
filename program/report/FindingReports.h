// What a run leaves of its findings as files.
#pragma once

#include "program/report/ReportFormats.h"

namespace kx {

// `write` gets what the run came to.
class TFindingReport : public IRunReport {
public:
  using TWrite = platform::Status (*)(const TRunReport& report, const platform::PutBytes& put);
  explicit TFindingReport(TWrite write) : write_(write) {}

  void On(const TRunEvent& /*event*/) override {} // all of it is in the report
  platform::Status Write(const TRunReport& report, const platform::PutBytes& put) override {
    return write_(report, put);
  }

private:
  TWrite write_;
};

platform::Status WriteRunSarif(const TRunReport& report, const platform::PutBytes& put);
// GitLab's "Code Quality" report: an array with an object for each finding.
platform::Status WriteRunCodeQuality(const TRunReport& report, const platform::PutBytes& put);

} // namespace kx
