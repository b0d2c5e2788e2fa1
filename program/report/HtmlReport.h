// A run as one self-contained HTML page that people send around: what became of it and why, what is wrong,
// the unit tests, when what ran, what changed against earlier runs, and the log. It needs no network, and a
// script only for searching and filtering.
#pragma once

#include "foundation/platform/Files.h"
#include "program/report/HtmlLog.h"
#include "program/report/HtmlPage.h"
#include "program/report/ReportFormats.h"

#include <string>
#include <string_view>
#include <vector>

namespace kx {

// Builds the log while the run goes on; everything else comes from the run's report at the end. What may be
// large waits in the folder.
class THtmlReport : public IRunReport {
public:
  explicit THtmlReport(std::u16string_view title,
                       const std::u16string& folder = platform::TemporaryDirectory())
      : title_(title), log_(folder), suites_(folder) {}

  void On(const TRunEvent& event) override;
  platform::Status Write(const TRunReport& report, const platform::PutBytes& put) override;

private:
  void On(const TActionStarted& action);
  void On(const TActionEnded& ended);
  void On(const TMessageSent& message);
  void On(const TGroupStarted& group);
  void On(const TGroupEnded& group);
  void On(const TMetricSent& sent);
  void On(const TRunEnded& /*ended*/) {}

  std::u16string title_;
  std::chrono::system_clock::time_point now_;
  std::vector<std::u16string> actions_; // running ones, with their passes
  THtmlLog log_;
  TSuiteNames suiteNames_;
  TSuiteSpool suites_;
  std::vector<TFigure> figures_;
  std::vector<TStamp> stamps_;
};

// What a message of a stamping says was written: the file in `now` first, then value by value.
void TakeStamp(std::u16string_view message, std::vector<TStamp>& stamps);

} // namespace kx
