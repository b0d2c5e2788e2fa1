// What kxhost check found, for people and for programs.
#pragma once

#include "program/cli/CommonOptions.h"
#include "program/findings/Finding.h"

#include <span>

namespace kx::cli {

// Grouped by file, one line each, and the counts; with --ci problems as the system marks them.
void ShowFindings(std::span<const TFinding> findings, std::size_t files, const TCommonOptions& common);
void WriteFindingsJson(std::span<const TFinding> findings, std::size_t files);

} // namespace kx::cli
