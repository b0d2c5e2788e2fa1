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

} // namespace kx
