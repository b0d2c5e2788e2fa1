// kxhost: runs build projects with the actions of its plug-ins.
#include "foundation/platform/Console.h"
#include "foundation/text/CommandLine.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "program/cli/Commands.h"
#include "program/cli/CommonOptions.h"
#include "program/cli/FileKinds.h"
#include "program/cli/Output.h"
#include "program/cli/Usage.h"
#include "program/runner/Messages.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <new>

namespace kx::cli {

namespace {

std::u16string Wide(const char* ascii) {
  return text::FromAscii(ascii);
}

// What a command's help says behind its own options.
std::string FooterOf(const TCommand& command, const CLI::App& app) {
  std::string footer = CommonOptionsHelp(app, command.Name) + "\nExamples:\n";
  const std::u16string examples = Wide(command.Examples);
  for (const auto line : text::SplitLines(examples))
    footer += "  kxhost " + text::ToUtf8(line) + "\n";
  return footer + "\nExit codes: " + command.ExitCodes + ".";
}

// As it would be typed.
std::u16string CommandLineOf(const std::vector<std::u16string>& arguments) {
  std::u16string line = u"kxhost";
  for (const auto& argument : arguments)
    line += u" " + text::QuoteArgumentIfNeeded(argument);
  return line;
}

// "options set": the commands that were named.
std::u16string CommandsOf(const CLI::App& app) {
  std::u16string names;
  for (auto named = app.get_subcommands(); !named.empty(); named = named.front()->get_subcommands())
    names += u" " + text::FromUtf8(named.front()->get_name());
  return names;
}

// The options that a command has of its own.
std::vector<std::u16string> OptionsOf(const CLI::App& command) {
  std::vector<std::u16string> names;
  for (const CLI::Option* option : command.get_options())
    for (const std::string& name : option->get_lnames())
      names.push_back(u"--" + text::FromUtf8(name));
  return names;
}

std::u16string UnknownOption(const CLI::App& app, const std::u16string& option) {
  std::vector<std::u16string> takers;
  for (const TCommand& command : Commands) {
    const auto names = OptionsOf(*app.get_subcommand(command.Name));
    if (std::ranges::find(names, option) != names.end()) takers.push_back(Wide(command.Name));
  }
  if (!takers.empty()) {
    const auto given = app.get_subcommands();
    const bool early = !given.empty() &&
                       std::ranges::find(takers, text::FromUtf8(given.front()->get_name())) != takers.end();
    return option + u" is an option of " + ListOf(takers, u"and") +
           (early ? u"; it stands behind that word." : u".");
  }
  std::vector<std::u16string> known = OptionsOf(app);
  for (const CLI::App* command : app.get_subcommands())
    for (auto& name : OptionsOf(*command))
      known.push_back(std::move(name));
  return u"Unknown option " + Quoted(option) + u"." + DidYouMean(option, known);
}

std::u16string UnknownCommand(const std::u16string& name) {
  std::u16string kind = DescribeFileKind(name);
  if (!kind.empty()) return kind;
  std::vector<std::u16string> names;
  names.reserve(Commands.size());
  for (const auto& command : Commands)
    names.push_back(Wide(command.Name));
  return u"Unknown subcommand " + Quoted(name) + u"." + DidYouMean(name, names);
}

// "--log: 1 required FILE.jsonl missing", "--log: At Most 1 required but received 2"
std::u16string WithoutNumbers(const std::u16string& message) {
  if (const std::size_t twice = message.find(u": At Most 1 "); twice != std::u16string::npos)
    return message.substr(0, twice) + u" is given more than once.";
  constexpr std::u16string_view number = u": 1 required ";
  const std::size_t at = message.find(number);
  if (at == std::u16string::npos) return message + u".";
  const std::u16string behind = message.substr(at + number.size());
  return message.substr(0, at) + u" needs " + behind.substr(0, behind.find(u' ')) + u".";
}

// The library's own words say little of what was mistyped.
std::u16string UsageMessage(const CLI::App& app, const CLI::ParseError& error) {
  const auto rest = app.remaining(true);
  if (rest.empty()) return WithoutNumbers(text::FromUtf8(error.what()));
  const std::u16string first = text::FromUtf8(rest.front());
  if (first.size() > 1 && first.starts_with(u'-'))
    return UnknownOption(app, first.substr(0, first.find(u'=')));
  if (app.get_subcommands().empty()) return UnknownCommand(first);
  std::vector<std::u16string> words; // "set", where one stands behind the command
  for (const CLI::App* word : app.get_subcommands().front()->get_subcommands({}))
    words.push_back(text::FromUtf8(word->get_name()));
  return u"Unexpected argument " + Quoted(first) + u"." + DidYouMean(first, words);
}

int Refuse(const CLI::App& app, std::u16string_view message) {
  WriteError(u"kxhost: " + std::u16string(message));
  WriteError(u"Run \"kxhost" + CommandsOf(app) + u" --help\" for the usage.");
  return ExitUsage;
}

void Define(CLI::App& app, TCommonOptions& common, int& exitCode) {
  app.require_subcommand(1);
  app.set_version_flag("--version", "kxhost " KX_VERSION);
  DefineCommonOptions(app, common);
  for (const auto& command : Commands) {
    CLI::App* added = app.add_subcommand(command.Name, command.Help);
    command.Define(*added, common, exitCode);
    added->footer([&app, &command] { return FooterOf(command, app); });
  }
  // Commands inherit what was said before they were added.
  app.footer(std::string("\"kxhost COMMAND --help\" says the rest.\nExit codes: ") + CodesOfRuns + ".");
  // Before the command runs.
  app.parse_complete_callback([&app] { CheckCommonOptions(app, app.get_subcommands().front()->get_name()); });
}

void Parse(CLI::App& app, const std::vector<std::u16string>& arguments) {
  // The library takes arguments from the end.
  std::vector<std::string> reversed;
  reversed.reserve(arguments.size());
  for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument)
    reversed.push_back(text::ToUtf8(*argument));
  app.parse(std::move(reversed));
}

// Before anything else is made of them: what is wrong with the arguments is said to the same reader.
bool IsForCi(const std::vector<std::u16string>& arguments) {
  constexpr std::u16string_view option = u"--ci";
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (!arguments[i].starts_with(option)) continue;
    std::u16string system = arguments[i].substr(option.size());
    if (system.empty() && i + 1 < arguments.size()) system = u"=" + arguments[i + 1];
    if (system.starts_with(u'='))
      return !text::EqualsIgnoreCase(system, u"=auto") || DetectCiDialect() != nullptr;
  }
  return false;
}

