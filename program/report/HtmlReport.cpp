#include "program/report/HtmlReport.h"

#include "contract/UnitTests.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "program/report/Assets.h"
#include "program/report/ResultRows.h"

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
  open_.push_back({.Header = headers_.size(), .Title = std::u16string(title)});
  headers_.push_back({log_.Size()});
}

void THtmlReport::EndLines(TOpen& group) {
  if (group.LineCount > 0) log_.Append("</pre>");
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
  headers_[group.Header].Html =
      std::string("<details class=\"") + StatusClass(status) + (bad ? " bad\" open>" : "\">") +
      "<summary><span class=\"title\">" + HtmlText(group.Title) + "</span> <span class=\"outcome\">" +
      outcome + "</span> <span class=\"time\">" + FormatElapsed(elapsed) + "</span></summary>";
  log_.Append("</details>\n");
}

void THtmlReport::On(const TActionStarted& action) {
  OpenGroup(NameWithPass(action.Description, action.Pass));
  actions_.push_back(NameWithPass(action.Name, action.Pass));
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
  if (group.LineCount == 0) log_.Append(std::string("<pre class=\"") + StatusClass(message.Status) + "\">");
  group.Lines = message.Status;
  ++group.LineCount;
  group.HasProblems = group.HasProblems || IsProblem(message.Status);
  log_.Append(HtmlText(message.Text) + "\n");
}

void THtmlReport::On(const TMetricSent& sent) {
  if (sent.Metric.Category == UnitTestCategory) { // has a section of its own
    if (const std::u16string* xml = TestSuiteXml(sent.Metric))
      tests_.Append(TestsHtml(suiteNames_.Rename(*xml)));
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

std::string THtmlReport::HeadHtml(const TRunReport& report) const {
  const std::string title = HtmlText(title_);
  const std::string outcome = WordOf(report.Result);
  std::string page = "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
                     "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">"
                     // Nothing in a log can make the page load or run anything of its own.
                     "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
                     "style-src 'unsafe-inline'; script-src 'unsafe-inline'\">"
                     "<title>" +
                     title + ": " + outcome + "</title><style>";
  page += assets::Theme;
  page += assets::ReportStyle;
  page += "</style></head>\n<body>\n<header><h1>" + title + "</h1><p><strong class=\"" +
          StatusClass(StatusOf(report.Result)) + "\">" + outcome + "</strong>";
  if (started_) {
    const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(now_ - *started_);
    page += " after " + FormatElapsed(elapsed) + ", started " + UniversalTime(*started_);
  }
  return page + "</p></header>\n<main>\n" + ResultTableHtml(report);
}

platform::Status THtmlReport::WriteLog(const platform::PutBytes& put) const {
  if (!log_.State()) return log_.State(); // a log of which a part is missing says nothing
  std::uint64_t at = 0;
  for (const auto& header : headers_) {
    if (auto done = log_.CopyTo(put, std::exchange(at, header.At), header.At); !done) return done;
    if (auto done = put(header.Html); !done) return done;
  }
  return log_.CopyTo(put, at, log_.Size());
}

platform::Status THtmlReport::WriteTests(const platform::PutBytes& put) const {
  if (tests_.Size() == 0) return platform::Done{};
  auto done = put("<section id=\"tests\"><h2>Unit tests</h2>\n");
  if (done) done = tests_.CopyTo(put);
  return done ? put("</section>\n") : done;
}

platform::Status THtmlReport::Write(const TRunReport& report, const platform::PutBytes& put) {
  EndLines(open_.back());
  auto done = put(HeadHtml(report));
  if (done) done = WriteTests(put);
  if (done)
    done = put(ChartsHtml(charts_) +
               "<section id=\"log\"><h2>Log</h2>\n<p class=\"tools\" hidden><button id=\"problems\" "
               "aria-pressed=\"false\">"
               "Only warnings and errors</button> <button id=\"expand\">Open all</button> "
               "<button id=\"collapse\">Close all</button></p>\n");
  if (done) done = WriteLog(put);
  if (done) done = put("</section>\n</main>\n<script>");
  if (done) done = put(assets::ReportScript);
  return done ? put("</script>\n</body></html>\n") : done;
}

} // namespace kx
