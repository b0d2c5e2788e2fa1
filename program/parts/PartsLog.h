// What parts said, as the log of one run.
#pragma once

#include "program/parts/PartProcesses.h"
#include "program/report/RunMerge.h"
#include "program/runner/Events.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace kx {

// A part that has ended, or that will not run.
struct TEndedPart {
  TPartOfRun Place;
  TActionStarted Action;   // what it is of, for one that has left no log
  std::u16string Log = {}; // its file
  TPartOutcome Outcome = {};
  std::u16string_view Skipped = {}; // the reason; empty for one that has run
  std::u16string Why = {};          // the same for people
};

struct TPartVerdict {
  TResultKind Kind = TResultKind::Failed;
  bool HasFindings = false;
};

// Each part is shown as a whole once it has ended. The passes of a loop stand in one loop; what ends
// meanwhile is shown behind it.
class TPartsLog {
public:
  // The sinks outlive it. The run began at `began`.
  TPartsLog(std::span<IRunEventSink* const> sinks, std::chrono::system_clock::time_point began)
      : sinks_(sinks), began_(began) {}

  // Reads the log, and gives what became of the action. A part without a whole log of a run has failed, and
  // so has one whose process ended otherwise than its log says.
  TPartVerdict Add(TEndedPart part);
  void CloseLoop(std::size_t place); // no other pass of it will come; once
  TRunReport Take();                 // of all parts; stopped when there was none

private:
  class TReading;

  bool MayShow(const TEndedPart& part) const { return !openLoop_ || openLoop_ == LoopOf(part); }
  static std::optional<std::size_t> LoopOf(const TEndedPart& part);
  TRunReport Read(const TEndedPart& part, bool shows);
  TRunReport ReadSkipped(const TEndedPart& part, bool shows);
  TPartVerdict Show(const TEndedPart& part);
  void TakePass(const TRunReport& report);
  void EndLoop();
  void ShowWaiting();
  void Tell(TRunEvent event);

  std::span<IRunEventSink* const> sinks_;
  std::chrono::system_clock::time_point began_;
  TRunMerge runs_;
  TProblemCounts soFar_;
  std::int64_t messages_ = 0;
  std::optional<std::size_t> openLoop_; // its place
  std::optional<TActionResult> loop_;   // as far as it has come
  std::set<std::size_t> closed_;        // loops of which nothing more will come
  std::vector<TEndedPart> waiting_;     // for the end of the open loop, in the order in which they ended
};

} // namespace kx
