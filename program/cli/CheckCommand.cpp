// The command line of kxhost check.
#include "program/cli/CheckOutput.h"
#include "program/cli/Commands.h"
#include "program/cli/FileKinds.h"
#include "program/cli/HostSession.h"
#include "program/cli/Output.h"
#include "program/cli/Usage.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/WindowsPath.h"
#include "program/check/Check.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <set>

namespace kx::cli {

namespace {

struct TCheckArguments {
  std::vector<std::string> Paths;
  std::vector<std::string> Rules;
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
std::vector<std::u16string> FilesOf(const TCheckArguments& arguments) {
  std::vector<std::u16string> files;
  std::set<std::u16string> known;
  for (const std::string& path : arguments.Paths)
    for (auto& file : check::FilesToCheck(text::FromUtf8(path)))
      if (known.insert(file).second) files.push_back(std::move(file));
  return files;
}

void CheckFile(const std::u16string& file, check::TChecker& checker) {
  const std::u16string_view kind = ExtensionOfKind(file);
  if (kind == u".sln") return checker.CheckSolution(file);
  if (kind == u"proj") return checker.CheckProject(file);
  throw EUsage(u"check takes solutions, projects and folders with them. " + DescribeFileKind(file));
}

int Check(const TCheckArguments& arguments, const TCommonOptions& common) {
  MapDrives(common.Drives);
  check::TChecker checker(LevelsOf(arguments));
  const auto files = FilesOf(arguments);
  for (const auto& file : files)
    CheckFile(file, checker);
  const auto findings = checker.TakeFindings();
  if (arguments.Json) {
    WriteFindingsJson(findings, checker.FileCount());
  } else {
    ShowFindings(findings, checker.FileCount(), common);
  }
  return std::ranges::find(findings, TFindingSeverity::Error, &TFinding::Severity) == findings.end()
             ? ExitSuccess
             : ExitFailed;
}

} // namespace

void DefineCheck(CLI::App& command, const TCommonOptions& common, int& exitCode) {
  const auto arguments = std::make_shared<TCheckArguments>();
  command.add_option("PATH", arguments->Paths, "Solutions, projects, and folders with them")->required();
  command.add_flag("--json", arguments->Json, "Write one object of JSON");
  command
      .add_option("--rule", arguments->Rules,
                  "How severe a rule is: NAME=error, warning, note or off; \"kxhost explain\" lists them")
      ->type_name("NAME=SEVERITY")
      ->allow_extra_args(false);
  command.callback([arguments, &common, &exitCode] { exitCode = Check(*arguments, common); });
}

} // namespace kx::cli
