// Which parts of a plan need not run again.
#pragma once

#include "program/history/PassedParts.h"
#include "program/plan/Plan.h"
#include "program/runner/Project.h"
#include "program/runner/Results.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kx {

// What became of a part of a plan.
struct TPartResult {
  std::optional<TResultKind> Kind = {}; // nothing: it has not run
  bool HasFindings = false;
  std::chrono::system_clock::time_point Began = {};
  std::chrono::system_clock::time_point Ended = {};
};

struct TResumeSettings {
  std::u16string Options;     // what a run depends on beside its project, in any form
  bool FindingsCount = false; // for a gate
};

// A part may be passed over when it succeeded, what it needs is passed over, and it would be made of the
// same: its action and all that the action refers to (variables, property sets, options, the environment),
// the files that it reads, all files of the folders of its projects, and what those reach elsewhere
// (ProjectReach.h). What it has made must be as it left it. A file that has changed since, or come anew,
// makes it run: so what other parts write into those folders behind it does that, too, and a source that was
// edited while it ran. Where a gate counts findings, so does a part that told of any: passed over, it would
// tell of none.
class TResume {
public:
  // Project and plan outlive this.
  TResume(const TProject& project, const TPlan& plan, TResumeSettings settings);

  std::set<std::size_t> MayPassOver(const history::TPassedParts& known) const;
  // What a later run is to know; `passedOver` have their state of before.
  history::TPassedParts Remember(const std::vector<TPartResult>& results,
                                 const std::set<std::size_t>& passedOver,
                                 const history::TPassedParts& known) const;

private:
  std::u16string SettingsOf(const TPart& part) const;
  bool IsUnchanged(const TPart& part, const std::u16string& state) const;
  std::optional<std::u16string> StateOf(const TPart& part, const TPartResult& result) const;

  const TProject& project_;
  const TPlan& plan_;
  const TResumeSettings settings_;
};

} // namespace kx
