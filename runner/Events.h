// What a run tells the outside world, event by event.
#pragma once

#include "host/Actions.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace kx {

// What became of one configuration that an action built.
struct TConfigurationResult {
  std::u16string Configuration; // "Release|Any CPU"
  bool Succeeded = true;
  std::int64_t Errors = 0;
  std::int64_t Warnings = 0;
  std::chrono::milliseconds Elapsed{0};
};

// One execution of one action; an action inside a loop has one a pass. Errors and warnings are the sums of
// the metrics ("Compiler", "Errors") and ("Compiler", "Warnings"); those of nested actions are not added.
struct TActionResult {
  std::u16string Name = {}; // the user's own, else that of the type
  std::u16string Type = {}; // the identifier, "DEVENV"
  std::u16string Pass = {}; // the value of the innermost loop's variable; empty outside a loop
  int Nesting = 0;          // loops around it
  bool Succeeded = false;
  std::int64_t Errors = 0;
  std::int64_t Warnings = 0;
  std::chrono::milliseconds Elapsed{0};
  std::vector<TConfigurationResult> Configurations = {}; // in the order built; empty for other actions
};

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
struct TMetricSent {
  TKxMetric Metric;
  std::u16string Configuration = {}; // that the action is building, "Release|Any CPU"; else empty
};

// Depth counts what is open around the event: running actions and message groups. An action and a group have
// the same depth when they start and when they end.
struct TRunEvent {
  std::chrono::system_clock::time_point Time;
  int Depth = 0;
  std::variant<TActionStarted, TActionEnded, TMessageSent, TGroupStarted, TGroupEnded, TMetricSent> What;
};

// Called on the thread that runs the actions, in the order of the events. Must not throw.
class IRunEventSink {
public:
  virtual ~IRunEventSink() = default;
  virtual void On(const TRunEvent& event) = 0;
};

} // namespace kx
