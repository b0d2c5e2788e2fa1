// The parts of a report's page around its log.
#include "program/report/HtmlReport.h"
#include "foundation/formats/Xml.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "program/report/ResultRows.h"
#include "program/runner/TestSuites.h"

#include <algorithm>
#include <array>

namespace kx {

namespace {

std::string Number(std::int64_t number) {
  return std::to_string(number);
}

std::string RowHtml(const TResultRow& row) {
  return "<tr><td style=\"padding-left:" + Number(row.Nesting + 1) + "em\">" + HtmlText(row.Action) +
         "</td><td>" + HtmlText(row.Configuration) + "</td><td class=\"" + StatusClass(row.Status()) + "\">" +
         row.Word() + "</td><td class=\"number\">" + Number(row.Counts.Errors) +
         "</td><td class=\"number\">" + Number(row.Counts.Warnings) + "</td><td class=\"number\">" +
         FormatElapsed(row.Elapsed) + "</td></tr>\n";
}

std::string BarHtml(const TChartBar& bar, std::int64_t largest) {
  const std::int64_t percent = largest > 0 ? std::max<std::int64_t>(bar.Value, 0) * 100 / largest : 0;
  return "<tr><th scope=\"row\">" + HtmlText(bar.Label) +
         "</th><td><span class=\"bar\" style=\"width:" + Number(percent) +
         "%\"></span></td><td class=\"number\">" + Number(bar.Value) + "</td></tr>\n";
}

std::string ChartHtml(const TChart& chart) {
  std::int64_t largest = 0;
  for (const auto& bar : chart.Bars)
    largest = std::max(largest, bar.Value);
  std::string html =
      "<figure><figcaption>" + HtmlText(chart.Title) + "</figcaption><table class=\"chart\">\n";
  for (const auto& bar : chart.Bars)
    html += BarHtml(bar, largest);
  return html + "</table></figure>\n";
}

std::string ShareHtml(const char* kind, std::int64_t count) {
  return count == 0
             ? std::string()
             : std::string("<span class=\"") + kind + "\" style=\"flex-grow:" + Number(count) + "\"></span>";
}

std::string TestHtml(const TReportedTest& test) {
  const char* const kind = test.Failed ? "error" : test.Skipped ? "warning" : "success";
  const char* const outcome = test.Failed ? "failed" : test.Skipped ? "not run" : "passed";
  const std::string line = "<span class=\"title\">" + HtmlText(test.Name) +
                           "</span> <span class=\"outcome\">" + outcome + "</span> <span class=\"time\">" +
                           HtmlText(test.Seconds) + " s</span>";
  if (!test.Failed) return std::string("<li class=\"") + kind + "\">" + line + "</li>\n";
  return std::string("<li class=\"") + kind + "\"><details class=\"error bad\"><summary>" + line +
         "</summary><pre class=\"error\">" + HtmlText(test.Message) + "\n</pre><pre>" +
         HtmlText(test.StackTrace) + "</pre></details></li>\n";
}

// Failed tests first: nobody should have to look for them.
std::string SuiteHtml(const TReportedSuite& suite) {
  std::string html = "<h3>" + HtmlText(suite.Name) + "</h3>\n<p>" + Number(suite.Passed()) + " passed, " +
                     Number(suite.Failed) + " failed, " + Number(suite.Skipped) + " not run, " +
                     HtmlText(suite.Seconds) + " s</p>\n<div class=\"shares\" aria-hidden=\"true\">" +
                     ShareHtml("success", suite.Passed()) + ShareHtml("error", suite.Failed) +
                     ShareHtml("warning", suite.Skipped) + "</div>\n<ul class=\"tests\">\n";
  for (const bool failed : {true, false})
    for (const auto& test : suite.Tests)
      if (test.Failed == failed) html += TestHtml(test);
  return html + "</ul>\n";
}

} // namespace

const char* StatusClass(TStatusTag status) {
  static constexpr std::array<const char*, 4> names{"plain", "success", "warning", "error"};
  return names[static_cast<std::size_t>(status)];
}

std::string HtmlText(std::u16string_view text) {
  return text::ToUtf8(XmlEscape(text::VisibleControls(text)));
}

std::string ResultTableHtml(const TRunReport& report) {
  std::string html =
      "<section id=\"results\"><h2>Results</h2>\n<div class=\"wide\"><table><thead><tr><th>Action</th>"
      "<th>Configuration</th><th>Result</th><th class=\"number\">Errors</th><th "
      "class=\"number\">Warnings</th><th class=\"number\">Time</th></tr></thead>"
      "<tbody>\n";
  for (const auto& row : ResultRows(report.Actions))
    html += RowHtml(row);
  return html + "</tbody></table></div>\n<p>" + TotalsText(report) + "</p></section>\n";
}

std::string ChartsHtml(const std::vector<TChart>& charts) {
  if (charts.empty()) return {};
  std::string html = "<section id=\"metrics\"><h2>Metrics</h2>\n<div class=\"charts\">\n";
  for (const auto& chart : charts)
    html += ChartHtml(chart);
  return html + "</div></section>\n";
}

std::string TestsHtml(std::u16string_view suite) {
  const auto read = ReadTestSuite(suite);
  return read ? SuiteHtml(*read) : std::string();
}

} // namespace kx
