// Structured output of MSBuild: the logger assembly TandemorLogger writes one line an event, this helper
// turns the lines back into messages, groups and counts.
#pragma once

#include "contract/Actions.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

// Verbosity, by the ordinals of MSBuild's own levels.
enum class TMSLogLevel { llQuiet, llMinimal, llNormal, llDetailed, llDiagnostic };
const TKxEnumeration& MSLogLevelEnumeration();

// Who splits the command line into arguments: MSBuild itself, which honours quotes around ";" (Windows), or
// somebody before it, who takes the quotes away (every other system).
enum class TCommandLineReader { MSBuildItself, SplitArguments };

// One value of an MSBuild command line, quoted where it has blanks or quotes. A ";" would separate two
// properties: it is kept inside quotes for MSBuild itself, and becomes %3B otherwise, which every
// MSBuild-compatible tool turns back. A backslash before the closing quote is doubled. Without a reader: the
// one of this system.
std::u16string QuoteMSBuildArg(std::u16string_view value, TCommandLineReader reader);
std::u16string QuoteMSBuildArg(std::u16string_view value);

// False for what MSBuild and xbuild make to build a solution: the solution itself, and the wrappers that
// stand in for projects (App.vcproj.metaproj).
bool IsProjectOfItsOwn(std::u16string_view file);

// Belongs to one action, which outlives it.
class TKxMSBuildStructuredOutputHelper {
public:
  explicit TKxMSBuildStructuredOutputHelper(TCustomKxAction& action);

  // The file name of the logger assembly for a framework ("2.0", "3.5", "4.0"): one assembly serves all.
  std::u16string GetLoggerAssembly(std::u16string_view frameworkVersion) const;

  // Begins an execution over `solutionFile`; without `structured` lines are passed on unread.
  void Start(std::u16string_view solutionFile, bool structured);
  void ProcessLine(std::u16string_view line); // lines that no logger wrote become plain messages
  void BeginRun() { built_.reset(); }
  void EndRun(); // closes the groups that the tool left open
  // How many projects the tool has built in this run, the solution not among them; nothing when its logger
  // did not say.
  std::optional<std::int64_t> BuiltProjects() const { return built_; }

  std::int32_t ErrorCount() const { return errors_; }
  std::int32_t WarningCount() const { return warnings_; }
  void ResetCounts(); // the counts of one configuration are those since the last

private:
  struct TEvent;
  static bool Read(std::u16string_view line, TEvent& event);
  void Handle(const TEvent& event);
  void SendDiagnostic(const TEvent& event, TStatusTag status);
  void OpenProject(const TEvent& event);
  void CloseProject(const TEvent& event);
  std::u16string ShortName(std::u16string_view file) const;

  struct TOpenProject {
    std::u16string File;
    bool Finished = false;
    bool Succeeded = true;
  };
  TCustomKxAction& action_;
  std::u16string solutionFolder_;
  bool structured_ = true;
  std::int32_t errors_ = 0;
  std::int32_t warnings_ = 0;
  std::optional<std::int64_t> built_;
  std::vector<TOpenProject> open_;
};

} // namespace kx
