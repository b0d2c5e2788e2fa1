// The lines in which devenv and MSBuild sum up a run, in English and in French. Letter case counts.
//
// Each function answers exactly as its expression would, but in time linear in the line whatever it holds. \s
// and \d are ASCII.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace kx {

struct TSummaryCounts {
  std::int32_t Errors = 0;
  std::int32_t Warnings = 0;
};

// : \d+ succeeded, \d*[1-9]\d* failed, \d+ skipped
bool IsFailureSummary(std::u16string_view line);
// (?:complete|terminée)\s--\s(\d+)\s\w+,\s(\d+)
std::optional<TSummaryCounts> ReadCountSummary(std::u16string_view line);
// (\d+)\s(?:Error\(s\)|Erreur\(s\)) and (\d+)\s(?:Warning\(s\)|Avertissement\(s\))
std::optional<std::int32_t> ReadErrorCount(std::u16string_view line);
std::optional<std::int32_t> ReadWarningCount(std::u16string_view line);
// A number too large to be held counts as 0.

// The line with which devenv ends, in any language ("========== Build: 1 succeeded, 0 failed, 2 up-to-date, 0
// skipped =========="; the oldest without the frame, in English): whether it counts a project that was not
// skipped. Those stand last.
std::optional<bool> ReadBuildSummary(std::u16string_view line);
// The line with which MSBuild and xbuild begin a project (Project "App.csproj" (Build target(s)):): True, and
// False for one that begins the solution. A project that another one builds stands last.
std::optional<bool> ReadProjectLine(std::u16string_view line);

} // namespace kx
