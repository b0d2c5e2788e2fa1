// How continuous-integration systems want the log of a run: groups that fold, and problems that they show
// beside the source.
//
// Sources: "Workflow commands for GitHub Actions", "Logging commands" of Azure Pipelines, "Service messages"
// of TeamCity, "Custom collapsible sections" of GitLab CI/CD.
#pragma once

#include "program/findings/Finding.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

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
};

// "github", "azure", "teamcity", "gitlab"; null for another name.
const TCiDialect* FindCiDialect(std::string_view name);
// The system whose job this process is; null when it is none that is known.
const TCiDialect* DetectCiDialect();

} // namespace kx
