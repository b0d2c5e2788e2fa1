// kxhost run and kxhost validate: build projects from files.
#include "foundation/platform/Console.h"
#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/cli/Commands.h"
#include "program/cli/CommonOptions.h"
#include "program/cli/HostSession.h"
#include "program/cli/Output.h"
#include "program/cli/PartArguments.h"
#include "program/cli/PartRun.h"
#include "program/cli/ProjectArgument.h"
#include "program/cli/RunArguments.h"
#include "program/cli/RunParts.h"
#include "program/cli/RunProject.h"
#include "program/cli/SecretArguments.h"
#include "program/cli/Usage.h"
#include "program/runner/ProjectFile.h"
#include "program/runner/Run.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kx::cli {

namespace {

struct TProjectArguments {
  TProjectSelection Project;
  TRunArguments Run;
  bool NoSave = false;
  TPartsArguments Parts;
  std::optional<std::string> Part;
  bool TakesParts = false; // from standard input

  bool IsOfParts() const { return Part || TakesParts; }
};

// A project file with the host that runs it.
class TOpenProject {
public:
  TOpenProject(TProjectArguments& arguments, THostSession& session, bool dryRun = false)
      : secrets_(TakeSecrets(arguments.Run.Secrets, session)),
        runner_(session.Services(), session.Stop(), Settings(arguments, session, dryRun)),
        file_(runner_.Project()) {
    file_.Load(text::ExpandPath(RequireProject(arguments.Project), platform::CurrentDirectory()));
    GiveSecrets(secrets_, runner_.Project(), &file_);
  }
  TProjectRunner& Runner() { return runner_; }
  TProjectFile& File() { return file_; }
  const TGivenSecrets& Secrets() const { return secrets_; }

private:
  TRunSettings Settings(const TProjectArguments& arguments, const THostSession& session, bool dryRun) const {
    TRunSettings settings = RunSettingsOf(arguments.Run, session, dryRun);
    for (auto& variable : SecretVariables(secrets_))
      settings.Variables.push_back(std::move(variable));
    return settings;
  }

  TGivenSecrets secrets_;
  TProjectRunner runner_;
  TProjectFile file_;
};

int RunAsTold(TOpenProject& project, THostSession& session, const TProjectArguments& arguments,
              const TCommonOptions& common) {
  TProjectRunner& runner = project.Runner();
  if (arguments.TakesParts) return TakeParts(runner, session, common);
  if (arguments.Part) return RunPart(runner, session, common, text::FromUtf8(*arguments.Part));
  return RunActions(runner, session, common, arguments.Run, project.Secrets(), arguments.Project.Names,
                    arguments.Parts);
}

int RunFile(TProjectArguments& arguments, const TCommonOptions& common) {
  THostSession session(common);
  TOpenProject project(arguments, session, common.DryRun);
  const bool saves = !arguments.NoSave && !arguments.IsOfParts() && !common.DryRun;
  if (saves) project.Runner().StoreIn(project.File());
  const int exitCode = RunAsTold(project, session, arguments, common);
  if (common.DryRun) return exitCode;
  const platform::SaveScope save; // of both, or of neither
  session.SaveOptions();
  if (!saves) return exitCode;
  const auto saved = project.File().Save(session.Store().Patience);
  if (saved) return exitCode;
  WriteError(u"Changed properties could not be saved. " + saved.Message());
  return exitCode == ExitSuccess ? ExitFailed : exitCode;
}

// Actions that share a name, as those without one do, are told apart by their number from the top.
class TActionNames {
public:
  explicit TActionNames(const TProject& project) { Collect(project.Actions()); }

  std::u16string Of(const TValidationEntry& entry) const {
    const auto number = numbers_.find(entry.Node);
    if (number == numbers_.end() || counts_.at(entry.Action) == 1) return entry.Action;
    return entry.Action + u" (action " + text::FromInteger(number->second) + u")";
  }

private:
  void Collect(const std::vector<std::unique_ptr<TActionNode>>& nodes) {
    for (const auto& node : nodes) {
      ++counts_[node->DisplayName()];
      numbers_.emplace(node.get(), static_cast<std::int64_t>(numbers_.size() + 1));
      Collect(node->Children());
    }
  }

  std::map<const TActionNode*, std::int64_t> numbers_;
  std::map<std::u16string, int> counts_;
};

std::string LineOf(const TValidationEntry& entry, const TActionNames& names) {
  return ForTerminal(names.Of(entry) + u": " + entry.Page + u": " + entry.Message) + "\n";
}

int ValidateFile(TProjectArguments& arguments, const TCommonOptions& common) {
  THostSession session(common);
  TOpenProject project(arguments, session);
  const auto entries = project.Runner().Validate();
  const TActionNames names(project.Runner().Project());
  std::string out;
  for (const auto& entry : entries)
    out += LineOf(entry, names);
  for (const auto& note : project.Runner().CheckFilesToChange())
    out += ForTerminal(u"Note: " + note.Action + u": " + note.Message) + "\n";
  if (out.empty()) out = "No problems found.\n";
  Print(out);
  return entries.empty() ? ExitSuccess : ExitInvalid;
}

} // namespace

void DefineRun(CLI::App& command, const TCommonOptions& common, int& exitCode) {
  const auto arguments = std::make_shared<TProjectArguments>();
  DefineProjectAndNames(command, arguments->Project);
  DefineRunArguments(command, arguments->Run);
  DefineGates(command, arguments->Run.Gates);
  DefineSecrets(command, arguments->Run.Secrets);
  command.add_flag("--no-save", arguments->NoSave,
                   "Do not write incremented version numbers back into the project file");
  DefineParts(command, arguments->Parts);
  command
      .add_option(
          "--part", arguments->Part,
          "Run one part by its id (kxhost plan lists them), not what it needs; nothing is counted up, "
          "saved or remembered")
      ->type_name("ID");
  command.add_flag(TakesParts, arguments->TakesParts)->group(""); // what a run starts to run its parts
  command.callback([arguments, &common, &exitCode] { exitCode = RunFile(*arguments, common); });
}

void DefineValidate(CLI::App& command, const TCommonOptions& common, int& exitCode) {
  const auto arguments = std::make_shared<TProjectArguments>();
  DefineProject(command, arguments->Project.File);
  DefineVariables(command, arguments->Run.Variables);
  DefineSecrets(command, arguments->Run.Secrets);
  command.callback([arguments, &common, &exitCode] { exitCode = ValidateFile(*arguments, common); });
}

} // namespace kx::cli
