// A log of a run for programs: one JSON object a line, UTF-8.
//
//   {"time":"2010-04-01T10:20:30.123Z","depth":1,"event":"message","status":3,"text":"..."}
//
// Events: "action" (name, type, description, pass, nesting), "actionEnd" (WriteResult), "message" (status,
// text; dryRun where it says what would have been done; takesBack, so many of the actions that ended last,
// where their attempt does not count), "group" (status, title), "groupEnd" (status or null, title,
// elapsedMs), "metric" (category, name, configuration, value; action and passes where it is not of the
// innermost), at the end a "finding" (WriteFinding) for each thing that was wrong, and "runEnd" (WriteRun).
#pragma once

#include "foundation/formats/JsonWriter.h"
#include "foundation/platform/Result.h"
#include "program/runner/Events.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace kx {

using TMoreMembers = std::function<void(TJsonWriter& json)>;

// One event as its line, without a line end; `more` writes what stands behind its own members.
std::string ToJsonLine(const TRunEvent& event, const TMoreMembers& more = {});

// Each line is in the file before the next event, so that the log of a crashed run is complete up to there. A
// failure to write (a full disk) never disturbs the run; it ends the log and is kept for the end.
class TJsonLinesSink : public IRunEventSink {
public:
  // Makes the file anew.
  static platform::Result<std::unique_ptr<TJsonLinesSink>> Create(std::u16string_view fileName);
  ~TJsonLinesSink() override;

  void On(const TRunEvent& event) override;
  // After the last event. Fails with the system's reason when not all of them are in the file.
  platform::Status Close();

private:
  struct TState;
  explicit TJsonLinesSink(std::unique_ptr<TState> state);
  std::unique_ptr<TState> state_;
};

} // namespace kx
