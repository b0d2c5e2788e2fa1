#include "report/HtmlReport.h"

#include "host/UnitTests.h"
#include "report/Assets.h"
#include "report/ResultRows.h"
#include "text/Encoding.h"
#include "text/Text.h"

#include <algorithm>

namespace kx {

namespace {

// Browsers lay out an element as a whole: blocks of this size are left alone until they are scrolled to.
constexpr std::size_t LinesPerElement = 200;

bool IsProblem(TStatusTag status) {
  return status == TStatusTag::stWarning || status == TStatusTag::stError;
}

std::string UniversalTime(std::chrono::system_clock::time_point time) {
  std::string text =
      text::ToUtf8(DateTimeText(std::chrono::floor<std::chrono::milliseconds>(time))).substr(0, 19);
  std::ranges::replace(text, 'T', ' ');
  return text + " UTC";
}

} // namespace

void THtmlReport::On(const TRunEvent& event) {
  if (!started_) started_ = event.Time;
  now_ = event.Time;
  suiteNames_.On(event);
  std::visit([this](const auto& what) { On(what); }, event.What);
}

void THtmlReport::OpenGroup(std::u16string_view title) {
  EndLines(open_.back());
  open_.push_back({.Title = std::u16string(title)});
}

void THtmlReport::EndLines(TOpen& group) {
  if (group.LineCount > 0) group.Body += "</pre>";
  group.LineCount = 0;
}

// What went well is folded away; what did not stands open.
void THtmlReport::CloseGroup(TStatusTag status, const std::string& outcome,
                             std::chrono::milliseconds elapsed) {
  if (open_.size() < 2) return;
  TOpen group = std::move(open_.back());
  open_.pop_back();
  EndLines(group);
  const bool bad = group.HasProblems || IsProblem(status);
  TOpen& outer = open_.back();
  outer.HasProblems = outer.HasProblems || bad;
  outer.Body += std::string("<details class=\"") + StatusClass(status) + (bad ? " bad\" open>" : "\">") +
                "<summary><span class=\"title\">" + HtmlText(group.Title) +
                "</span> <span class=\"outcome\">" + outcome + "</span> <span class=\"time\">" +
                FormatElapsed(elapsed) + "</span></summary>";
  outer.Body += group.Body;
  outer.Body += "</details>\n";
}

void THtmlReport::On(const TActionStarted& action) {
  const std::u16string pass = action.Pass.empty() ? u"" : u" (" + action.Pass + u")";
  OpenGroup(action.Description + pass);
  actions_.push_back(action.Name + pass);
}

void THtmlReport::On(const TActionEnded& ended) {
  CloseGroup(StatusOf(ended.Result.Result), WordOf(ended.Result.Result), ended.Result.Elapsed);
  if (!actions_.empty()) actions_.pop_back();
}

void THtmlReport::On(const TGroupStarted& group) {
  OpenGroup(group.Title);
}

void THtmlReport::On(const TGroupEnded& group) {
  const TStatusTag status = group.Status.value_or(TStatusTag::stNormal);
  CloseGroup(status, GroupWord(status), group.Elapsed);
}

void THtmlReport::On(const TMessageSent& message) {
  TOpen& group = open_.back();
  if (group.LineCount == LinesPerElement || (group.LineCount > 0 && group.Lines != message.Status))
    EndLines(group);
  if (group.LineCount == 0) group.Body += std::string("<pre class=\"") + StatusClass(message.Status) + "\">";
  group.Lines = message.Status;
  ++group.LineCount;
  group.HasProblems = group.HasProblems || IsProblem(message.Status);
  group.Body += HtmlText(message.Text) + "\n";
}

void THtmlReport::On(const TMetricSent& sent) {
  if (sent.Metric.Category == UnitTestCategory) { // has a section of its own
    if (const std::u16string* xml = TestSuiteXml(sent.Metric)) suites_.push_back(suiteNames_.Rename(*xml));
    return;
  }
  const auto* value = std::get_if<std::int64_t>(&sent.Metric.Value);
  if (value == nullptr) return;
  const std::u16string title = sent.Metric.Category + u": " + sent.Metric.Name;
  auto chart = std::ranges::find(charts_, title, &TChart::Title);
  if (chart == charts_.end()) chart = charts_.insert(charts_.end(), {.Title = title});
  std::u16string label = actions_.empty() ? std::u16string() : actions_.back();
  if (!sent.Configuration.empty()) label += u", " + sent.Configuration;
  chart->Bars.push_back({std::move(label), *value});
}

std::string THtmlReport::Page(const TRunReport& report) const {
  const std::string title = HtmlText(title_);
  const std::string outcome = WordOf(report.Result);
  std::string page = "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
                     "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">"
                     // Nothing in a log can make the page load or run anything of its own.
                     "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
                     "style-src 'unsafe-inline'; script-src 'unsafe-inline'\">"
                     "<title>" +
                     title + ": " + outcome + "</title><style>";
  page += assets::ReportStyle;
  page += "</style></head>\n<body>\n<header><h1>" + title + "</h1><p><strong class=\"" +
          StatusClass(StatusOf(report.Result)) + "\">" + outcome + "</strong>";
  if (started_) {
    const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(now_ - *started_);
    page += " after " + FormatElapsed(elapsed) + ", started " + UniversalTime(*started_);
  }
  page += "</p></header>\n<main>\n" + ResultTableHtml(report) + TestsHtml(suites_) + ChartsHtml(charts_);
  page += "<section id=\"log\"><h2>Log</h2>\n<p class=\"tools\" hidden><button id=\"problems\" "
          "aria-pressed=\"false\">"
          "Only warnings and errors</button> <button id=\"expand\">Open all</button> "
          "<button id=\"collapse\">Close all</button></p>\n";
  TOpen log = open_.front();
  EndLines(log);
  page += log.Body;
  page += "</section>\n</main>\n<script>";
  page += assets::ReportScript;
  return page + "</script>\n</body></html>\n";
}

} // namespace kx
