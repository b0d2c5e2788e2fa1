// The command line of kxhost check.
#include "program/cli/CheckOutput.h"
#include "program/cli/Commands.h"
#include "program/cli/FileKinds.h"
#include "program/cli/GateArguments.h"
#include "program/cli/HostSession.h"
#include "program/cli/Output.h"
#include "program/cli/Usage.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "program/check/BuildProjectFacts.h"
#include "program/check/Check.h"
#include "program/cli/RunArguments.h"
#include "program/editor/EditorDesign.h"
#include "program/findings/FindingList.h"
#include "program/report/Sarif.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iterator>
#include <memory>
#include <set>

namespace kx::cli {

namespace {

struct TCheckArguments {
  std::vector<std::string> Paths;
  std::vector<std::string> Rules;
  std::vector<std::string> Variables;
  std::string Configuration;
  std::string Sarif;
  TGateArguments Gates;
  bool Json = false;
};

check::TCheckLevels LevelsOf(const TCheckArguments& arguments) {
  check::TCheckLevels levels;
  for (const std::string& rule : arguments.Rules) {
    try {
      levels.Set(text::FromUtf8(rule));
    } catch (const EKxException& error) {
      throw EUsage(u"--rule: " + error.Message());
    }
  }
  return levels;
}

// In the order in which they are named, each once.
check::TFilesToCheck FilesOf(const TCheckArguments& arguments) {
  check::TFilesToCheck all;
  std::set<std::u16string> known;
  for (const std::string& path : arguments.Paths) {
    check::TFilesToCheck found = check::FilesToCheck(text::FromUtf8(path));
    std::ranges::move(found.Troubles, std::back_inserter(all.Troubles));
    for (auto& file : found.Files)
      if (known.insert(file).second) all.Files.push_back(std::move(file));
  }
  return all;
}

class TCheckRun {
public:
  TCheckRun(const TCheckArguments& arguments, const TCommonOptions& common)
      : arguments_(arguments), common_(common), gates_(arguments.Gates, {}), checker_(LevelsOf(arguments)) {}

  int Run() {
    MapDrives(common_.Drives);
    RequireNotWrittenByHand(u"--sarif", text::FromUtf8(arguments_.Sarif));
    const auto files = FilesOf(arguments_);
    for (const auto& file : files.Files)
      CheckFile(file);
    checked_.Files = checker_.FileCount();
    checked_.Findings = checker_.TakeFindings();
    const std::u16string here = platform::CurrentDirectory();
    const bool wantsSarif = !arguments_.Sarif.empty();
    if (wantsSarif || arguments_.Json || gates_.CountFindings()) // it reads the sources anew
      SetFingerprints(checked_.Findings, here);
    if (wantsSarif) SaveSarif(here);
    if (arguments_.Json) {
      WriteCheckedJson(checked_);
    } else {
      ShowChecked(checked_, common_);
    }
    const int exitCode = ApplyGates(here);
    for (const auto& trouble : files.Troubles)
      WriteError(u"kxhost: not everything was checked. " + trouble);
    return exitCode == ExitSuccess && !files.Troubles.empty() ? ExitFailed : exitCode;
  }

private:
  void CheckFile(const std::u16string& file) {
    const std::u16string_view kind = ExtensionOfKind(file);
    if (kind == u".sln") return CheckSolution(file);
    if (kind == u"proj") return checker_.CheckProject(file);
    if (kind == u".kxproj") return CheckBuildProject(file);
    const std::u16string known = DescribeFileKind(file);
    throw EUsage(u"check takes solutions, projects, build projects and folders with them. " +
                 (known.empty() ? file + u" is nothing of that." : known));
  }

  void CheckSolution(const std::u16string& file) {
    checker_.CheckSolution(file);
    if (arguments_.Configuration.empty()) return;
    auto names = checker_.CheckConfiguration(file, text::FromUtf8(arguments_.Configuration));
    if (!names.empty()) checked_.Configurations.push_back({file, std::move(names)});
  }

  // The actions say what is wrong with their settings, so their host is opened for the first of them.
  void CheckBuildProject(const std::u16string& file) {
    if (!session_) session_ = std::make_unique<THostSession>(common_, TDesignServices{&design_, &design_});
    const TRunSettings settings =
        RunSettingsOf({.Variables = arguments_.Variables, .Rules = {}}, *session_, true);
    checker_.CheckBuildProject(
        check::ReadBuildProjectFacts(file, session_->Services(), session_->Stop(), settings));
  }

  // Errors fail the command unless the user has said what does.
  int ApplyGates(const std::u16string& root) const {
    const bool isGoverned = !gates_.BaselineFile().empty() || !arguments_.Gates.FailOn.empty();
    const bool fails = !isGoverned && CountOf(checked_.Findings).Errors > 0;
    const int own = fails ? ExitFailed : ExitSuccess;
    if (!gates_.CountFindings()) return own;
    std::string lines;
    const int exitCode =
        gates_.Apply({.Findings = checked_.Findings, .Root = root}, ChoosePalette(common_.Color), own, lines);
    arguments_.Json ? PrintError(lines) : Print(lines); // an object stays one
    return exitCode;
  }

  void SaveSarif(const std::u16string& root) const {
    const TSarifSettings settings{.Root = root,
                                  .Explain =
                                      [](std::u16string_view name) {
                                        const check::TCheckRule& rule = check::RequireCheckRule(name);
                                        return std::u16string(rule.Summary) + u". " +
                                               std::u16string(rule.Why) + u" " + std::u16string(rule.Advice);
                                      },
                                  .FallbackFile = {}};
    const auto saved =
        platform::SaveFileInPieces(text::FromUtf8(arguments_.Sarif), [&](const platform::PutBytes& put) {
          return WriteSarif(checked_.Findings, settings, put);
        });
    if (!saved) throw EKxException(u"--sarif: " + saved.Message());
  }

  const TCheckArguments& arguments_;
  const TCommonOptions& common_;
  TGates gates_;
  check::TChecker checker_;
  editor::TEditorDesign design_; // with it the plug-ins register the pages, which know what has an effect
  std::unique_ptr<THostSession> session_;
  TChecked checked_;
};

} // namespace

void DefineCheck(CLI::App& command, const TCommonOptions& common, int& exitCode) {
  const auto arguments = std::make_shared<TCheckArguments>();
  command.add_option("PATH", arguments->Paths, "Solutions, projects, build projects, and folders with them")
      ->required();
  DefineVariables(command, arguments->Variables);
  DefineGates(command, arguments->Gates);
  command.add_flag("--json", arguments->Json, "Write one object of JSON");
  command
      .add_option("--rule", arguments->Rules,
                  "How severe a rule is: NAME=error, warning, note or off; \"kxhost explain\" lists them")
      ->type_name("NAME=SEVERITY")
      ->allow_extra_args(false);
  command
      .add_option("--configuration", arguments->Configuration,
                  "Say which configurations of each solution this name or expression means")
      ->type_name("NAME");
  command.add_option("--sarif", arguments->Sarif, "Write the findings as SARIF 2.1.0 too")->type_name("FILE");
  command.callback([arguments, &common, &exitCode] { exitCode = TCheckRun(*arguments, common).Run(); });
}

} // namespace kx::cli