int Main(const std::vector<std::u16string>& arguments) {
  if (IsForCi(arguments)) GuardForCi();
  CLI::App app("Runs build projects with the actions of its plug-ins.", "kxhost");
  TCommonOptions common;
  common.CommandLine = CommandLineOf(arguments);
  int exitCode = ExitSuccess;
  Define(app, common, exitCode);
  try {
    Parse(app, arguments);
    return exitCode;
  } catch (const CLI::CallForHelp&) {
    Print(app.help());
    return ExitSuccess;
  } catch (const CLI::CallForVersion& version) {
    Print(std::string(version.what()) + "\n");
    return ExitSuccess;
  } catch (const CLI::ParseError& error) {
    return Refuse(app, UsageMessage(app, error));
  } catch (const EUsage& error) {
    return Refuse(app, error.Message());
  } catch (const EKxParseError& error) { // the project file, or the options store
    WriteError(u"kxhost: " + error.Message());
    return ExitInvalid;
  } catch (const std::exception& error) {
    WriteError(u"kxhost: " + MessageOf(error));
    return ExitFailed;
  }
}

// What was to be read and could not be written is no success.
int WithOutputWritten(int exitCode) {
  const std::u16string reason = platform::WriteFailure(platform::ConsoleStream::Output);
  if (reason.empty()) return exitCode;
  WriteError(u"kxhost: standard output could not be written. " + reason);
  return exitCode == ExitSuccess ? ExitFailed : exitCode;
}

// Where no exception may pass, as in parts of the command-line library, there is still something to be said.
[[noreturn]] void EndAtOnce() noexcept {
  try {
    if (const auto error = std::current_exception()) std::rethrow_exception(error);
  } catch (const std::bad_alloc&) {
    PrintOutOfMemory();
    std::_Exit(ExitFailed);
  } catch (const std::exception& error) {
    PrintError(std::string("kxhost: ") + error.what() + "\n");
  } catch (...) { // nothing is known of it
  }
  std::abort();
}

int MainOf(int argc, char** argv) {
  auto arguments = platform::CommandLineArguments(argc, argv);
  if (!arguments.empty()) arguments.erase(arguments.begin()); // the program's name
  return WithOutputWritten(Main(arguments));
}

} // namespace

} // namespace kx::cli

int main(int argc, char** argv) {
  kx::platform::IgnoreBrokenPipes();
  std::set_terminate(kx::cli::EndAtOnce);
  try {
    return kx::cli::MainOf(argc, argv);
  } catch (const std::bad_alloc&) { // from before the command, or from the words about its failure
    kx::cli::PrintOutOfMemory();
    return kx::cli::ExitFailed;
  }
}
