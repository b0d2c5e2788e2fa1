#include "program/cli/RunArguments.h"

// The arguments that every command takes that runs actions.
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "program/cli/HostSession.h"
#include "program/cli/Usage.h"
#include "program/runner/Project.h"

#include <CLI/CLI.hpp>

namespace kx::cli {

namespace {

// One line a rule, as the help of a command shows it behind its options.
std::string RulesHelp() {
  std::string help = "\nRules (--rule NAME=error, NAME=warning or NAME=off; what is not set is an error):\n";
  for (const auto& rule : VerdictRules()) {
    std::string name = text::ToUtf8(rule.Name);
    name.resize(std::max<std::size_t>(name.size() + 1, 22), ' ');
    help += "  " + name + text::ToUtf8(rule.Help) + "\n";
  }
  return help;
}

} // namespace

void DefineVariables(CLI::App& command, std::vector<std::string>& assignments) {
  command.add_option("--set", assignments, "NAME=VALUE: a variable, before those of the project")
      ->type_name("NAME=VALUE")
      ->allow_extra_args(false);
}

void DefineRunArguments(CLI::App& command, TRunArguments& arguments) {
  DefineVariables(command, arguments.Variables);
  command.add_option("--rule", arguments.Rules, "NAME=SEVERITY: what follows when a rule below is broken")
      ->type_name("NAME=SEVERITY")
      ->allow_extra_args(false);
  command.footer(RulesHelp());
}

std::vector<TProjectVariable> ParseVariables(const std::vector<std::string>& assignments) {
  std::vector<TProjectVariable> variables;
  for (const auto& assignment : assignments) {
    try {
      variables.push_back(TProjectVariable::Parse(text::FromUtf8(assignment)));
    } catch (const EKxException& error) {
      throw EUsage(u"--set: " + error.Message());
    }
  }
  return variables;
}

TRunSettings RunSettingsOf(const TRunArguments& arguments, const THostSession& session, bool dryRun) {
  TRunSettings settings{ParseVariables(arguments.Variables), session.KeyFile(), dryRun};
  settings.CommandLine = session.CommandLine();
  settings.Secrets = session.Secrets();
  for (const auto& assignment : arguments.Rules) {
    try {
      settings.Rules.Set(text::FromUtf8(assignment));
    } catch (const EKxException& error) {
      throw EUsage(u"--rule: " + error.Message());
    }
  }
  return settings;
}

} // namespace kx::cli
