// What run, do and edit take for their runs.
#pragma once

#include "program/cli/GateArguments.h"
#include "program/cli/HostSession.h"
#include "program/runner/Project.h"
#include "program/runner/Run.h"

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace kx::cli {

// NAME or NAME=VARIABLE: where a secret comes from (program/cli/SecretArguments.h).
struct TSecretArgument {
  bool IsVariable; // --set-secret; else --secret
  std::string Text;
};

struct TRunArguments {
  std::vector<TSecretArgument> Secrets = {};
  std::vector<std::string> Variables;
  std::vector<std::string> Rules;
  TGateArguments Gates = {}; // of those that give an exit code
};
void DefineRunArguments(CLI::App& command, TRunArguments& arguments);
void DefineVariables(CLI::App& command, std::vector<std::string>& assignments);
std::vector<TProjectVariable> ParseVariables(const std::vector<std::string>& assignments); // raises EUsage
// Raises EUsage.
TRunSettings RunSettingsOf(const TRunArguments& arguments, const THostSession& session, bool dryRun);

} // namespace kx::cli
