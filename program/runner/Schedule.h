// In which order the parts of a run begin, as their needs and what becomes of them allow.
#pragma once

#include "program/runner/Project.h"
#include "program/runner/Results.h"

#include <cstddef>
#include <optional>
#include <set>
#include <unordered_map>
#include <vector>

namespace kx {

// An action or part behind which another one comes. With MustSucceed it must have succeeded; else it is
// enough that the run goes on behind it.
struct TActionNeed {
  std::size_t Action = 0; // its place among all
  bool MustSucceed = false;

  friend bool operator==(const TActionNeed&, const TActionNeed&) = default;
};

// Whether the run goes on behind an action that ended so.
bool GoesOnBehind(TResultKind kind, TOnFailure onFailure);

struct TScheduled {
  std::vector<TActionNeed> Needs = {}; // by their places in the schedule
  std::size_t Unit = 0;                // the passes of one loop have the same
  TOnFailure OnFailure = TOnFailure::Stop;
};

// Decides nothing but the order, and starts nothing. What has not run because of its needs counts, for those
// behind it, as failed. All of it takes O((parts + needs) log parts) together.
class TSchedule {
public:
  // The needs make no circle. With `keepGoing` a failure holds up only what needs it; without it, one behind
  // which the run does not go on is the last thing that begins.
  TSchedule(std::vector<TScheduled> parts, bool keepGoing);

  // The first of those that may begin now, and begins. Nothing: those under way must end first, or it is
  // over.
  std::optional<std::size_t> Next();
  void End(std::size_t part, TResultKind kind); // of one that has begun
  // A failure or the user has ended it: what has not begun might have run.
  bool IsCutShort() const { return isCutShort_; }
  std::vector<std::size_t> NotRun() const; // never begun, in their order
  // The first of its needs that has ended badly, or will not run; nothing for a part without such a one.
  std::optional<std::size_t> RefusedBy(std::size_t part) const { return parts_.at(part).RefusedBy; }

private:
  enum class EState { Waiting, Ready, Begun, Ended, HeldUp };
  struct TPart {
    std::size_t Unit;
    TOnFailure OnFailure;
    std::size_t Pending; // needs that have not ended
    std::optional<std::size_t> RefusedBy = {};
    EState State = EState::Waiting;
  };

  void MakeReady(std::size_t part);
  void HoldUpUnit(std::size_t unit);
  void TellThoseBehind(std::size_t part, TResultKind kind);

  bool keepGoing_;
  bool isCutShort_ = false;
  std::size_t running_ = 0;
  std::vector<TPart> parts_;
  std::vector<std::vector<TActionNeed>> behind_; // the needs the other way round
  std::unordered_map<std::size_t, std::vector<std::size_t>> units_;
  std::set<std::size_t> ready_;
};

} // namespace kx
