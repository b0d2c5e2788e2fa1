// The reports that a run leaves as files: a format is a class and a row.
#pragma once

#include "foundation/platform/Spool.h"
#include "program/runner/Run.h"

#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace kx {

// Gathers what it tells while the run goes on.
class IRunReport : public IRunEventSink {
public:
  // UTF-8, piece by piece; call it once the run has ended. Fails when something could not be put aside, or
  // put.
  virtual platform::Status Write(const TRunReport& report, const platform::PutBytes& put) = 0;
};

struct TReportFormat {
  const char* Option; // of the command line
  const char* File;   // what it takes, for the help
  const char* Help;
  const char* Name; // of the report, where it is said to be written
  bool HasFindings; // all that was wrong
  // Whatever may be large waits in `folder`. `title` names the run.
  std::unique_ptr<IRunReport> (*Begin)(std::u16string_view title, const std::u16string& folder);
};
std::span<const TReportFormat> ReportFormats();

} // namespace kx
