#include "program/report/HtmlReport.h"

#include "contract/UnitTests.h"
#include "program/report/Assets.h"
#include "program/report/ResultRows.h"

#include <algorithm>
#include <array>

namespace kx {

namespace {

struct TSection {
  const char* Id;
  const char* Title;
  bool (*IsThere)(const THtmlPage& page);
  std::int64_t (*Count)(const THtmlPage& page); // beside its name in the contents; 0 shows none
  void (*Write)(const THtmlPage& page, THtmlWriter& out);
};

bool Always(const THtmlPage& /*page*/) {
  return true;
}
std::int64_t None(const THtmlPage& /*page*/) {
  return 0;
}

constexpr std::array<TSection, 8> Sections{{
    {"problems", "Problems", Always, ProblemCount, WriteProblems},
    {"tests", "Tests", [](const THtmlPage& page) { return !page.Suites.IsEmpty(); },
     [](const THtmlPage& page) { return page.Report.Tests.Failed; }, WriteTests},
    {"timeline", "Timeline", HasTimeline, None, WriteTimeline},
    {"results", "Results", Always, [](const THtmlPage& page) { return ProjectCount(page.Report); },
     WriteResults},
    {"trends", "Trends", [](const THtmlPage& page) { return page.Past != nullptr; }, None, WriteTrends},
    {"versions", "Versions", [](const THtmlPage& page) { return !page.Stamps.empty(); },
     [](const THtmlPage& page) { return static_cast<std::int64_t>(page.Stamps.size()); }, WriteStamps},
    {"log", "Log", Always, [](const THtmlPage& page) { return page.LogLines; }, nullptr},
    {"facts", "Facts", Always, None, WriteFacts},
}};

void WriteHead(const THtmlPage& page, THtmlWriter& out) {
  out << "<!DOCTYPE html>\n<html lang=en><head><meta charset=utf-8>"
         "<meta name=viewport content=\"width=device-width, initial-scale=1\">"
         // Nothing in a log can make the page load or run anything of its own.
         "<meta http-equiv=Content-Security-Policy content=\"default-src 'none'; img-src data:; "
         "style-src 'unsafe-inline'; script-src 'unsafe-inline'\"><title>"
      << page.Title << ": " << WordOf(page.Report.Result) << "</title><style>" << assets::Theme
      << assets::TimelineStyle << assets::ReportStyle << "</style></head>\n<body>\n<header class=top><p><b>"
      << page.Title << "</b> <span>";
  if (page.Report.Began != std::chrono::system_clock::time_point()) out << DayTime(page.Report.Began);
  out << "</span></p></header>\n";
}

void WriteContents(const THtmlPage& page, THtmlWriter& out) {
  out << "<nav class=contents aria-label=Contents tabindex=-1>";
  for (const auto& section : Sections) {
    if (!section.IsThere(page)) continue;
    out << "<a href=#" << section.Id << ">" << section.Title;
    if (const auto count = section.Count(page); count > 0) out << " <span>" << count << "</span>";
    out << "</a>";
  }
  out << "</nav>\n";
}

constexpr const char* LogTools =
    "<div class=tools hidden><input type=search id=log-find placeholder=\"Search the log\" "
    "aria-label=\"Search "
    "the log\"><output id=log-found></output><div class=choice role=group aria-label=Match><button "
    "id=log-previous>Previous</button><button id=log-next>Next</button></div><div class=choice role=group "
    "aria-label=Lines><button id=log-all aria-pressed=true>All lines</button><button id=log-problems "
    "aria-pressed=false>Problems</button></div><div class=choice role=group aria-label=Groups><button "
    "id=log-fold>Fold all</button><button id=log-unfold>Unfold all</button></div></div>\n";

} // namespace

void THtmlReport::On(const TRunEvent& event) {
  now_ = event.Time;
  suiteNames_.On(event);
  std::visit([this](const auto& what) { On(what); }, event.What);
}

void THtmlReport::On(const TActionStarted& action) {
  log_.OpenGroup(NameWithPass(action.Description, action.Pass));
  actions_.push_back(NameWithPass(action.Name, action.Pass));
}

void THtmlReport::On(const TActionEnded& ended) {
  log_.CloseGroup(StatusOf(ended.Result.Result), WordOf(ended.Result.Result), ended.Result.Elapsed);
  if (!actions_.empty()) actions_.pop_back();
}

void THtmlReport::On(const TGroupStarted& group) {
  log_.OpenGroup(group.Title);
}

void THtmlReport::On(const TGroupEnded& group) {
  const TStatusTag status = group.Status.value_or(TStatusTag::stNormal);
  log_.CloseGroup(status, GroupWord(status), group.Elapsed);
}

void THtmlReport::On(const TMessageSent& message) {
  log_.Add(message, now_);
  TakeStamp(message.Text, stamps_);
}

// Unit tests have a section of their own, and what compilers counted stands in the results.
void THtmlReport::On(const TMetricSent& sent) {
  const TKxMetric& metric = sent.Metric;
  if (const std::u16string* xml = TestSuiteXml(metric)) suites_.Append(suiteNames_.Rename(*xml));
  const auto* value = std::get_if<std::int64_t>(&metric.Value);
  if (value == nullptr || metric.Category == UnitTestCategory || metric.Category == u"Compiler") return;
  figures_.push_back(
      {metric.Category + u": " + metric.Name, ActionOf(sent, actions_), sent.Configuration, *value});
}

platform::Status THtmlReport::Write(const TRunReport& report, const platform::PutBytes& put) {
  log_.End();
  const TPast* past = report.Past != nullptr && !report.Past->Runs.empty() ? report.Past.get() : nullptr;
  const THtmlPage page{title_, report, past, suites_, figures_, stamps_, log_.Lines()};
  THtmlWriter out(put);
  WriteHead(page, out);
  out << "<div class=page>\n";
  WriteContents(page, out);
  out << "<main>\n";
  WriteHeadline(page, out);
  for (const auto& section : Sections) {
    if (!section.IsThere(page)) continue;
    out << "<section id=" << section.Id << "><h2>" << section.Title << "</h2>\n";
    if (section.Write != nullptr) {
      section.Write(page, out);
    } else {
      out << "<p>What failed is open. Times are those of UTC.</p>\n" << LogTools << "<div class=log>\n";
      log_.Write(out);
      out << "</div>";
    }
    out << "</section>\n";
  }
  out << "<footer>Written by kxhost. This page loads nothing from anywhere.</footer>\n</main></div>\n<script>"
      << assets::ReportScript << "</script>\n</body></html>\n";
  return out.Finish();
}

} // namespace kx
