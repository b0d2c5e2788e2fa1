// What became of a run, in words and figures.
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/findings/SourceFiles.h"
#include "program/report/HtmlPage.h"
#include "program/report/ResultRows.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace kx {

namespace {

constexpr std::size_t LongestCause = 140;

bool IsBuildError(const TFinding& finding) {
  return finding.Severity == TFindingSeverity::Error && !IsOfTest(finding);
}

std::u16string TimeText(std::chrono::milliseconds time) {
  return text::FromUtf8(FormatElapsed(time));
}

struct TBuilt { // projects where the tool tells them, else configurations
  std::u16string_view What;
  std::int64_t Succeeded = 0;
  std::int64_t Failed = 0;
  std::int64_t NotBuilt = 0;
  std::int64_t Total() const { return Succeeded + Failed + NotBuilt; }
};

void Count(TResultKind result, TBuilt& built) {
  const bool notBuilt = result == TResultKind::NothingToDo || result == TResultKind::Stopped;
  ++(notBuilt ? built.NotBuilt : IsSuccess(result) ? built.Succeeded : built.Failed);
}

// A project counts once in each configuration, as the last action that built it left it.
TBuilt BuiltBy(const TRunReport& report) {
  std::map<std::pair<std::u16string, std::u16string>, TResultKind> results;
  TBuilt projects{u"project"};
  TBuilt configurations{u"configuration"};
  for (const auto& action : report.Actions)
    for (const auto& configuration : action.Configurations) {
      Count(configuration.Result, configurations);
      for (const auto& project : configuration.Projects)
        results[{project.Project, configuration.Configuration}] = project.Result;
    }
  for (const auto& [project, result] : results)
    Count(result, projects);
  return projects.Total() > 0 ? projects : configurations;
}

// "3 errors in Core, first in Foo.cpp"
std::u16string CauseByErrors(const std::vector<const TFinding*>& errors) {
  std::set<std::u16string> projects;
  for (const auto* error : errors)
    if (!error->Project.empty()) projects.insert(ProjectName(error->Project));
  const TFinding& first = *errors.front();
  if (projects.empty() && first.Place.File.empty()) return text::Shortened(first.Message, LongestCause);
  std::u16string cause = CountOf(static_cast<std::int64_t>(errors.size()), u"error");
  if (projects.size() == 1)
    cause += u" in " + *projects.begin();
  else if (projects.size() > 1)
    cause += u" in " + CountOf(static_cast<std::int64_t>(projects.size()), u"project");
  if (first.Place.File.empty()) return cause;
  return cause + (errors.size() > 1 ? u", first in " : u", in ") + text::ExtractFileName(first.Place.File);
}

std::u16string CauseByResult(const TRunReport& report) {
  for (const auto& row : ResultRows(report.Actions)) {
    if (!row.IsOutcome || IsSuccess(row.Result) || row.Result == TResultKind::Ignored) continue;
    std::u16string cause = row.Action;
    if (!row.Configuration.empty()) cause += u", " + row.Configuration;
    return row.Reason.empty() ? cause : cause + u" (" + row.Reason + u")";
  }
  return {};
}

std::u16string FailedTests(const TRunReport& report) {
  return text::FromUtf8(Grouped(report.Tests.Failed)) + u" of " + CountOf(report.Tests.Total(), u"test") +
         u" failed";
}

std::u16string FailureText(const TRunReport& report) {
  std::vector<const TFinding*> errors;
  for (const auto& finding : report.Findings)
    if (IsBuildError(finding)) errors.push_back(&finding);
  const TBuilt built = BuiltBy(report);
  if (report.NothingExecuted && !errors.empty())
    return u"Nothing was done: " + text::Shortened(errors.front()->Message, LongestCause);
  if (errors.empty() && report.Tests.Failed > 0)
    return (built.Succeeded > 0 && built.Failed == 0 ? u"Built, but " : u"") + FailedTests(report);
  const std::u16string cause = errors.empty() ? CauseByResult(report) : CauseByErrors(errors);
  const std::u16string outcome = report.Result == TResultKind::Failed ? u"Failed" : u"Finished with failures";
  return cause.empty() ? outcome : outcome + u": " + cause;
}

std::u16string SuccessText(const TRunReport& report) {
  const TBuilt built = BuiltBy(report);
  std::u16string text;
  if (built.Succeeded > 0) text = u"Built " + CountOf(built.Succeeded, built.What);
  if (report.Tests.Passed > 0)
    text += (text.empty() ? u"Passed " : u" and passed ") + CountOf(report.Tests.Passed, u"test");
  const auto actions = std::ranges::count(report.Actions, false, &TActionResult::IsLoop);
  if (text.empty()) text = u"Succeeded: " + CountOf(actions, u"action");
  return text + u" in " + TimeText(report.Elapsed);
}

std::int64_t NewOnes(const THtmlPage& page, TFindingSeverity severity) {
  return std::ranges::count_if(page.Report.Findings, [&](const TFinding& finding) {
    return finding.Severity == severity && !IsOfTest(finding) &&
           NoveltyOf(finding, page.Past) == TNovelty::New;
  });
}

std::int64_t Ones(const TRunReport& report, TFindingSeverity severity) {
  return std::ranges::count_if(report.Findings, [&](const TFinding& finding) {
    return finding.Severity == severity && !IsOfTest(finding);
  });
}

std::int64_t FixedOnes(const TPast& past, TFindingSeverity severity) {
  return std::ranges::count_if(past.Fixed, [&](const TFinding& finding) {
    return finding.Severity == severity && !IsOfTest(finding);
  });
}

// What failed before anything else did.
void WriteFirstFailure(const THtmlPage& page, THtmlWriter& out) {
  const auto& findings = page.Report.Findings;
  const auto first = std::ranges::find(findings, TFindingSeverity::Error, &TFinding::Severity);
  if (first == findings.end() || IsSuccess(page.Report.Result)) return;
  out << "<div class=first><h2>Failed first</h2><p class=message>";
  if (!first->Code.empty()) out << "<code>" << first->Code << "</code> ";
  out << first->Message << "</p><p class=where>";
  std::vector<std::u16string> where;
  if (!first->Place.File.empty()) where.push_back(SeenFrom(page.Report.Root, first->Place.File));
  if (first->Place.Line > 0) where.push_back(u"line " + text::FromInteger(first->Place.Line));
  for (const auto& part : {ProjectName(first->Project), first->Configuration, first->Action})
    if (!part.empty()) where.push_back(part);
  out << text::Join(where, u", ") << "</p><p class=links>";
  out << (IsOfTest(*first) ? "<a href=#tests>Test</a>" : "<a href=#first>Problem</a>");
  if (first->Said > 0)
    out << " <a href=#L" << std::to_string(first->Said) << ">Log line " << first->Said << "</a>";
  out << "</p></div>\n";
}

// "<b>2 new</b>, 1 known": what there is none of is left out.
void WriteNovelty(const THtmlPage& page, TFindingSeverity severity, std::int64_t count, THtmlWriter& out) {
  const std::int64_t fresh = NewOnes(page, severity);
  const char* separator = "<dd>";
  const auto part = [&](const char* before, std::int64_t number, const char* after) {
    if (number > 0) out << std::exchange(separator, ", ") << before << number << after;
  };
  part("<b class=new>", fresh, " new</b>");
  part("", count - fresh, " known");
  part("", FixedOnes(*page.Past, severity), " fixed");
}

void WriteProblemFigure(const THtmlPage& page, TFindingSeverity severity, const char* title,
                        THtmlWriter& out) {
  const std::int64_t count = Ones(page.Report, severity);
  out << "<div><dt>" << Icon(count == 0 ? "done" : WordOf(severity), "") << title << "</dt><dd class=value>"
      << count << "</dd>";
  if (page.Past != nullptr) WriteNovelty(page, severity, count, out);
  out << "</div>";
}

std::optional<std::chrono::milliseconds> UsualTime(const TPast* past) {
  std::vector<std::chrono::milliseconds> times;
  if (past != nullptr)
    for (const auto& run : past->Runs)
      if (IsSuccess(run.Result)) times.push_back(run.Elapsed);
  if (times.empty()) return std::nullopt;
  const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
  std::ranges::nth_element(times, middle);
  return *middle;
}

void WriteFigures(const THtmlPage& page, THtmlWriter& out) {
  const TRunReport& report = page.Report;
  out << "<dl class=figures>";
  WriteProblemFigure(page, TFindingSeverity::Error, "Errors", out);
  WriteProblemFigure(page, TFindingSeverity::Warning, "Warnings", out);
  const TTestCounts& tests = report.Tests;
  if (tests.Total() > 0) {
    out << "<div><dt>" << Icon(tests.Failed > 0 ? "error" : "done", "") << "Tests</dt><dd class=value>"
        << (tests.Failed > 0 ? tests.Failed : tests.Passed) << " <small>of " << tests.Total()
        << (tests.Failed > 0 ? " failed" : " passed") << "</small></dd>";
    if (tests.NotRun > 0) out << "<dd>" << tests.NotRun << " not run</dd>";
    out << "</div>";
  }
  if (const TBuilt built = BuiltBy(report); built.Total() > 0) {
    out << "<div><dt>" << Icon(built.Failed > 0 ? "error" : "done", "")
        << (built.What == u"project" ? "Projects" : "Configurations") << "</dt><dd class=value>"
        << built.Succeeded << " <small>of " << built.Total() << " built</small></dd>";
    if (built.Succeeded < built.Total())
      out << "<dd>" << built.Failed << " failed, " << built.NotBuilt << " not built</dd>";
    out << "</div>";
  }
  out << "<div><dt>" << Icon("clock", "") << "Time</dt><dd class=value>" << FormatElapsed(report.Elapsed)
      << "</dd>";
  if (const auto usual = UsualTime(page.Past); usual && !IsSuccess(report.Result))
    out << "<dd>usually " << FormatElapsed(*usual) << "</dd>";
  else if (usual)
    out << "<dd>" << FormatElapsed(std::chrono::abs(report.Elapsed - *usual))
        << (report.Elapsed < *usual ? " below" : " above") << " the usual " << FormatElapsed(*usual)
        << "</dd>";
  out << "</div></dl>\n";
}

const char* HeadlineIcon(TResultKind result) {
  if (result == TResultKind::Stopped) return "stopped";
  return IsSuccess(result) ? "done" : "error";
}

} // namespace

