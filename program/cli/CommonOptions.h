// The options that several commands share, and which command uses which.
#pragma once

#include "program/history/Place.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
}

namespace kx::cli {

enum class TVerbosity { Quiet, Minimal, Normal, Detailed, Diagnostic };
enum class TColorChoice { Auto, Always, Never };

// Texts are UTF-8 as the command-line library delivers them.
struct TCommonOptions {
  std::u16string CommandLine; // the whole one
  std::string OptionsFile;
  std::vector<std::string> Overrides;
  std::vector<std::string> Plugins;
  std::vector<std::string> Drives;
  std::string LogFile;
  std::map<std::string, std::string>
      Reports; // the files of those that are wanted, by the options of their formats
  bool DryRun = false;
  std::string HistoryFile;
  bool NoHistory = false;
  std::string Ci; // a name of program/report/CiDialect.h, or "auto"
  TVerbosity Verbosity = TVerbosity::Normal;
  TColorChoice Color = TColorChoice::Auto;
};

// Nothing is remembered of a dry run.
history::TPlace HistoryOf(const TCommonOptions& options);

// Takes all of them, in front of the command and behind it.
void DefineCommonOptions(CLI::App& app, TCommonOptions& options);
// What the help of a command says of those that it uses.
std::string CommonOptionsHelp(const CLI::App& app, std::string_view command);
bool IsCommonOptionOf(std::string_view option, std::string_view command); // both by their names
// Raises EUsage for one that was given and that the command does not use.
void CheckCommonOptions(const CLI::App& app, std::string_view command);

} // namespace kx::cli
