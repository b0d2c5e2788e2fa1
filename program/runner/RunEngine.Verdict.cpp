// What becomes of actions and of the rules that they break.
#include "program/runner/RunEngine.h"
#include "program/runner/Messages.h"

#include <utility>

namespace kx {

TResultKind TRunEngine::KindOf(const TExecution& execution, bool returned) const {
  TResultKind kind = SuccessKind();
  if (!returned || execution.IsBreached())
    kind = FailureKind();
  else if (execution.HasFailedChild())
    kind = TResultKind::FinishedWithFailures;
  else if (execution.HadNothingToDo())
    kind = TResultKind::NothingToDo;
  const bool isIgnored = execution.Node().OnFailure() == TOnFailure::Ignore;
  return isIgnored && !IsSuccess(kind) && kind != TResultKind::Stopped ? TResultKind::Ignored : kind;
}

TRuleSeverity TRunEngine::SeverityOf(std::u16string_view rule) const {
  const TVerdictRule* known = FindVerdictRule(rule);
  if (isDryRun_ && known != nullptr && known->NeedsRun) return TRuleSeverity::Off;
  if (const auto set = rules_.Find(rule)) return *set;
  if (const auto set = Project.Rules.Find(rule)) return *set;
  return known != nullptr ? known->Default : TRuleSeverity::Error; // a rule of a plug-in's own
}

bool TRunEngine::Report(std::u16string_view rule, std::u16string_view message) {
  const TRuleSeverity severity = SeverityOf(rule);
  if (severity == TRuleSeverity::Off) return false;
  const std::u16string text = std::u16string(message) + u" (rule " + std::u16string(rule) + u")";
  const bool isError = severity == TRuleSeverity::Error;
  TFinding finding = FindingHere();
  finding.Rule = rule;
  finding.Severity = isError ? TFindingSeverity::Error : TFindingSeverity::Warning;
  finding.Message = OneLine(message);
  findings_.Add(std::move(finding));
  Show({isError ? text : u"Warning : " + text, isError ? TStatusTag::stError : TStatusTag::stWarning});
  return isError;
}

void TRunEngine::ReportBreach(std::u16string_view rule, std::u16string_view message) {
  if (Report(rule, message)) frames_.back().Execution.Breach(rule);
}

void TRunEngine::JudgeErrors(const TExecution& execution) {
  const std::int64_t errors = execution.AnalysedErrors();
  if (errors == 0) return;
  ReportBreach(KxVerdictRules::ErrorsCounted, text::FromInteger(errors) +
                                                  (errors == 1 ? u" error was" : u" errors were") +
                                                  u" counted although the tool reports success.");
}

// Of an action that returned True.
void TRunEngine::Judge(const TExecution& execution) {
  JudgeErrors(execution);
  if (const auto* failed = execution.FailedConfiguration(); failed != nullptr && !execution.IsBreached())
    ReportBreach(KxVerdictRules::FailedConfiguration,
                 u"The configuration " + failed->Configuration + u" failed, although a later one succeeded.");
}

} // namespace kx
