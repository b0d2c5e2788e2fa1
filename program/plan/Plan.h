// What a run consists of, part by part, before it begins: what each needs, reads, writes and how long it
// takes.
#pragma once

#include "program/history/Questions.h"
#include "program/runner/ActionGraph.h"
#include "program/runner/Run.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kx {

// Full paths, never null. Thousands of parts may read the same files: they have one list in common.
using TFilePaths = std::shared_ptr<const std::vector<std::u16string>>;

// What a process can do by itself: an action, or one pass of a parallel loop.
struct TPart {
  std::u16string Id;     // unique in the plan without regard to letter case: "Build (2)", "All projects/Lib"
  std::u16string Action; // its name in the project
  std::u16string Type;   // its identifier, "DEVENV"
  std::size_t Place = 0; // in TProject::Actions()
  int Pass = 0;          // of a parallel loop, from 1; 0: the whole action
  std::u16string PassValue; // of the loop's variable
  std::u16string Group;     // empty outside
  TOnFailure OnFailure = TOnFailure::Stop;
  std::vector<TActionNeed> Needs; // places in TPlan::Parts
  // What it reads, as far as that can be told beforehand.
  TFilePaths Inputs = std::make_shared<const std::vector<std::u16string>>();
  std::vector<std::u16string> Outputs;            // full paths of what it changes or writes
  std::vector<std::u16string> Capabilities;       // what a machine must have: "vs2008", "mstest", "windows"
  std::optional<std::chrono::milliseconds> Usual; // nothing: it is not known
};

struct TPlan {
  std::u16string Name;      // of the project, else of its file
  std::u16string File;      // full path of the project
  std::vector<TPart> Parts; // in the order of the file, passes in that of their loop
};

// The parts of these actions (places in TProject::Actions(), ascending); needs of actions that are not among
// them are left out. A parallel loop that cannot say its passes is one part. Raises EKxParseError for needs
// that a run refuses. Runs nothing.
TPlan MakePlan(TProjectRunner& runner, const history::TUsualTimes& usual, std::span<const std::size_t> only);

// Whether the part of this need must have succeeded; else it is enough that it has ended.
bool MustSucceed(const TPlan& plan, const TActionNeed& need);

// Each part behind those that it needs; where that leaves a choice, in the order of the plan's levels.
std::vector<std::size_t> InOrder(const TPlan& plan);

// The way along the needs that takes longest, its first part first; where times are unknown, that of the most
// parts.
std::vector<std::size_t> CriticalPath(const TPlan& plan);

// Two parts of which neither waits for the other write one file, so that what is in it is left to chance.
struct TClash {
  std::size_t First = 0;
  std::size_t Second = 0;
  std::u16string File;
};
std::vector<TClash> FindClashes(const TPlan& plan); // by the second part, then by its files
// "Stamp" and "Stamp (2)" both write C:\App.rc ... , and what to do.
std::u16string DescribeClash(const TPlan& plan, const TClash& clash);

} // namespace kx
