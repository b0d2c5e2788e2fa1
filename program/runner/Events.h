// What a run tells the outside world, event by event.
#pragma once

#include "program/runner/Results.h"

#include <chrono>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace kx {

// Where a loop stands: "project" 3 of 17.
struct TLoopPosition {
  std::u16string Unit;
  int Number = 0; // from 1
  int Count = 0;
};

struct TActionStarted {
  std::u16string Name = {};
  std::u16string Type = {};
  std::u16string Description = {}; // one line: the name with what the action adds to it
  std::u16string Pass = {};
  int Nesting = 0;
  std::optional<TLoopPosition> Position = {}; // of the innermost loop
};
struct TActionEnded {
  TActionResult Result;
};
struct TMessageSent {
  std::u16string Text;
  TStatusTag Status = TStatusTag::stNormal;
  bool IsDryRun = false; // says what would have been done
  int TakesBack = 0;     // so many of the actions that ended last were of an attempt that does not count
};
struct TGroupStarted {
  std::u16string Title;
  TStatusTag Status = TStatusTag::stNormal;
};
struct TGroupEnded {
  std::u16string Title;
  std::optional<TStatusTag> Status; // nothing: the action did not say how it ended
  std::chrono::milliseconds Elapsed{0};
};
// Which action a metric is of.
struct TMetricSource {
  std::u16string Action = {};              // with its pass
  std::vector<std::u16string> Passes = {}; // one for each action under way; empty outside a loop
};
struct TMetricSent {
  TKxMetric Metric;
  std::u16string Configuration = {}; // that the action is building, "Release|Any CPU"; else empty
  // Told once the attempt was known to count, when the action may have ended. Nothing: the innermost one.
  std::optional<TMetricSource> Source = {};
};
// `running`: the actions under way, the innermost last.
inline std::u16string ActionOf(const TMetricSent& sent, const std::vector<std::u16string>& running) {
  if (sent.Source) return sent.Source->Action;
  return running.empty() ? std::u16string() : running.back();
}

// The end of the run; nothing comes behind it.
struct TRunEnded {
  TRunReport Report;
};

// Depth counts what is open around the event: running actions and message groups. An action and a group have
// the same depth when they start and when they end.
struct TRunEvent {
  std::chrono::system_clock::time_point Time;
  int Depth = 0;
  std::variant<TActionStarted, TActionEnded, TMessageSent, TGroupStarted, TGroupEnded, TMetricSent, TRunEnded>
      What;
  TProblemCounts SoFar = {}; // of the whole run
};

// Called on the thread that runs the actions, in the order of the events. Must not throw.
class IRunEventSink {
public:
  virtual ~IRunEventSink() = default;
  virtual void On(const TRunEvent& event) = 0;
};

} // namespace kx
