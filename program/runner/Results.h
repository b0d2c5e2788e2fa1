// What became of a run and of its parts, in the words that every table, log and report uses.
#pragma once

#include "contract/Actions.h"
#include "program/findings/Finding.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

struct TPast;

enum class TResultKind {
  Succeeded,
  Failed,
  // A loop or a run that went on behind something that failed.
  FinishedWithFailures,
  Stopped,     // by the user
  Ignored,     // it failed, which the project says not to mind
  NothingToDo, // it ended well without having done anything
  WouldRun,    // in a dry run: nothing stands in its way
  Skipped,     // it was not run, for a reason that its row says
};

const char* WordOf(TResultKind kind);                             // "succeeded", "nothing to do"
std::optional<TResultKind> ReadResultKind(std::string_view word); // the reverse
TStatusTag StatusOf(TResultKind kind);
// Whether it counts as a success: for a run, that it ends with exit code 0.
bool IsSuccess(TResultKind kind);

// "Build (Lib)": an action with the pass of the loop that it runs in; without one the name alone.
std::u16string NameWithPass(const std::u16string& name, const std::u16string& pass);

struct TProblemCounts {
  std::int64_t Errors = 0;
  std::int64_t Warnings = 0;

  TProblemCounts& operator+=(const TProblemCounts& other);
  friend bool operator==(const TProblemCounts&, const TProblemCounts&) = default;
};

struct TTestCounts {
  std::int64_t Passed = 0;
  std::int64_t Failed = 0;
  std::int64_t NotRun = 0;

  std::int64_t Total() const { return Passed + Failed + NotRun; }
  TTestCounts& operator+=(const TTestCounts& other);
};

// What became of one project of a solution, as the tool that built it told it.
struct TProjectResult {
  std::u16string Project = {};       // its name in the solution, else that of its file
  std::u16string Configuration = {}; // its own one, "Release|AnyCPU"; empty when the tool did not say it
  TResultKind Result = TResultKind::Failed;
  TProblemCounts Counts = {};
  std::chrono::milliseconds Began{0}; // after the run began
  std::chrono::milliseconds Elapsed{0};
};

// What became of one configuration that an action built.
struct TConfigurationResult {
  std::u16string Configuration = {}; // "Release|Any CPU"
  TResultKind Result = TResultKind::Failed;
  std::u16string Reason = {}; // the rule that it broke; else empty
  TProblemCounts Counts = {};
  std::chrono::milliseconds Began{0}; // after the run began
  std::chrono::milliseconds Elapsed{0};
  std::vector<TProjectResult> Projects = {}; // in the order built; empty when the tool did not tell them
};

// One execution of one action; an action inside a loop has one a pass. The counts are of everything in it:
// its configurations, and for a loop what it ran.
struct TActionResult {
  std::u16string Name = {}; // the user's own, else that of the type
  std::u16string Type = {}; // the identifier, "DEVENV"
  std::u16string Pass = {}; // the value of the innermost loop's variable; empty outside a loop
  int Nesting = 0;          // loops around it
  bool IsLoop = false;
  TResultKind Result = TResultKind::Failed;
  std::u16string Reason = {}; // the rule that it broke, or one of those below; else empty
  TProblemCounts Counts = {};
  TTestCounts Tests = {};
  std::chrono::milliseconds Began{0}; // after the run began
  std::chrono::milliseconds Elapsed{0};
  std::vector<TConfigurationResult> Configurations = {}; // in the order built; empty for other actions
};

// The reason of an action whose settings were refused, so that it was not executed.
inline constexpr std::u16string_view InvalidSettings = u"settings";
// The reasons of actions that were skipped.
inline constexpr std::u16string_view ConditionNotMet = u"condition";
inline constexpr std::u16string_view NeedsNotMet = u"needs";      // what it needs has not succeeded
inline constexpr std::u16string_view NotNeededAgain = u"resumed"; // an earlier run has done it
// The reasons of actions that were ended from here.
inline constexpr std::u16string_view TimeLimitReached = u"time-limit";
inline constexpr std::u16string_view IdleLimitReached = u"idle-limit";

// What a run ran on and with. What could not be found out is empty.
struct TRunSurroundings {
  std::u16string Machine = {};            // its name
  std::u16string System = {};             // "Debian GNU/Linux 12", "Windows 10.0"
  std::u16string Commit = {};             // of the working copy that the project lies in
  std::u16string Branch = {};             // of it
  std::u16string CommandLine = {};        // of this program, secrets masked
  std::vector<std::u16string> Tools = {}; // "xbuild 14.0", in the order of their first use
};

// A run of one part of a project, whose other parts ran by themselves.
struct TPartOfRun {
  std::size_t Place = 0; // of its action among the outermost ones of the project
  int Pass = 0;          // of that action, a loop, from 1; 0: all of it
};

struct TRunReport {
  TResultKind Result = TResultKind::Failed;
  // Settings were refused before any action (a loop around it apart) was executed.
  bool NothingExecuted = false;
  // Actions of the project were not chosen, had been done before, or were not got to.
  bool IsPartial = false;
  TProblemCounts Counts = {};
  TTestCounts Tests = {};
  std::chrono::milliseconds Elapsed{0};
  std::vector<TActionResult> Actions = {}; // in the order in which they began
  std::vector<TFinding> Findings = {};     // all that was wrong, each thing once, in the order of its coming
  std::int64_t MoreFindings = 0;           // that were too many to be kept
  std::u16string Root = {};                // the folder that their files are seen from; empty without any
  std::u16string File = {};                // the build project; empty for a run without one
  std::chrono::system_clock::time_point Began = {};
  TRunSurroundings Surroundings = {};
  std::optional<TPartOfRun> Part = {};    // nothing: it is a run of the whole
  std::shared_ptr<const TPast> Past = {}; // null without a history
};

bool HasFindings(const TRunReport& report); // of any severity, those that were not kept among them

} // namespace kx
