#include "program/parts/PartsRun.h"

#include "foundation/platform/PrivateFolder.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/parts/PartProcesses.h"
#include "program/parts/PartsLog.h"
#include "program/plan/PartIds.h"
#include "program/runner/Messages.h"
#include "program/runner/Schedule.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace kx {

namespace {

platform::PrivateFolder FolderForLogs() {
  auto folder = platform::PrivateFolder::Create();
  if (!folder) throw EKxException(folder.Message());
  return *std::move(folder);
}

std::vector<TScheduled> ScheduleOf(const TPlan& plan, const TProject& project) {
  std::vector<TScheduled> parts;
  parts.reserve(plan.Parts.size());
  for (const TPart& part : plan.Parts)
    parts.push_back({part.Needs, part.Place, project.Actions()[part.Place]->OnFailure()});
  return parts;
}

// The passes of a loop.
struct TLoop {
  std::size_t Left = 0; // that have not ended
  std::size_t Running = 0;
  bool IsCutShort = false; // by one that failed
};

class TRun {
public:
  TRun(const TPlan& plan, const TProject& project, const TPartsSettings& settings, TKxEvent& stop,
       std::span<IRunEventSink* const> sinks, IPartsWatcher& watcher)
      : plan_(plan), project_(project), settings_(settings), stop_(stop), watcher_(watcher),
        folder_(FolderForLogs()), schedule_(ScheduleOf(plan, project), settings.KeepGoing),
        processes_(settings.Process, stop), log_(sinks, began_), results_(plan.Parts.size()) {
    for (const TPart& part : plan.Parts)
      if (part.Pass > 0) ++loops_[part.Place].Left;
  }

  TPartsOutcome Run() {
    while (true) {
      while (processes_.Running() < settings_.Jobs && BeginNext()) {
      }
      if (processes_.Running() == 0) break;
      EndOne();
    }
    const bool isPartial = IsPartial();
    if (!schedule_.IsCutShort() && !stop_.IsRaised()) SkipHeldUp();
    for (const auto& [loop, left] : loops_)
      log_.CloseLoop(loop);
    TRunReport report = log_.Take();
    report.IsPartial = report.IsPartial || isPartial;
    if (stop_.IsRaised()) report.Result = TResultKind::Stopped;
    return {std::move(report), std::move(results_), processes_.End()};
  }

private:
  bool BeginNext() {
    if (stop_.IsRaised()) return false;
    const auto next = schedule_.Next();
    if (!next) return false;
    const TPart& part = plan_.Parts[*next];
    if (part.Pass > 0) ++loops_[part.Place].Running;
    results_[*next].Began = std::chrono::system_clock::now();
    if (settings_.PassedOver.contains(*next)) {
      End(*next, log_.Add(Skipped(part, NotNeededAgain,
                                  u"Passed over: it succeeded before, and nothing that it is made of has "
                                  u"changed.")));
      return true;
    }
    watcher_.Begin(part);
    processes_.Start(*next, {part.Id, LogOf(*next)});
    return true;
  }

  void EndOne() {
    TPartOutcome outcome = processes_.Wait();
    const std::size_t index = outcome.Part;
    const TPart& part = plan_.Parts[index];
    watcher_.End(part);
    TEndedPart ended = Named(part);
    ended.Log = LogOf(index);
    ended.Outcome = std::move(outcome);
    results_[index].Ended = std::chrono::system_clock::now();
    End(index, log_.Add(std::move(ended)));
  }

  void End(std::size_t index, TPartVerdict verdict) {
    if (IsLastPass(index) && !stop_.IsRaised()) CheckPasses(plan_.Parts[index], verdict);
    results_[index].Kind = verdict.Kind;
    results_[index].HasFindings = verdict.HasFindings;
    schedule_.End(index, verdict.Kind);
    if (plan_.Parts[index].Pass > 0) EndPass(plan_.Parts[index].Place, verdict.Kind);
  }

