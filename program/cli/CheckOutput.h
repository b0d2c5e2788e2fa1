// What kxhost check found, for people and for programs.
#pragma once

#include "program/cli/CommonOptions.h"
#include "program/findings/Finding.h"

#include <string>
#include <vector>

namespace kx::cli {

struct TChecked {
  struct TMatch {
    std::u16string File;
    std::vector<std::u16string> Configurations; // that were asked for, and that the solution has
  };
  std::size_t Files = 0; // that were looked at
  std::vector<TMatch> Configurations;
  std::vector<TFinding> Findings;
};

// Grouped by file, one line each, and the counts; with --ci problems as the system marks them.
void ShowChecked(const TChecked& checked, const TCommonOptions& common);
void WriteCheckedJson(const TChecked& checked);

} // namespace kx::cli