std::u16string HeadlineOf(const TRunReport& report) {
  switch (report.Result) {
  case TResultKind::Stopped:
    return u"Stopped by you after " + TimeText(report.Elapsed);
  case TResultKind::WouldRun:
    return u"Dry run: nothing was changed";
  case TResultKind::NothingToDo:
    return u"There was nothing to do";
  case TResultKind::Succeeded:
    return SuccessText(report);
  default:
    return FailureText(report);
  }
}

std::u16string LeadOf(const THtmlPage& page) {
  const TRunReport& report = page.Report;
  std::vector<std::u16string> sentences;
  const TBuilt built = BuiltBy(report);
  const bool isWhole = IsSuccess(report.Result);
  if (!isWhole && built.Succeeded < built.Total()) {
    std::u16string sentence = text::FromUtf8(Grouped(built.Succeeded)) + u" of " +
                              CountOf(built.Total(), built.What) +
                              (built.Succeeded == 1 ? u" was built" : u" were built");
    if (built.NotBuilt > 0)
      sentence += u", " + text::FromUtf8(Grouped(built.NotBuilt)) +
                  (built.NotBuilt == 1 ? u" was not begun" : u" were not begun");
    sentences.push_back(sentence + u".");
  }
  if (!isWhole && report.Tests.Total() > 0)
    sentences.push_back(text::FromUtf8(Grouped(report.Tests.Passed)) + u" of " +
                        CountOf(report.Tests.Total(), u"test") + u" passed.");
  const std::int64_t warnings = Ones(report, TFindingSeverity::Warning);
  const std::int64_t fresh = NewOnes(page, TFindingSeverity::Warning);
  if (warnings > 0)
    sentences.push_back(CountOf(warnings, u"warning") +
                        (fresh > 0 ? u", " + text::FromUtf8(Grouped(fresh)) + u" of them new." : u"."));
  else if (isWhole)
    sentences.emplace_back(u"No warnings.");
  const auto ignored = std::ranges::count(report.Actions, TResultKind::Ignored, &TActionResult::Result);
  if (ignored > 0)
    sentences.push_back(CountOf(ignored, u"action") + u" failed, which the project says not to mind.");
  return text::Join(sentences, u" ");
}

void WriteHeadline(const THtmlPage& page, THtmlWriter& out) {
  out << "<div class=head><div class=result>"
      << Icon(HeadlineIcon(page.Report.Result), WordOf(page.Report.Result)) << "<div><h1>"
      << HeadlineOf(page.Report) << "</h1><p class=lead>" << LeadOf(page) << "</p></div></div>\n";
  WriteFirstFailure(page, out);
  WriteFigures(page, out);
  if (page.Past == nullptr)
    out << "<p class=remark>No earlier run of this project is known: nothing is marked as new, and there are "
           "no "
           "trends.</p>\n";
  out << "</div>\n";
}

} // namespace kx
