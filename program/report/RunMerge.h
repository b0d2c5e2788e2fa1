// Several runs as one: of the parts of one project, or of whatever somebody wants to see on one page.
#pragma once

#include "program/runner/Results.h"

#include <chrono>
#include <vector>

namespace kx {

// What failed in one run has failed, what was found in two is one finding, and the time is from the first
// beginning to the last end. Parts of one project (TRunReport::Part) stand as the project has them, whichever
// ended first; the passes of a loop are one loop. Texts in which the runs differ are left out.
class TRunMerge {
public:
  void Add(TRunReport run) { runs_.push_back(std::move(run)); }
  bool IsEmpty() const { return runs_.empty(); }
  TRunReport Take(); // at least one was added; then they are done with

private:
  std::vector<TRunReport> runs_;
};

// What tells the parts of one project, which stands in another folder on each machine, from those of others.
std::u16string ProjectOf(const TRunReport& run);

// Where a part of a run began, counted from an earlier beginning of the run.
void MoveTimes(TActionResult& action, std::chrono::milliseconds by);

// A loop, as some of its passes and then as further ones have told it.
void MergeLoop(TActionResult& loop, const TActionResult& further);

} // namespace kx
