// The subcommands.
#pragma once

#include "program/cli/CommonOptions.h"

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
void DefineDo(CLI::App& command, const TCommonOptions& common, int& exitCode);
void DefineValidate(CLI::App& command, const TCommonOptions& common, int& exitCode);
void DefineInspect(CLI::App& command, const TCommonOptions& common, int& exitCode);
void DefineActions(CLI::App& command, const TCommonOptions& common, int& exitCode);
void DefineOptions(CLI::App& command, const TCommonOptions& common, int& exitCode);
void DefineEdit(CLI::App& command, const TCommonOptions& common, int& exitCode);

} // namespace kx::cli
