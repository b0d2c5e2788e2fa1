// A build project whose actions run as processes of their own.
#pragma once

#include "program/cli/HostSession.h"
#include "program/cli/RunArguments.h"
#include "program/cli/SecretArguments.h"
#include "program/runner/Run.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace kx::cli {

struct TPartsArguments {
  std::optional<std::size_t> Jobs; // nothing: what suits the project
  bool KeepGoing = false;
  bool Resume = false;
};
void DefineParts(CLI::App& command, TPartsArguments& arguments);

// Runs these actions of the runner's project, in this process where nothing speaks for others, and gives the
// exit code. Raises what planning them raises, and EUsage.
int RunActions(TProjectRunner& runner, THostSession& session, const TCommonOptions& common,
               const TRunArguments& run, const TGivenSecrets& secrets, const std::vector<std::string>& names,
               const TPartsArguments& arguments);

} // namespace kx::cli
