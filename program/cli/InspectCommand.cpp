// The command line of kxhost inspect.
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "package/solution/VSNETSLN.h"
#include "program/cli/Commands.h"
#include "program/cli/CommonOptions.h"
#include "program/cli/HostSession.h"
#include "program/cli/Inspect.h"
#include "program/cli/LogReader.h"
#include "program/cli/Usage.h"

#include <CLI/CLI.hpp>

#include <array>
#include <memory>
#include <span>

namespace kx::cli {

namespace {

struct TArguments {
  std::vector<std::string> Files;
  std::string Tool;
  std::string Version;
  std::string Encoding;
  TInspectOptions Options;
};

constexpr auto KnownVersions = std::span(VSDotNetVersionNames).first<VSDotNetVersions.size()>();
constexpr std::array<std::u16string_view, 2> Tools{u"devenv", u"msbuild"};

// What would be ignored is refused.
void CheckLogOptions(const TArguments& arguments) {
  const bool isLog = !arguments.Tool.empty();
  const std::pair<bool, std::u16string_view> ofLogs[] = {{arguments.Options.Lines, u"--lines"},
                                                         {!arguments.Version.empty(), u"--vs"},
                                                         {!arguments.Encoding.empty(), u"--encoding"}};
  for (const auto& [given, name] : ofLogs)
    if (given && !isLog)
      throw EUsage(std::u16string(name) + u" is for build logs: say --tool devenv or --tool msbuild, too.");
  if (isLog && arguments.Options.AllProjects) throw EUsage(u"--all-projects is for solutions, not for logs.");
  if (arguments.Options.Lines && arguments.Options.Json)
    throw EUsage(u"--lines and --json are two forms of the output: give one of them.");
}

int Inspect(TArguments& arguments, const TCommonOptions& common) {
  CheckLogOptions(arguments);
  MapDrives(common.Drives);
  TInspectOptions& options = arguments.Options;
  for (const auto& file : arguments.Files)
    options.Files.push_back(text::FromUtf8(file));
  if (!arguments.Tool.empty())
    options.MSBuild = RequireChoice(u"--tool", text::FromUtf8(arguments.Tool), Tools) == 1;
  if (!arguments.Version.empty())
    options.VSVersion =
        static_cast<std::int32_t>(RequireChoice(u"--vs", text::FromUtf8(arguments.Version), KnownVersions));
  options.Encoding = text::FromUtf8(arguments.Encoding);
  if (!options.Encoding.empty()) RequireEncoding(options.Encoding);
  return RunInspect(options);
}

} // namespace

void DefineInspect(CLI::App& command, const TCommonOptions& common, int& exitCode) {
  const auto arguments = std::make_shared<TArguments>();
  command
      .add_option(
          "FILES", arguments->Files,
          "Solutions (.sln), resource scripts (.rc, .rc2), test results (.trx), or build logs with --tool")
      ->required();
  command.add_flag("--json", arguments->Options.Json, "One JSON object; with several files one a line");
  command.add_flag("--all-projects", arguments->Options.AllProjects,
                   "Solutions: keep projects that are not on disk");
  OfferChoices(
      command.add_option("--tool", arguments->Tool, "Build logs: the tool that wrote it, devenv or msbuild")
          ->type_name("TOOL"),
      Tools);
  OfferChoices(
      command
          .add_option("--vs", arguments->Version, "Build logs: the Visual Studio version, vs2002 to vs2010")
          ->type_name("VERSION"),
      KnownVersions);
  command.add_flag("--lines", arguments->Options.Lines, "Build logs: every message as STATUS<TAB>TEXT");
  command.add_option("--encoding", arguments->Encoding, "Build logs: their encoding, found out by default")
      ->type_name("NAME");
  command.callback([arguments, &common, &exitCode] { exitCode = Inspect(*arguments, common); });
}

} // namespace kx::cli
