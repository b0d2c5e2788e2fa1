// The subcommands: a declaration and a row each.
#pragma once

#include "program/cli/CommonOptions.h"

#include <array>

namespace CLI {
class App;
}

namespace kx::cli {

// A subcommand: describes its options and, once they are parsed, runs with the result in `exitCode`.
struct TCommand {
  const char* Name;
  const char* Help;
  void (*Define)(CLI::App& command, const TCommonOptions& common, int& exitCode);
  const char* Examples; // lines behind "kxhost "
  const char* ExitCodes;
};
void DefineRun(CLI::App& command, const TCommonOptions& common, int& exitCode);
void DefinePlan(CLI::App& command, const TCommonOptions& common, int& exitCode);
void DefineDo(CLI::App& command, const TCommonOptions& common, int& exitCode);
void DefineValidate(CLI::App& command, const TCommonOptions& common, int& exitCode);
void DefineInspect(CLI::App& command, const TCommonOptions& common, int& exitCode);
void DefineGraph(CLI::App& command, const TCommonOptions& common, int& exitCode);
void DefineCheck(CLI::App& command, const TCommonOptions& common, int& exitCode);
void DefineExplain(CLI::App& command, const TCommonOptions& common, int& exitCode);
void DefineReport(CLI::App& command, const TCommonOptions& common, int& exitCode);
void DefineInit(CLI::App& command, const TCommonOptions& common, int& exitCode);
void DefineSchema(CLI::App& command, const TCommonOptions& common, int& exitCode);
void DefineCompletion(CLI::App& command, const TCommonOptions& common, int& exitCode);
void DefineActions(CLI::App& command, const TCommonOptions& common, int& exitCode);
void DefineOptions(CLI::App& command, const TCommonOptions& common, int& exitCode);
void DefineHistory(CLI::App& command, const TCommonOptions& common, int& exitCode);
void DefineEdit(CLI::App& command, const TCommonOptions& common, int& exitCode);

inline constexpr const char* CodesOfRuns = "0 success, 1 the run failed, 2 wrong usage, 3 invalid project "
                                           "file or settings, 4 stopped by a gate, 130 stopped with Ctrl-C";
inline constexpr const char* CodesOfLooks = "0 success, 1 not found or not readable, 2 wrong usage";

inline constexpr std::array<TCommand, 16> Commands{{
    {"run", "Run a build project", DefineRun,
     "run nightly.kxproj\n"
     "run nightly.kxproj --dry-run\n"
     "run nightly.kxproj --set Root=/src --verbosity minimal --log nightly.jsonl\n"
     "run nightly.kxproj --ci auto --report nightly.html --junit tests.xml\n",
     CodesOfRuns},
    {"plan", "Show the parts of a run, or write them for ninja and for engines with many machines",
     DefinePlan,
     "plan nightly.kxproj\n"
     "plan nightly.kxproj Tests --format mermaid\n"
     "plan nightly.kxproj --format ninja > build.ninja\n"
     "plan nightly.kxproj --format github > .github/workflows/nightly.yml\n",
     "0 written, 1 not written, 2 wrong usage, 3 invalid project file"},
    {"edit", "Edit and run a build project in the browser; a new one is made when it is saved", DefineEdit,
     "edit nightly.kxproj\n"
     "edit nightly.kxproj --no-browser\n",
     "0 ended, 1 the editor failed, 2 wrong usage, 3 invalid project file"},
    {"do", "Run one action without a project file", DefineDo,
     "do DEVENV Solution=App.sln \"SolutionConfiguration=Release|Any CPU\" VStudioVersion=vs2010\n"
     "do DEVENV Solution=App.sln SolutionConfiguration=Release BuildType=btSelectedProjects "
     "SelectedProjects=Lib SelectedProjects=App\n"
     "do VERSIONINFO ResourceFile=App.rc PropertySetName=Now PropertiesToUpdate=MajorVersion=True "
     "--property-set Now.MajorVersion=3\n",
     CodesOfRuns},
    {"init", "Write a build project for a solution", DefineInit,
     "init App.sln\n"
     "init App.sln nightly.kxproj\n",
     "0 written, 1 not read or not written, 2 wrong usage"},
    {"validate", "Validate every action of a build project, run nothing", DefineValidate,
     "validate nightly.kxproj\n"
     "validate nightly.kxproj --set Root=/src\n",
     "0 no problems, 2 wrong usage, 3 invalid project file or settings"},
    {"inspect", "Show what the package reads in a solution, resource script, test result or build log",
     DefineInspect,
     "inspect App.sln\n"
     "inspect App.sln --json --all-projects\n"
     "inspect App.rc\n"
     "inspect results.trx\n"
     "inspect build.log --tool devenv --vs vs2008\n",
     CodesOfLooks},
    {"graph", "Draw the build order and the dependencies of a solution", DefineGraph,
     "graph App.sln --format svg > App.svg\n"
     "graph App.sln | dot -Tpng -o App.png\n"
     "graph App.sln --format mermaid --around Lib\n",
     CodesOfLooks},
    {"check", "Look for what is wrong in solutions, projects and build projects", DefineCheck,
     "check App.sln\n"
     "check . --json\n"
     "check nightly.kxproj --set Root=/src --sarif findings.sarif\n"
     "check App.sln --configuration Rel.*\n"
     "check . --baseline known.txt --write-baseline\n"
     "check App.sln --rule path-case=error --rule solution-format=off\n",
     "0 no errors, 1 errors, or not found, 2 wrong usage, 4 a gate is not met"},
    {"explain", "Say what a rule of check is about, or list them all", DefineExplain,
     "explain\n"
     "explain solution-cycle\n",
     "0 success, 2 wrong usage"},
    {"actions", "List the action types, or the properties of one", DefineActions,
     "actions\n"
     "actions DEVENV\n"
     "actions MSTEST --json\n",
     "0 success, 2 wrong usage"},
    {"schema", "Print the form of build projects as an XML Schema, for editors", DefineSchema,
     "schema > kxproj.xsd\n", "0 success, 2 wrong usage"},
    {"completion", "Print what makes a shell complete command lines of kxhost", DefineCompletion,
     "completion bash > ~/.local/share/bash-completion/completions/kxhost\n"
     "completion powershell | Out-String | Invoke-Expression\n",
     "0 success, 2 wrong usage"},
    {"history", "Show what earlier runs of a build project left: results, flaky tests, findings, times",
     DefineHistory,
     "history\n"
     "history nightly.kxproj --last 50\n"
     "history show 12 nightly.kxproj\n"
     "history tests nightly.kxproj\n"
     "history findings nightly.kxproj --json\n"
     "history times nightly.kxproj\n",
     CodesOfLooks},
    {"report", "Make the reports of runs from their logs", DefineReport,
     "report nightly.jsonl --report nightly.html --junit tests.xml\n"
     "report part1.jsonl part2.jsonl --sarif all.sarif --ci auto\n",
     "0 the runs succeeded, 1 one failed, 2 wrong usage, 3 no log of a run, 4 stopped by a gate, 130 "
     "stopped"},
    {"options", "Read and write the options store", DefineOptions,
     "options\n"
     "options set VisualStudioDotNet.MSDevPath2008 \"C:\\VS9\\Common7\\IDE\"\n"
     "options get VisualStudioDotNet.DefVSVersion\n"
     "options unset DotNetFramework.v4.0\n",
     CodesOfLooks},
}};

} // namespace kx::cli
