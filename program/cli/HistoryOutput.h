// The answers of the history as a person reads them.
#pragma once

#include "program/cli/Palette.h"
#include "program/history/Questions.h"

#include <span>
#include <string>

namespace kx::cli {

std::string RunLines(std::span<const history::TRememberedRun> runs, const TPalette& palette);
std::string DetailLines(const history::TRememberedDetails& details, const TPalette& palette);
std::string TestLines(std::span<const history::TTestHistory> tests, const TPalette& palette);
std::string KnownFindingLines(std::span<const history::TKnownFinding> findings, const TPalette& palette);
std::string TimeLines(std::span<const history::TUsualTime> times, const TPalette& palette);

} // namespace kx::cli
