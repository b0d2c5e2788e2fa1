// What `run` and `plan` have in common: which parts there are, and the command lines that run them.
#pragma once

#include "foundation/platform/Process.h"
#include "program/cli/CommonOptions.h"
#include "program/cli/RunArguments.h"
#include "program/cli/SecretArguments.h"
#include "program/plan/PartCommand.h"
#include "program/plan/Plan.h"

#include <cstddef>
#include <string>
#include <vector>

namespace kx::cli {

// The actions and groups of these names with all that they need, by the actions' places in the project;
// without a name all of them. Raises EUsage for an unknown one.
std::vector<std::size_t> PlacesOf(const TProject& project, const std::vector<std::string>& names);

// Raises EKxParseError where parts would write over each other's files.
void RequireNoClash(const TPlan& plan);

// What the run of the whole is given, but for its secrets, as a part of it is given it too.
TRunWords WordsOf(const std::u16string& project, const TRunArguments& run, const TCommonOptions& common);

// A process that runs parts here as they are named to it (PartTalk.h). Secrets that came by standard input go
// to it by its environment.
platform::ProcessRequest ProcessOfParts(TRunWords words, const TRunArguments& run,
                                        const TGivenSecrets& secrets);
inline constexpr const char* TakesParts = "--take-parts"; // what tells it so

} // namespace kx::cli
