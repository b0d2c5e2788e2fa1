// A run as one self-contained HTML page: the result table, times and metrics as charts, unit tests with their
// messages and stack traces, and the log as groups that fold. It needs no network and, but for filtering, no
// script.
#pragma once

#include "foundation/platform/Files.h"
#include "foundation/platform/Spool.h"
#include "program/report/ReportFormats.h"
#include "program/runner/TestSuites.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

// A figure of one action, or of one of its passes or configurations.
struct TChartBar {
  std::u16string Label;
  std::int64_t Value = 0;
};
struct TChart {
  std::u16string Title; // "Compiler: Errors"
  std::vector<TChartBar> Bars = {};
};

// Builds the log while the run goes on; everything else comes from the run's report at the end. Lines of the
// log and unit tests, of which there may be millions, wait in the folder as the text that they become.
class THtmlReport : public IRunReport {
public:
  explicit THtmlReport(std::u16string_view title,
                       const std::u16string& folder = platform::TemporaryDirectory())
      : title_(title), log_(folder), tests_(folder) {
    open_.emplace_back();
  }

  void On(const TRunEvent& event) override;
  platform::Status Write(const TRunReport& report, const platform::PutBytes& put) override;

private:
  // A group or an action that is being logged. Consecutive lines of one kind share an element, so that a page
  // with hundreds of thousands of lines stays light.
  struct TOpen {
    std::size_t Header = 0; // in headers_
    std::u16string Title;
    TStatusTag Lines = TStatusTag::stNormal; // of the element that is open
    std::size_t LineCount = 0;               // in it; 0: none is open
    bool HasProblems = false;                // warnings or errors, here or deeper
  };

  void On(const TActionStarted& action);
  void On(const TActionEnded& ended);
  void On(const TMessageSent& message);
  void On(const TGroupStarted& group);
  void On(const TGroupEnded& group);
  void On(const TMetricSent& sent);
  void On(const TRunEnded& /*ended*/) {}
  // What stands in front of a group's lines and is known when it ends.
  struct THeader {
    std::uint64_t At; // in the log
    std::string Html = {};
  };

  std::string HeadHtml(const TRunReport& report) const;
  platform::Status WriteTests(const platform::PutBytes& put) const;
  platform::Status WriteLog(const platform::PutBytes& put) const;
  void OpenGroup(std::u16string_view title);
  void CloseGroup(TStatusTag status, const std::string& outcome, std::chrono::milliseconds elapsed);
  void EndLines(TOpen& group);

  std::u16string title_;
  std::optional<std::chrono::system_clock::time_point> started_;
  std::chrono::system_clock::time_point now_;
  std::vector<TOpen> open_;             // the page itself first
  std::vector<std::u16string> actions_; // running ones, with their passes
  platform::Spool log_;
  std::vector<THeader> headers_; // of all groups, in their order
  std::vector<TChart> charts_;
  TSuiteNames suiteNames_;
  platform::Spool tests_;
};

// The parts of the page around the log.
const char* StatusClass(TStatusTag status);     // of the page's style
std::string HtmlText(std::u16string_view text); // escaped; control characters made visible
std::string ResultTableHtml(const TRunReport& report);
std::string ChartsHtml(const std::vector<TChart>& charts);
std::string TestsHtml(std::u16string_view suite); // XML

} // namespace kx
