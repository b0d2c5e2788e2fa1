#include "program/runner/ProblemTally.h"

namespace kx {

void TProblemTally::Take(TStatusTag status, bool fromTool) {
  TProblemCounts& counts = fromTool ? tool_ : own_;
  if (status == TStatusTag::stError) ++counts.Errors;
  if (status == TStatusTag::stWarning) ++counts.Warnings;
}

void TProblemTally::Take(const TKxMetric& metric) {
  const auto* value = std::get_if<std::int64_t>(&metric.Value);
  if (metric.Category != u"Compiler" || value == nullptr) return;
  if (metric.Name == u"Errors") analysed_.Errors += *value;
  if (metric.Name == u"Warnings") analysed_.Warnings += *value;
}

TProblemCounts TProblemTally::Counts() const {
  TProblemCounts counts = tool_;
  if (analysed_.Errors > 0) counts.Errors = analysed_.Errors;
  if (analysed_.Warnings > 0) counts.Warnings = analysed_.Warnings;
  if (counts.Errors == 0) counts.Errors = own_.Errors;
  counts.Warnings += own_.Warnings;
  return counts;
}

} // namespace kx
