// kxhost: runs build projects with the actions of its plug-ins.
#include "cli/Common.h"
#include "host/Exceptions.h"
#include "platform/Console.h"
#include "text/Encoding.h"
#include "text/Text.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <map>

namespace kx::cli {

namespace {

constexpr std::array<TCommand, 7> Commands{{
    {"run", "Run a build project", DefineRun},
    {"edit", "Edit and run a build project in the browser", DefineEdit},
    {"do", "Run one action without a project file", DefineDo},
    {"validate", "Validate every action of a build project, run nothing", DefineValidate},
    {"inspect", "Show what the package reads in a solution, resource script, test result or build log",
     DefineInspect},
    {"actions", "List the action types, or the properties of one", DefineActions},
    {"options", "Read and write the options store", DefineOptions},
}};

const std::map<std::string, TVerbosity> Verbosities{{"quiet", TVerbosity::Quiet},
                                                    {"minimal", TVerbosity::Minimal},
                                                    {"normal", TVerbosity::Normal},
                                                    {"detailed", TVerbosity::Detailed},
                                                    {"diagnostic", TVerbosity::Diagnostic}};
const std::map<std::string, TColorChoice> Colors{
    {"auto", TColorChoice::Auto}, {"always", TColorChoice::Always}, {"never", TColorChoice::Never}};

// Each takes one value and may be repeated, before the subcommand or behind it.
void DefineCommon(CLI::App& app, TCommonOptions& options) {
  app.fallthrough();
  app.allow_windows_style_options(false); // "/srv/a.sln" is a file on Windows, too
  app.add_option("--options", options.OptionsFile,
                 "The options store (default: in the user's configuration folder)")
      ->type_name("FILE");
  app.add_option("--option", options.Overrides, "An option for this run only")
      ->type_name("SECTION.KEY=VALUE")
      ->allow_extra_args(false);
  app.add_option("--plugin", options.Plugins, "Load this plug-in too")
      ->type_name("FILE")
      ->allow_extra_args(false);
  app.add_option("--drive", options.Drives, "What a drive letter stands for")
      ->type_name("LETTER=FOLDER")
      ->allow_extra_args(false);
  app.add_option("--color", options.Color, "auto, always or never")
      ->type_name("WHEN")
      ->transform(CLI::CheckedTransformer(Colors, CLI::ignore_case).description(""));
  app.add_option("--verbosity", options.Verbosity, "quiet, minimal, normal, detailed or diagnostic")
      ->type_name("LEVEL")
      ->transform(CLI::CheckedTransformer(Verbosities, CLI::ignore_case).description(""));
  app.add_option("--log", options.LogFile, "Write every event of the run as a line of JSON")
      ->type_name("FILE.jsonl");
  app.add_option("--junit", options.JUnitFile, "Write the unit tests of the run as JUnit's XML")
      ->type_name("FILE.xml");
  app.add_option("--report", options.ReportFile, "Write the run as one page to look at in a browser")
      ->type_name("FILE.html");
  app.add_flag("--dry-run", options.DryRun, "Show what run and do would start and change, and do neither");
  app.add_option("--ci", options.Ci, "Fold groups and mark problems as this CI system wants it")
      ->type_name("github|azure|teamcity|gitlab|auto")
      ->check(CLI::IsMember({"github", "azure", "teamcity", "gitlab", "auto"}).description(""));
}

// What the library says of a mistyped subcommand is only that one is missing.
std::u16string UsageMessage(const std::vector<std::u16string>& arguments, const CLI::ParseError& error) {
  std::vector<std::u16string> names;
  names.reserve(Commands.size());
  for (const auto& command : Commands)
    names.push_back(text::FromAscii(command.Name));
  const bool isWord = !arguments.empty() && !arguments.front().starts_with(u"-");
  if (!isWord || std::find(names.begin(), names.end(), arguments.front()) != names.end())
    return text::FromUtf8(error.what());
  const std::u16string nearest = text::NearestName(arguments.front(), names);
  return u"Unknown subcommand \"" + arguments.front() + u"\"." +
         (nearest.empty() ? u"" : u" Did you mean \"" + nearest + u"\"?");
}

int Parse(CLI::App& app, const std::vector<std::u16string>& arguments) {
  // The library takes arguments from the end.
  std::vector<std::string> reversed;
  reversed.reserve(arguments.size());
  for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument)
    reversed.push_back(text::ToUtf8(*argument));
  try {
    app.parse(std::move(reversed));
    return ExitSuccess;
  } catch (const CLI::CallForHelp&) {
    platform::WriteConsole(platform::ConsoleStream::Output, app.help());
    return ExitSuccess;
  } catch (const CLI::CallForVersion& version) {
    platform::WriteConsole(platform::ConsoleStream::Output, std::string(version.what()) + "\n");
    return ExitSuccess;
  } catch (const CLI::ParseError& error) {
    WriteError(u"kxhost: " + UsageMessage(arguments, error));
    WriteError(u"Run \"kxhost --help\" for the usage.");
    return ExitUsage;
  }
}

int Main(const std::vector<std::u16string>& arguments) {
  CLI::App app("Runs build projects with the actions of its plug-ins.", "kxhost");
  app.require_subcommand(1);
  app.set_version_flag("--version", "kxhost " KX_VERSION);
  TCommonOptions common;
  DefineCommon(app, common);
  int exitCode = ExitSuccess;
  for (const auto& command : Commands)
    command.Define(*app.add_subcommand(command.Name, command.Help), common, exitCode);
  try {
    const int parsed = Parse(app, arguments);
    return parsed == ExitSuccess ? exitCode : parsed;
  } catch (const EUsage& error) {
    WriteError(u"kxhost: " + error.Message());
    return ExitUsage;
  } catch (const EKxParseError& error) { // the project file, or the options store
    WriteError(u"kxhost: " + error.Message());
    return ExitInvalid;
  } catch (const std::exception& error) {
    WriteError(u"kxhost: " + MessageOf(error));
    return ExitFailed;
  }
}

} // namespace

} // namespace kx::cli

int main(int argc, char** argv) {
  kx::platform::IgnoreBrokenPipes();
  auto arguments = kx::platform::CommandLineArguments(argc, argv);
  if (!arguments.empty()) arguments.erase(arguments.begin()); // the program's name
  return kx::cli::Main(arguments);
}
