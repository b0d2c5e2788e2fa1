#include "program/runner/RunFindings.h"

#include "foundation/text/Text.h"
#include "program/runner/VerdictRules.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kx {

namespace {

constexpr std::u16string_view WarningPrefix = u"Warning : ";

struct TRunRule {
  std::u16string_view Name;
  std::u16string_view Help;
};
constexpr auto RunRules = std::to_array<TRunRule>({
    {u"action-error", u"An action of the build project failed by itself, without an error of a tool."},
    {u"action-warning", u"An action of the build project warns of something."},
    {u"parts-missing", u"Parts of a run have left no log: what became of them is not known."},
    {u"run-interrupted", u"The log of a run ends before the run did: it was killed, or its disk was full."},
    {u"test-failed", u"A unit test failed."},
    {u"tool-error", u"A tool reports an error without a code."},
    {u"tool-warning", u"A tool reports a warning without a code."},
    {u"tool-note", u"A tool remarks something without a code."},
});

TFinding OwnError(std::u16string_view text, TFinding here) {
  here.Rule = u"action-error";
  here.Severity = TFindingSeverity::Error;
  here.Message = OneLine(text);
  return here;
}

} // namespace

std::u16string_view ExplainRunRule(std::u16string_view rule) {
  const auto* const found = std::ranges::find(RunRules, rule, &TRunRule::Name);
  if (found != RunRules.end()) return found->Help;
  const TVerdictRule* verdict = FindVerdictRule(rule);
  return verdict != nullptr ? verdict->Help : std::u16string_view();
}

TFindingPlace PlaceOfTrace(std::u16string_view stackTrace) {
  for (const auto line : text::SplitLines(stackTrace)) {
    // "in" and "line" are words of the user's language.
    const std::size_t colon = line.rfind(u':');
    const std::size_t blank = colon == line.npos ? colon : line.find(u' ', colon);
    const std::size_t bracket = line.find(u") ");
    if (blank == line.npos || bracket == line.npos || bracket > colon) continue;
    const std::size_t file = line.find(u' ', bracket + 2);
    const int number = text::ToIntegerOr(line.substr(blank + 1), 0);
    if (file == line.npos || file > colon || number <= 0) continue;
    return {std::u16string(text::Trim(line.substr(file, colon - file))), number, 0};
  }
  return {};
}

void TRunFindings::BeginAction() {
  open_.emplace_back();
  BeginTool();
}

void TRunFindings::EndAction() {
  AddOwnErrors();
  const bool hasErrors = open_.back().HasErrors;
  open_.pop_back();
  if (!open_.empty()) open_.back().HasErrors |= hasErrors;
}

void TRunFindings::AddOwnErrors() {
  auto own = std::exchange(open_.back().OwnErrors, {});
  if (open_.back().HasErrors) return;
  for (auto& finding : own)
    Add(std::move(finding));
}

void TRunFindings::EndAttempt(bool counts) {
  const std::int64_t more = List().More();
  const auto found = List().Take();
  lists_.pop_back();
  if (!counts) {
    open_.back() = {};
    return;
  }
  for (const auto& finding : found)
    List().Add(finding);
  List().AddMore(more);
}

void TRunFindings::Add(TFinding finding) {
  if (finding.Severity == TFindingSeverity::Error && !open_.empty()) open_.back().HasErrors = true;
  List().Add(std::move(finding));
}

void TRunFindings::TakeToolLine(std::u16string_view line, const std::function<void(TFinding&)>& complete) {
  if (lists_.back().Tool.Read(line, complete) == TFindingSeverity::Error && !open_.empty())
    open_.back().HasErrors = true;
}

void TRunFindings::TakeOwn(std::u16string_view text, TStatusTag status, TFinding here) {
  if (status == TStatusTag::stWarning) {
    here.Rule = u"action-warning";
    here.Severity = TFindingSeverity::Warning;
    here.Message = OneLine(text.starts_with(WarningPrefix) ? text.substr(WarningPrefix.size()) : text);
    List().Add(std::move(here));
  } else if (status == TStatusTag::stError && !open_.empty()) {
    open_.back().OwnErrors.push_back(OwnError(text, std::move(here)));
  }
}

void TRunFindings::TakeLimit(std::u16string_view text, TFinding here) {
  AddOwnErrors();
  Add(OwnError(text, std::move(here)));
}

void TRunFindings::TakeFailedTest(const TReportedTest& test, TFinding here) {
  here.Rule = u"test-failed";
  here.Severity = TFindingSeverity::Error;
  here.Message = test.Name + (test.Message.empty() ? u"" : u": " + OneLine(test.Message));
  here.Place = PlaceOfTrace(test.StackTrace);
  Add(std::move(here));
}

} // namespace kx
