#include "program/report/ResultRows.h"

#include "foundation/text/Encoding.h"

#include <algorithm>
#include <map>

namespace kx {

namespace {

std::string Padded(const std::string& number) {
  return number.size() < 2 ? "0" + number : number;
}

TResultRow RowOf(const TActionResult& action) {
  return {.Action = NameWithPass(action.Name, action.Pass),
          .Nesting = action.Nesting,
          .IsOutcome = !action.IsLoop || action.Result == TResultKind::Ignored};
}

TResultRow RowOf(const TActionResult& action, const TConfigurationResult& configuration) {
  TResultRow row = RowOf(action);
  row.Configuration = configuration.Configuration;
  row.Result = configuration.Result;
  row.Reason = configuration.Reason;
  row.Counts = configuration.Counts;
  row.Elapsed = configuration.Elapsed;
  return row;
}

// The action apart from its configurations.
TResultRow OwnRow(const TActionResult& action) {
  TResultRow row = RowOf(action);
  row.Result = action.Result;
  row.Reason = action.Reason;
  row.Counts = action.Counts;
  row.Elapsed = action.Elapsed;
  if (!action.Configurations.empty()) {
    row.Configuration = u"(the rest)";
    row.IsOutcome = row.IsOutcome && !IsSuccess(action.Result);
  }
  for (const auto& configuration : action.Configurations) {
    row.Counts.Errors -= configuration.Counts.Errors;
    row.Counts.Warnings -= configuration.Counts.Warnings;
    row.Elapsed -= configuration.Elapsed;
  }
  return row;
}

// The rows of the configurations say what the action's would.
bool IsSaid(const TActionResult& action, const TResultRow& own) {
  return own.Counts == TProblemCounts{} &&
         std::ranges::any_of(action.Configurations, [&own](const TConfigurationResult& configuration) {
           return configuration.Result == own.Result &&
                  (own.Reason.empty() || configuration.Reason == own.Reason);
         });
}

} // namespace

TStatusTag TResultRow::Status() const {
  const TStatusTag status = StatusOf(Result);
  return status == TStatusTag::stSuccess && Counts.Warnings > 0 ? TStatusTag::stWarning : status;
}

std::string TResultRow::Word() const {
  return WordOf(Result) + (Reason.empty() ? std::string() : " (" + text::ToUtf8(Reason) + ")");
}

std::vector<TResultRow> ResultRows(const std::vector<TActionResult>& results) {
  std::vector<TResultRow> rows;
  for (const auto& action : results) {
    for (const auto& configuration : action.Configurations)
      rows.push_back(RowOf(action, configuration));
    TResultRow own = OwnRow(action);
    if (!IsSaid(action, own)) rows.push_back(std::move(own));
  }
  return rows;
}

std::string CountText(std::int64_t count, const char* what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string TotalsText(const TRunReport& report) {
  std::map<TResultKind, std::int64_t> kinds;
  for (const auto& row : ResultRows(report.Actions))
    if (row.IsOutcome) ++kinds[row.Result];
  std::string text;
  for (const auto& [kind, count] : kinds)
    text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + WordOf(kind);
  text += (text.empty() ? "" : "; ") + CountText(report.Counts.Errors, "error") + ", " +
          CountText(report.Counts.Warnings, "warning");
  const TTestCounts& tests = report.Tests;
  if (tests.Total() == 0) return text;
  text += "; " + CountText(tests.Total(), "test");
  if (tests.Failed > 0) text += ", " + std::to_string(tests.Failed) + " failed";
  if (tests.NotRun > 0) text += ", " + std::to_string(tests.NotRun) + " not run";
  return text;
}

std::string FormatElapsed(std::chrono::milliseconds time) {
  const auto minutes = std::chrono::duration_cast<std::chrono::minutes>(time);
  if (minutes.count() > 0)
    return std::to_string(minutes.count()) + " min " +
           Padded(std::to_string(std::chrono::duration_cast<std::chrono::seconds>(time - minutes).count())) +
           " s";
  const auto hundredths = time.count() / 10;
  return std::to_string(hundredths / 100) + "." + Padded(std::to_string(hundredths % 100)) + " s";
}

const char* GroupWord(TStatusTag status) {
  switch (status) {
  case TStatusTag::stError:
    return "failed";
  case TStatusTag::stWarning:
    return "warnings";
  case TStatusTag::stSuccess:
    return "succeeded";
  case TStatusTag::stNormal:
    break;
  }
  return "done";
}

} // namespace kx
