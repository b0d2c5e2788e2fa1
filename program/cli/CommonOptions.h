// The options that several commands share, and which command uses which.
#pragma once

#include "program/cli/Common.h"

namespace kx::cli {

// Takes all of them, in front of the command and behind it.
void DefineCommonOptions(CLI::App& app, TCommonOptions& options);
// What the help of a command says of those that it uses.
std::string CommonOptionsHelp(const CLI::App& app, std::string_view command);
// Raises EUsage for one that was given and that the command does not use.
void CheckCommonOptions(const CLI::App& app, std::string_view command);

} // namespace kx::cli
