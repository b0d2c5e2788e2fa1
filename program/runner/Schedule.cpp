#include "program/runner/Schedule.h"

#include <algorithm>
#include <utility>

namespace kx {

namespace {

bool HasSucceeded(TResultKind kind) {
  return IsSuccess(kind) || kind == TResultKind::Ignored;
}

// What never begins is a failure of its own to those behind it.
TResultKind KindOfHeldUp(TOnFailure onFailure) {
  return onFailure == TOnFailure::Ignore ? TResultKind::Ignored : TResultKind::Failed;
}

} // namespace

bool GoesOnBehind(TResultKind kind, TOnFailure onFailure) {
  return HasSucceeded(kind) || kind == TResultKind::FinishedWithFailures ||
         (kind == TResultKind::Failed && onFailure != TOnFailure::Stop);
}

TSchedule::TSchedule(std::vector<TScheduled> parts, bool keepGoing)
    : keepGoing_(keepGoing), behind_(parts.size()) {
  parts_.reserve(parts.size());
  for (std::size_t i = 0; i < parts.size(); ++i) {
    parts_.push_back({parts[i].Unit, parts[i].OnFailure, parts[i].Needs.size()});
    units_[parts[i].Unit].push_back(i);
    for (const TActionNeed& need : parts[i].Needs)
      behind_.at(need.Action).push_back({i, need.MustSucceed});
    if (parts[i].Needs.empty()) MakeReady(i);
  }
}

void TSchedule::MakeReady(std::size_t part) {
  parts_[part].State = EState::Ready;
  ready_.insert(part);
}

std::optional<std::size_t> TSchedule::Next() {
  if (isCutShort_ || ready_.empty()) return std::nullopt;
  const std::size_t part = ready_.extract(ready_.begin()).value();
  parts_[part].State = EState::Begun;
  ++running_;
  return part;
}

void TSchedule::End(std::size_t part, TResultKind kind) {
  --running_;
  parts_.at(part).State = EState::Ended;
  const bool goesOn = GoesOnBehind(kind, parts_[part].OnFailure);
  if (kind == TResultKind::Stopped || (!goesOn && !keepGoing_)) isCutShort_ = true;
  // A failed pass ends its loop, also where the run goes on behind the loop.
  if (!keepGoing_ && (kind == TResultKind::Failed || kind == TResultKind::Ignored))
    HoldUpUnit(parts_[part].Unit);
  TellThoseBehind(part, kind);
}

void TSchedule::HoldUpUnit(std::size_t unit) {
  for (const std::size_t part : units_[unit]) {
    if (parts_[part].State != EState::Waiting && parts_[part].State != EState::Ready) continue;
    ready_.erase(part);
    parts_[part].State = EState::HeldUp;
    TellThoseBehind(part, KindOfHeldUp(parts_[part].OnFailure));
  }
}

// Without recursion: ten thousand parts may stand in one row.
void TSchedule::TellThoseBehind(std::size_t part, TResultKind kind) {
  std::vector<std::pair<std::size_t, TResultKind>> told{{part, kind}};
  while (!told.empty()) {
    const auto [before, ended] = told.back();
    told.pop_back();
    const bool goesOn = GoesOnBehind(ended, parts_[before].OnFailure);
    for (const auto& [behind, mustSucceed] : behind_[before]) {
      TPart& waiting = parts_[behind];
      if (!(mustSucceed ? HasSucceeded(ended) : goesOn))
        waiting.RefusedBy = std::min(waiting.RefusedBy.value_or(before), before);
      if (--waiting.Pending > 0 || waiting.State != EState::Waiting) continue;
      if (!waiting.RefusedBy) {
        MakeReady(behind);
        continue;
      }
      waiting.State = EState::HeldUp;
      told.emplace_back(behind, KindOfHeldUp(waiting.OnFailure));
    }
  }
}

std::vector<std::size_t> TSchedule::NotRun() const {
  std::vector<std::size_t> never;
  for (std::size_t i = 0; i < parts_.size(); ++i)
    if (parts_[i].State != EState::Begun && parts_[i].State != EState::Ended) never.push_back(i);
  return never;
}

} // namespace kx
