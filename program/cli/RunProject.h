// A run with all that the command line asks of it.
#pragma once

#include "program/cli/GateArguments.h"
#include "program/cli/HostSession.h"
#include "program/runner/Run.h"

namespace kx::cli {

// Runs what the runner's project holds with all sinks of the common options, prints the end table, and gives
// the exit code.
int RunProject(TProjectRunner& runner, THostSession& session, const TCommonOptions& options,
               const TGateArguments& gateArguments);

} // namespace kx::cli
