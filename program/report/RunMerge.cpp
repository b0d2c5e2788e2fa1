#include "program/report/RunMerge.h"

#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/findings/FindingList.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <iterator>
#include <string>
#include <tuple>
#include <utility>

namespace kx {

namespace {

// What counts for several runs before other things.
int Weight(TResultKind kind) {
  constexpr std::array lightFirst{TResultKind::Skipped,
                                  TResultKind::NothingToDo,
                                  TResultKind::WouldRun,
                                  TResultKind::Succeeded,
                                  TResultKind::Ignored,
                                  TResultKind::Stopped,
                                  TResultKind::FinishedWithFailures,
                                  TResultKind::Failed};
  return static_cast<int>(std::ranges::find(lightFirst, kind) - lightFirst.begin());
}

void TakeWorse(TResultKind& merged, TResultKind kind) {
  if (Weight(kind) > Weight(merged)) merged = kind;
}

// Where the runs differ, there is none for all of them.
void MergeText(std::u16string& merged, const std::u16string& text) {
  if (merged != text) merged.clear();
}

void MergeSurroundings(TRunSurroundings& merged, const TRunSurroundings& other) {
  for (const auto text : {&TRunSurroundings::Machine, &TRunSurroundings::System, &TRunSurroundings::Commit,
                          &TRunSurroundings::Branch, &TRunSurroundings::CommandLine})
    MergeText(merged.*text, other.*text);
}

// The loop that a run did passes of: its project and its place.
using TLoopOfRun = std::pair<std::u16string, std::size_t>;
std::optional<TLoopOfRun> LoopOf(const TRunReport& run) {
  if (!run.Part || run.Part->Pass == 0) return std::nullopt;
  return TLoopOfRun(ProjectOf(run), run.Part->Place);
}

// Runs that are no parts stand behind those that are, in their own order.
std::tuple<bool, std::u16string, std::size_t, int> OrderOf(const TRunReport& run) {
  if (!run.Part) return {true, u"", 0, 0};
  return {false, ProjectOf(run), run.Part->Place, run.Part->Pass};
}

class TMerging {
public:
  explicit TMerging(TRunReport first) : merged_(std::move(first)) {
    if (!merged_.Actions.empty()) lastLoop_ = LoopOf(merged_);
    findings_.Add(std::exchange(merged_.Findings, {}), merged_.Root);
    merged_.Part.reset();
  }

  void Add(TRunReport run) {
    TakeWorse(merged_.Result, run.Result);
    merged_.NothingExecuted = merged_.NothingExecuted && run.NothingExecuted;
    merged_.IsPartial = merged_.IsPartial || run.IsPartial;
    merged_.Counts += run.Counts;
    merged_.Tests += run.Tests;
    merged_.MoreFindings += run.MoreFindings;
    findings_.Add(std::move(run.Findings), run.Root);
    MergeText(merged_.Root, run.Root);
    MergeText(merged_.File, run.File);
    MergeSurroundings(merged_.Surroundings, run.Surroundings);
    TakeActions(std::move(run));
  }

  TRunReport Result() && {
    merged_.Findings = findings_.Take();
    return std::move(merged_);
  }

private:
  void TakeActions(TRunReport run) {
    auto first = run.Actions.begin();
    if (first == run.Actions.end()) return; // stopped before its action began
    const auto loop = LoopOf(run);
    if (loop && loop == lastLoop_) {
      MergeLoop(merged_.Actions[loop_], *first++);
    } else {
      loop_ = merged_.Actions.size();
    }
    lastLoop_ = loop;
    std::move(first, run.Actions.end(), std::back_inserter(merged_.Actions));
  }

  TRunReport merged_;
  std::optional<TLoopOfRun> lastLoop_; // of the run that was added last
  std::size_t loop_ = 0;               // where its first action stands
  TFindingMerge findings_;
};

} // namespace

std::u16string ProjectOf(const TRunReport& run) {
  return text::ToLower(std::u16string(text::ExtractFileName(run.File)));
}

void MoveTimes(TActionResult& action, std::chrono::milliseconds by) {
  action.Began += by;
  for (auto& configuration : action.Configurations) {
    configuration.Began += by;
    for (auto& project : configuration.Projects)
      project.Began += by;
  }
}

void MergeLoop(TActionResult& loop, const TActionResult& further) {
  const bool isWorse = Weight(further.Result) > Weight(loop.Result);
  if (isWorse || (further.Result == loop.Result && loop.Reason.empty())) loop.Reason = further.Reason;
  TakeWorse(loop.Result, further.Result);
  loop.Counts += further.Counts;
  loop.Tests += further.Tests;
  const auto end = std::max(loop.Began + loop.Elapsed, further.Began + further.Elapsed);
  loop.Began = std::min(loop.Began, further.Began);
  loop.Elapsed = end - loop.Began;
}

TRunReport TRunMerge::Take() {
  using std::chrono::duration_cast, std::chrono::milliseconds;
  const auto began = std::ranges::min(runs_, {}, &TRunReport::Began).Began;
  auto end = began;
  for (TRunReport& run : runs_) {
    for (auto& action : run.Actions)
      MoveTimes(action, duration_cast<milliseconds>(run.Began - began));
    end = std::max(end, run.Began + run.Elapsed);
  }
  std::ranges::stable_sort(runs_, {}, OrderOf);
  TMerging merging(std::move(runs_.front()));
  for (std::size_t i = 1; i < runs_.size(); ++i)
    merging.Add(std::move(runs_[i]));
  runs_.clear();
  TRunReport merged = std::move(merging).Result();
  merged.Began = began;
  merged.Elapsed = duration_cast<milliseconds>(end - began);
  return merged;
}

} // namespace kx
