// What all subcommands share: the common options of the command line, and the host they open.
#pragma once

#include "foundation/platform/StopSignal.h"
#include "program/cli/Output.h"
#include "program/runner/DotNetInfo.h"
#include "program/runner/OptionsStore.h"
#include "program/runner/Run.h"
#include "program/runner/ServiceRegistry.h"
#include "program/runner/WebSites.h"

#include <span>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace kx::cli {

// Exit codes of kxhost.
inline constexpr int ExitSuccess = 0;
inline constexpr int ExitFailed = 1;
inline constexpr int ExitUsage = 2;
inline constexpr int ExitInvalid = 3; // project file or validation
inline constexpr int ExitStopped = 130;

enum class TVerbosity { Quiet, Minimal, Normal, Detailed, Diagnostic };
enum class TColorChoice { Auto, Always, Never };

// Texts are UTF-8 as the command-line library delivers them.
struct TCommonOptions {
  std::string OptionsFile;
  std::vector<std::string> Overrides;
  std::vector<std::string> Plugins;
  std::vector<std::string> Drives;
  std::string LogFile;
  std::string JUnitFile;
  std::string ReportFile;
  bool DryRun = false;
  std::string Ci; // a name of program/report/CiDialect.h, or "auto"
  TVerbosity Verbosity = TVerbosity::Normal;
  TColorChoice Color = TColorChoice::Auto;
};

// The command line is wrong: exit code ExitUsage.
class EUsage : public EKxException {
public:
  using EKxException::EKxException;
};

// "a, b or c".
std::u16string ListOf(std::span<const std::u16string> names, std::u16string_view lastWord);
// The position of the name that an option was given, letter case ignored. Raises EUsage that says them all.
std::size_t RequireChoice(std::u16string_view option, std::u16string_view text,
                          std::span<const std::u16string_view> names);

// What an editor answers to property pages. Both or none; not owned.
struct TDesignServices {
  IKxDesignService* Design = nullptr;
  IKxPropertySetDesignServices* PropertySets = nullptr;
};

// Raises EUsage for what is no drive.
void MapDrives(const std::vector<std::string>& drives);

// The host of one invocation: options store, services and plug-ins. Made once.
class THostSession {
public:
  // Raises EKxException for a broken options file or plug-in, EUsage for wrong options.
  explicit THostSession(const TCommonOptions& options, const TDesignServices& design = {});
  ~THostSession();
  THostSession(const THostSession&) = delete;
  THostSession& operator=(const THostSession&) = delete;

  TOptionsStore& Store() { return store_; }
  TServiceRegistry& Services() { return registry_; }
  platform::StopSignal& Stop() { return stop_; }
  std::u16string KeyFile() const; // beside the options store
  // What is shown nowhere, by the console and by the runs of this host.
  const std::shared_ptr<TSecretMask>& Secrets() const { return secrets_; }
  // Settings that the options objects filled in by themselves; a failure is reported and not fatal.
  void SaveOptions();

private:
  void CheckOverrides(const std::vector<std::string>& assignments);

  TOptionsStore store_;
  TServiceRegistry registry_{store_};
  TDotNetInfo dotNet_{store_};
  TWebSites webSites_{store_};
  platform::StopSignal stop_;
  std::shared_ptr<TSecretMask> secrets_ = std::make_shared<TSecretMask>();
};

// Runs what the runner's project holds with all sinks of the common options, prints the end table, and gives
// the exit code.
int RunProject(TProjectRunner& runner, THostSession& session, const TCommonOptions& options);

// NAME or NAME=VARIABLE: where a secret comes from (program/cli/SecretArguments.h).
struct TSecretArgument {
  bool IsVariable; // --set-secret; else --secret
  std::string Text;
};

// What run, do and edit take for their runs.
struct TRunArguments {
  std::vector<TSecretArgument> Secrets = {};
  std::vector<std::string> Variables;
  std::vector<std::string> Rules;
};
void DefineRunArguments(CLI::App& command, TRunArguments& arguments);
void DefineVariables(CLI::App& command, std::vector<std::string>& assignments);
std::vector<TProjectVariable> ParseVariables(const std::vector<std::string>& assignments); // raises EUsage
// Raises EUsage.
TRunSettings RunSettingsOf(const TRunArguments& arguments, const THostSession& session, bool dryRun);

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
