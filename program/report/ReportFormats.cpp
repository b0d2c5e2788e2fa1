#include "program/report/ReportFormats.h"

#include "program/report/FindingReports.h"
#include "program/report/HtmlReport.h"
#include "program/report/JUnitSink.h"

#include <array>

namespace kx {

std::span<const TReportFormat> ReportFormats() {
  static constexpr std::array<TReportFormat, 4> formats{{
      {"--junit", "FILE.xml", "Write the unit tests of the run as JUnit's XML", "Unit tests", false,
       [](std::u16string_view, const std::u16string& folder) -> std::unique_ptr<IRunReport> {
         return std::make_unique<TJUnitSink>(folder);
       }},
      {"--report", "FILE.html", "Write the run as one page to look at in a browser", "Report", true,
       [](std::u16string_view title, const std::u16string& folder) -> std::unique_ptr<IRunReport> {
         return std::make_unique<THtmlReport>(title, folder);
       }},
      {"--sarif", "FILE.sarif", "Write all that was wrong as SARIF, for code scanning", "Findings", true,
       [](std::u16string_view, const std::u16string&) -> std::unique_ptr<IRunReport> {
         return std::make_unique<TFindingReport>(WriteRunSarif);
       }},
      {"--code-quality", "FILE.json", "Write all that was wrong as GitLab's code quality", "Code quality",
       true,
       [](std::u16string_view, const std::u16string&) -> std::unique_ptr<IRunReport> {
         return std::make_unique<TFindingReport>(WriteRunCodeQuality);
       }},
  }};
  return formats;
}

} // namespace kx
