// What a run, or several, leave behind: files, an end table, an exit code.
#pragma once

#include "program/cli/CommonOptions.h"
#include "program/cli/GateArguments.h"
#include "program/report/JsonLinesSink.h"
#include "program/report/ReportFormats.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kx::cli {

// Before anything is opened: what is left never takes the place of what is read (`taken`) or changed, nor of
// something else that is left. Raises EUsage.
void RequireHarmlessOutput(const TCommonOptions& options, const TGates& gates,
                           std::vector<std::u16string> taken,
                           const std::function<bool(std::u16string_view file)>& isChanged);

// The files that are left beside the log.
class TReports {
public:
  TReports(const TCommonOptions& options, std::u16string_view title);

  void ForEachSink(const std::function<void(IRunEventSink&)>& handle) const {
    for (const auto& wanted : reports_)
      handle(*wanted.Report);
  }
  // False when one could not be written, which was then said; `lines` gets one for each that was.
  bool Write(const TRunReport& report, std::string& lines);

private:
  struct TWanted {
    const TReportFormat* Format;
    std::u16string File;
    std::unique_ptr<IRunReport> Report;
  };
  std::vector<TWanted> reports_;
};

// Prints the closing list and the end table, writes the files, asks the gates, and gives the exit code. `log`
// may be null.
int EndRun(const TRunReport& report, TReports& reports, TJsonLinesSink* log, const TGates& gates,
           const TCommonOptions& options);

} // namespace kx::cli
