// The command line of kxhost plan.
#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/cli/Commands.h"
#include "program/cli/HostSession.h"
#include "program/cli/Output.h"
#include "program/cli/PartArguments.h"
#include "program/cli/ProjectArgument.h"
#include "program/cli/RunArguments.h"
#include "program/cli/SecretArguments.h"
#include "program/cli/Usage.h"
#include "program/history/Questions.h"
#include "program/plan/PlanFormats.h"
#include "program/runner/ProjectFile.h"
#include "program/runner/Run.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace kx::cli {

namespace {

struct TPlanArguments {
  TProjectSelection Project;
  TRunArguments Run;
  std::string Format = "text";
};

std::vector<std::u16string_view> FormatNames() {
  std::vector<std::u16string_view> names;
  names.reserve(PlanFormats().size());
  for (const TPlanFormat& format : PlanFormats())
    names.push_back(format.Name);
  return names;
}

// The machine of a part has a secret in a variable.
void RequireNoSecret(const TRunArguments& run) {
  for (const TSecretArgument& secret : run.Secrets)
    if (secret.Text.find('=') == std::string::npos)
      throw EUsage(u"A plan holds no secrets. Name the variable in which each machine has it: " +
                   text::FromUtf8(secret.Text) + u"=VARIABLE.");
}

int WritePlan(TPlanArguments& arguments, const TCommonOptions& common) {
  const std::size_t format = RequireChoice(u"--format", text::FromUtf8(arguments.Format), FormatNames());
  RequireNoSecret(arguments.Run);
  THostSession session(common);
  TProjectRunner runner(session.Services(), session.Stop(), RunSettingsOf(arguments.Run, session, true));
  TProjectFile file(runner.Project());
  const std::u16string name = RequireProject(arguments.Project);
  file.Load(text::ExpandPath(name, platform::CurrentDirectory()));
  const TRunWords words = WordsOf(name, arguments.Run, common);
  const auto usual = history::ReadUsualTimes(HistoryOf(common).FileFor(runner.Project().FileName));
  const TPlan plan = MakePlan(runner, usual, PlacesOf(runner.Project(), arguments.Project.Names));
  RequireNoClash(plan);
  TOutput output;
  PlanFormats()[format].Write(plan, words, [&output](std::string_view utf8) { output.Write(utf8); });
  return ExitSuccess;
}

} // namespace

void DefinePlan(CLI::App& command, const TCommonOptions& common, int& exitCode) {
  const auto arguments = std::make_shared<TPlanArguments>();
  DefineProjectAndNames(command, arguments->Project);
  DefineRunArguments(command, arguments->Run);
  DefineSecrets(command, arguments->Run.Secrets);
  OfferChoices(
      command
          .add_option("--format", arguments->Format,
                      "text (the default), json, dot (for Graphviz), mermaid (for Markdown), ninja, or "
                      "the form of an engine with machines: buildbot (see tools/buildbot), github, "
                      "gitlab, azure")
          ->type_name("FORMAT"),
      FormatNames());
  command.callback([arguments, &common, &exitCode] { exitCode = WritePlan(*arguments, common); });
}

} // namespace kx::cli
