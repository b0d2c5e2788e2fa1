// kxhost schema: what build projects may hold, for the editors of people and programs.
#include "program/cli/Commands.h"
#include "program/cli/HostSession.h"
#include "program/cli/Output.h"
#include "program/cli/Usage.h"
#include "program/runner/ProjectSchema.h"
#include "program/runner/Run.h"

#include <CLI/CLI.hpp>

namespace kx::cli {

void DefineSchema(CLI::App& command, const TCommonOptions& common, int& exitCode) {
  command.callback([&common, &exitCode] {
    THostSession session(common);
    TProjectRunner runner(session.Services(), session.Stop(), {{}, session.KeyFile()});
    Print(ProjectSchema(runner.Project()));
    exitCode = ExitSuccess;
  });
}

} // namespace kx::cli
