// How continuous-integration systems want the log of a run: groups that fold, and problems that they show
// beside the source. Each function gives whole lines in UTF-8, without the last line end; empty: nothing is
// printed.
//
// Sources: "Workflow commands for GitHub Actions", "Logging commands" of Azure Pipelines, "Service messages"
// of TeamCity, "Custom collapsible sections" of GitLab CI/CD.
#pragma once

#include "runner/Events.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kx {

struct TCiDialect {
  std::string_view Name; // as users choose it
  // Set by the system in each of its jobs.
  std::u16string_view Variable;
  // Groups within groups are shown; else only the outermost fold.
  bool NestedGroups;
  // `id` is the same for the end of a group, and no other group's; `time` in seconds since 1970.
  std::string (*GroupStart)(std::u16string_view title, int id, std::int64_t time);
  std::string (*GroupEnd)(std::u16string_view title, int id, std::int64_t time);
  // A warning or an error; `root` is the folder that the system's own paths are seen from, or empty. Empty:
  // an ordinary line.
  std::string (*Problem)(std::u16string_view text, bool isError, std::u16string_view root);
  // A line of a tool or a file that the system would take for a command of ours: the same for the eye, with
  // an invisible character (U+200B) inside.
  std::u16string (*Harmless)(std::u16string_view line);
  std::u16string_view RootVariable; // names the folder for Problem; may be empty
};

// "github", "azure", "teamcity", "gitlab"; null for another name.
const TCiDialect* FindCiDialect(std::string_view name);
// The system whose job this process is; null when it is none that is known.
const TCiDialect* DetectCiDialect();

} // namespace kx
