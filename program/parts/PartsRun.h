// Runs a plan on this machine.
#pragma once

#include "foundation/platform/Process.h"
#include "program/parts/Resume.h"
#include "program/plan/Plan.h"
#include "program/runner/Events.h"
#include "program/runner/Project.h"

#include <cstddef>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace kx {

struct TPartsSettings {
  std::size_t Jobs = 1;                  // parts at a time
  bool KeepGoing = false;                // as TSchedule
  std::set<std::size_t> PassedOver = {}; // parts that an earlier run has done
  platform::ProcessRequest Process = {}; // one that takes parts (PartTalk.h)
};

struct TPartsOutcome {
  TRunReport Report;                   // of the whole; who runs it fills in what the parts do not know
  std::vector<TPartResult> Results;    // a part of the plan each
  std::vector<std::u16string> Remarks; // lines of the processes that belong to no part
};

// Told when parts begin and end, on the thread of the run.
class IPartsWatcher {
public:
  virtual ~IPartsWatcher() = default;
  virtual void Begin(const TPart& part) = 0;
  virtual void End(const TPart& part) = 0;
};

// Parts run in other processes; what one says goes to the sinks once it has ended. Nothing begins any
// more once `stop` is raised, and what runs is ended. The report is that of one run of the whole, its parts
// in the order of the plan; the rest (surroundings, times) is for the caller to fill in. Raises EKxException
// when there is nowhere to put the logs of parts.
TPartsOutcome RunParts(const TPlan& plan, const TProject& project, const TPartsSettings& settings,
                       TKxEvent& stop, std::span<IRunEventSink* const> sinks, IPartsWatcher& watcher);

} // namespace kx
