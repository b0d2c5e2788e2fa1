#include "package/buildaction/BuildLog.h"

namespace kx {

TBuildLogVerdict TBuildLog::Verdict() const {
  TBuildLogVerdict verdict = verdict_;
  verdict.Failed = analysis_.HasFailed();
  verdict.HasDevEnvSummary = analysis_.HasDevEnvSummary();
  verdict.HasMSBuildSummary = analysis_.HasMSBuildSummary();
  return verdict;
}

void TBuildLog::Count(TBuildCount what, std::int32_t number) {
  (what == TBuildCount::Errors ? verdict_.Errors : verdict_.Warnings) += number;
  verdict_.Metrics.emplace_back(what, number);
}

void TBuildLog::Line(std::u16string_view line, TStatusTag status) {
  ++verdict_.Statuses[static_cast<std::size_t>(status)];
  if (onLine_) onLine_(status, line);
}

} // namespace kx
