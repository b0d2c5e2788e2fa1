// The command line of kxhost inspect.
#include "cli/Common.h"
#include "cli/Inspect.h"
#include "platform/Files.h"
#include "solution/VSNETSLN.h"
#include "text/Encoding.h"
#include "text/Text.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace kx::cli {

namespace {

struct TArguments {
  std::vector<std::string> Files;
  std::string Tool;
  std::string Version = "vs2010";
  std::string Encoding;
  TInspectOptions Options;
};

int Inspect(TArguments& arguments) {
  TInspectOptions& options = arguments.Options;
  for (const auto& file : arguments.Files)
    options.Files.push_back(text::FromUtf8(file));
  if (!arguments.Tool.empty()) options.MSBuild = arguments.Tool == "msbuild";
  const auto version = VSDotNetVersionEnumeration.OrdinalOf(text::FromUtf8(arguments.Version));
  if (!version) throw EUsage(u"--vs takes vs2002 to vs2010, not " + text::FromUtf8(arguments.Version) + u".");
  options.VSVersion = *version;
  options.Encoding = text::FromUtf8(arguments.Encoding);
  return RunInspect(options);
}

} // namespace

void DefineInspect(CLI::App& command, const TCommonOptions& /*common*/, int& exitCode) {
  const auto arguments = std::make_shared<TArguments>();
  command
      .add_option("FILES", arguments->Files,
                  "Solutions (.sln), resource scripts (.rc), test results (.trx), or build logs with --tool")
      ->required();
  command.add_flag("--json", arguments->Options.Json, "One JSON object; with several files one a line");
  command.add_flag("--all-projects", arguments->Options.AllProjects,
                   "Solutions: keep projects that are not on disk");
  command.add_option("--tool", arguments->Tool, "Build logs: the tool that wrote it")
      ->check(CLI::IsMember({"devenv", "msbuild"}));
  command.add_option("--vs", arguments->Version, "Build logs: the Visual Studio version")
      ->capture_default_str();
  command.add_flag("--lines", arguments->Options.Lines, "Build logs: every message as STATUS<TAB>TEXT");
  command.add_option("--encoding", arguments->Encoding, "Build logs: their encoding, found out by default");
  command.callback([arguments, &exitCode] { exitCode = Inspect(*arguments); });
}

} // namespace kx::cli