  bool IsLastPass(std::size_t index) const {
    const auto loop = loops_.find(plan_.Parts[index].Place);
    return plan_.Parts[index].Pass > 0 && loop != loops_.end() && loop->second.Left == 1;
  }

  // What an action in front of the loop, or somebody else, has put into its solution since has had no pass.
  void CheckPasses(const TPart& last, TPartVerdict& verdict) {
    std::vector<std::u16string> planned;
    auto part = std::ranges::lower_bound(plan_.Parts, last.Place, {}, &TPart::Place);
    for (; part != plan_.Parts.end() && part->Place == last.Place; ++part)
      planned.push_back(part->PassValue);
    std::vector<std::u16string> now;
    try {
      for (const TKxPass& pass : PassesOf(*project_.Actions()[last.Place]))
        now.push_back(pass.Value);
    } catch (const std::exception&) { // it is not there any more: then it is another one, too
    }
    if (now == planned) return;
    TEndedPart changed = Named(last);
    ++changed.Place.Pass;
    changed.Outcome.Trouble =
        u"What the loop runs over has changed since the run began: its passes were those of before.";
    verdict = log_.Add(std::move(changed));
  }

  bool IsPartial() const {
    std::set<std::size_t> places;
    for (const TPart& part : plan_.Parts)
      places.insert(part.Place);
    return places.size() < project_.Actions().size() || !settings_.PassedOver.empty() ||
           !schedule_.NotRun().empty();
  }

  // What has not run although the run went on. Of a loop that has ended behind a failure that is no news.
  void SkipHeldUp() {
    for (const std::size_t index : schedule_.NotRun()) {
      const TPart& part = plan_.Parts[index];
      if (part.Pass == 0 || loops_.contains(part.Place))
        log_.Add(Skipped(part, NeedsNotMet, WhyNotRun(index)));
    }
  }

  std::u16string WhyNotRun(std::size_t index) const {
    const auto need = schedule_.RefusedBy(index);
    if (!need) return u"Skipped: another pass of its loop has failed.";
    const TPart& part = plan_.Parts[*need];
    return NeedNotMet(part.Pass > 0 ? part.Id : part.Action);
  }

  static TEndedPart Named(const TPart& part) {
    return {{part.Place, part.Pass}, {.Name = part.Action, .Type = part.Type, .Description = part.Action}};
  }

  static TEndedPart Skipped(const TPart& part, std::u16string_view reason, std::u16string why) {
    TEndedPart skipped = Named(part);
    skipped.Skipped = reason;
    skipped.Why = std::move(why);
    return skipped;
  }

  void EndPass(std::size_t place, TResultKind kind) {
    TLoop& loop = loops_[place];
    --loop.Left;
    --loop.Running;
    loop.IsCutShort = loop.IsCutShort || !(settings_.KeepGoing || GoesOnBehind(kind, TOnFailure::Stop));
    if (loop.Left > 0 && !(loop.IsCutShort && loop.Running == 0)) return;
    loops_.erase(place);
    log_.CloseLoop(place);
  }

  std::u16string LogOf(std::size_t part) const {
    return text::JoinPath(folder_.Path(), text::FromInteger(static_cast<std::int64_t>(part)) + u".jsonl");
  }

  const TPlan& plan_;
  const TProject& project_;
  const TPartsSettings& settings_;
  TKxEvent& stop_;
  IPartsWatcher& watcher_;
  const std::chrono::system_clock::time_point began_ = std::chrono::system_clock::now();
  platform::PrivateFolder folder_;
  TSchedule schedule_;
  TPartProcesses processes_;
  TPartsLog log_;
  std::vector<TPartResult> results_;
  std::map<std::size_t, TLoop> loops_; // that have not ended, by their places
};

} // namespace

TPartsOutcome RunParts(const TPlan& plan, const TProject& project, const TPartsSettings& settings,
                       TKxEvent& stop, std::span<IRunEventSink* const> sinks, IPartsWatcher& watcher) {
  return TRun(plan, project, settings, stop, sinks, watcher).Run();
}

} // namespace kx
