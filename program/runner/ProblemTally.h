// Counts the errors and warnings of one part of a run: the one way of counting, whoever shows the figures.
#pragma once

#include "program/runner/Results.h"

namespace kx {

// A tool's problems are those that its analysis reports as metrics ("Compiler", "Errors"); where it reports
// none, the lines of the tool that are shown as problems. What the action and the host say themselves counts
// as warnings beside them; as errors only where the tool has none, since it speaks of the same failure then
// ("returned Error code : 1").
class TProblemTally {
public:
  void Take(TStatusTag status, bool fromTool); // a message
  void Take(const TKxMetric& metric);
  TProblemCounts Counts() const;
  std::int64_t AnalysedErrors() const { return analysed_.Errors; }
  // Being stopped is no error of the part that was stopped.
  void ForgetOwnErrors() { own_.Errors = 0; }

private:
  TProblemCounts analysed_;
  TProblemCounts tool_;
  TProblemCounts own_;
};

} // namespace kx
