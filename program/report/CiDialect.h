// How continuous-integration systems want the log of a run: groups that fold, and problems that they show
// beside the source.
//
// Sources: "Workflow commands for GitHub Actions", "Logging commands" of Azure Pipelines, "Service messages"
// of TeamCity, "Custom collapsible sections" of GitLab CI/CD.
#pragma once

#include "program/findings/Finding.h"
#include "program/runner/Results.h"
#include "program/runner/TestSuites.h"

#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kx {

// A whole line that a system obeys, without its end. Only the dialects make one, of texts that they have made
// harmless; all else that is printed passes TCiGuard.
class TCiCommand {
public:
  TCiCommand() = default;
  std::string_view Line() const { return line_; }
  bool IsEmpty() const { return line_.empty(); } // an ordinary line says it

private:
  friend struct TCiCommands;
  explicit TCiCommand(std::string line) : line_(std::move(line)) {}

  std::string line_; // UTF-8
};

struct TCiDialect {
  std::string_view Name; // as users choose it
  // Set by the system in each of its jobs.
  std::u16string_view Variable;
  // Groups within groups are shown; else only the outermost fold.
  bool NestedGroups;
  // `id` is the same for the end of a group, and no other group's; `time` in seconds since 1970.
  TCiCommand (*GroupStart)(std::u16string_view title, int id, std::int64_t time);
  TCiCommand (*GroupEnd)(std::u16string_view title, int id, std::int64_t time);
  // A warning or an error; `root` is the folder that the system's own paths are seen from, or empty.
  TCiCommand (*Problem)(const TFinding& finding, std::u16string_view root);
  std::u16string_view RootVariable; // names the folder for Problem; may be empty
  // Of one severity; the system shows no more of a step.
  int MostProblems = std::numeric_limits<int>::max();
  // A run of unit tests, and all that was wrong at the end of a run, as results of their own; null: the
  // system takes them from files, or not at all.
  std::vector<TCiCommand> (*Tests)(const TReportedSuite& suite) = nullptr;
  std::vector<TCiCommand> (*Findings)(std::span<const TFinding> findings, std::u16string_view root) = nullptr;
  // Names the file that a page beside the log (CiSummary) is appended to, or, where Summary is set, the
  // folder for a file of it, which Summary then hands over; empty: there is none.
  std::u16string_view SummaryVariable = {};
  TCiCommand (*Summary)(std::u16string_view file) = nullptr;
};

// Markdown: how the run ended, and its warnings and errors, the most severe first; so many that the systems
// take them.
std::string CiSummary(const TRunReport& report);

// "github", "azure", "teamcity", "gitlab"; null for another name.
const TCiDialect* FindCiDialect(std::string_view name);
// The system whose job this process is; null when it is none that is known.
const TCiDialect* DetectCiDialect();
// By name, or "auto" for the one of this job; null for none.
const TCiDialect* ChooseCiDialect(std::string_view name);
// The folder that the system's paths are seen from; empty when it names none.
std::u16string CiRootOf(const TCiDialect& dialect);

} // namespace kx
