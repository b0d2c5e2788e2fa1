// A part that is run by itself: its needs, the numbers, the gates and the history are for who runs the whole.
#pragma once

#include "program/cli/CommonOptions.h"
#include "program/cli/HostSession.h"
#include "program/runner/Run.h"

#include <string>

namespace kx::cli {

// As RunProject; raises EUsage for an unknown id.
int RunPart(TProjectRunner& runner, THostSession& session, TCommonOptions common, const std::u16string& id);

// Runs part after part, as lines of standard input name them, and answers to standard error (PartTalk.h).
// Returns at the end of the input, behind a stop and for a line that names none; raises what a part raises.
int TakeParts(TProjectRunner& runner, THostSession& session, TCommonOptions common);

} // namespace kx::cli
