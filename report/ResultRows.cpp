#include "report/ResultRows.h"

namespace kx {

namespace {

std::string Padded(const std::string& number) {
  return number.size() < 2 ? "0" + number : number;
}

template <typename TResult>
TResultRow RowOf(const TActionResult& action, const std::u16string& configuration, const TResult& result) {
  const std::u16string pass = action.Pass.empty() ? u"" : u" (" + action.Pass + u")";
  return {action.Name + pass, action.Nesting,  configuration, result.Succeeded,
          result.Errors,      result.Warnings, result.Elapsed};
}

} // namespace

TStatusTag TResultRow::Status() const {
  if (!Succeeded) return TStatusTag::stError;
  return Warnings > 0 ? TStatusTag::stWarning : TStatusTag::stSuccess;
}

std::vector<TResultRow> ResultRows(const std::vector<TActionResult>& results) {
  std::vector<TResultRow> rows;
  for (const auto& action : results) {
    bool failureShown = action.Succeeded;
    for (const auto& configuration : action.Configurations) {
      rows.push_back(RowOf(action, configuration.Configuration, configuration));
      failureShown = failureShown || !configuration.Succeeded;
    }
    if (action.Configurations.empty() || !failureShown) rows.push_back(RowOf(action, u"", action));
  }
  return rows;
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

const char* ResultWord(TStatusTag status) {
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
