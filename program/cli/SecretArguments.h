// Secrets that a command is given by standard input or by the environment, since arguments are seen by
// everybody on the machine.
#pragma once

#include "program/cli/HostSession.h"
#include "program/cli/RunArguments.h"
#include "program/cli/Usage.h"
#include "program/runner/Project.h"
#include "program/runner/ProjectFile.h"

#include <string>
#include <string_view>
#include <vector>

namespace kx::cli {

// --secret and --set-secret of a command.
void DefineSecrets(CLI::App& command, std::vector<TSecretArgument>& arguments);

// How the variables begin by which a run hands a secret to the processes of its parts. No other program gets
// them: a process that has read one forgets it.
inline constexpr std::u16string_view PassedSecret = u"KX_SECRET_";

struct TGivenSecret {
  bool IsVariable; // else a property
  std::u16string Name;
  std::u16string Value;
};
using TGivenSecrets = std::vector<TGivenSecret>;

// The values, from where the arguments say; none of them is shown from now on. Those of standard input are
// asked for on a terminal; else one is all of it, several are a line each, in the order of the arguments, in
// UTF-8 with or without a mark, the last line end left out. Raises EUsage for one that cannot be had.
TGivenSecrets TakeSecrets(const std::vector<TSecretArgument>& arguments, const THostSession& session);

// The variables among them, as text that holds no references.
std::vector<TProjectVariable> SecretVariables(const TGivenSecrets& secrets);
// The properties among them, "ACTION.PROPERTY" or "PROPERTY" of every action that has it: for this run, the
// file (if any) keeps what it holds. Raises EUsage where no action has it.
void GiveSecrets(const TGivenSecrets& secrets, TProject& project, TProjectFile* file);

} // namespace kx::cli
