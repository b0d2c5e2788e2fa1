// What is said about the name of a solution configuration that the solution does not have.
#pragma once

#include "package/solution/VSNETSLN.h"

#include <span>
#include <string>
#include <string_view>

namespace kx {

// For a name that stands for none of the solution's configurations: says so and offers those that it has, the
// nearest first.
std::u16string MissingConfiguration(const IVSDotNetSolution& solution, std::u16string_view wanted);

// `wanted` is no configuration of the solution and matched others as an expression. Where it looks like a
// name all the same ("Release|x64": in an expression the bar means "or"), says which ones it matches and how
// to ask for the name alone; empty for what was plainly written as an expression.
std::u16string GuessedConfiguration(const IVSDotNetSolution& solution, std::u16string_view wanted,
                                    std::span<const std::u16string> matched);

// Whether a tool that is given the whole solution may take the name all the same: devenv and MSBuild choose a
// platform themselves for a configuration without one, and know what a solution without any configurations
// means.
bool MayToolKnowConfiguration(const IVSDotNetSolution& solution, std::u16string_view wanted);

} // namespace kx
