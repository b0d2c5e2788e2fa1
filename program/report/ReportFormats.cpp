#include "program/report/ReportFormats.h"

#include "program/report/HtmlReport.h"
#include "program/report/JUnitSink.h"

#include <array>

namespace kx {

std::span<const TReportFormat> ReportFormats() {
  static constexpr std::array<TReportFormat, 2> formats{{
      {"--junit", "FILE.xml", "Write the unit tests of the run as JUnit's XML", "Unit tests",
       [](std::u16string_view, const std::u16string& folder) -> std::unique_ptr<IRunReport> {
         return std::make_unique<TJUnitSink>(folder);
       }},
      {"--report", "FILE.html", "Write the run as one page to look at in a browser", "Report",
       [](std::u16string_view title, const std::u16string& folder) -> std::unique_ptr<IRunReport> {
         return std::make_unique<THtmlReport>(title, folder);
       }},
  }};
  return formats;
}

} // namespace kx
