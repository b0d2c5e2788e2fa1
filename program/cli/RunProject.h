// A run with all that the command line asks of it.
#pragma once

#include "program/cli/ConsoleSink.h"
#include "program/cli/GateArguments.h"
#include "program/cli/HostSession.h"
#include "program/runner/Run.h"

#include <functional>
#include <span>

namespace kx::cli {

// From earlier runs; only a terminal shows them.
history::TUsualTimes UsualTimes(TProjectRunner& runner, const TCommonOptions& options);

// Runs the actions in this process; the sinks hear of it.
TRunReport RunHere(TProjectRunner& runner, std::span<IRunEventSink* const> sinks);

// Runs the actions and tells the sinks what happens; the console is one of them.
using TRunWay = std::function<TRunReport(std::span<IRunEventSink* const> sinks, TConsoleSink& console)>;

// Runs what the runner's project holds with all sinks of the common options, in this process unless another
// way is given, prints the end table, and gives the exit code.
int RunProject(TProjectRunner& runner, THostSession& session, const TCommonOptions& options,
               const TGateArguments& gateArguments, const TRunWay& way = {});

} // namespace kx::cli
