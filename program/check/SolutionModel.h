// A solution as the package orders it, made of what check has read.
#pragma once

#include "package/solution/VSNETSLN.h"
#include "program/check/SolutionFacts.h"

#include <memory>
#include <vector>

namespace kx::check {

// The projects without their files, in the order of the solution; on request with the dependencies that the
// Global section adds.
std::vector<std::shared_ptr<IVSDotNetProject>> ModelOf(const TSolutionFacts& facts, bool withOldNeeds);

std::u16string Shortlist(const std::vector<std::u16string>& names); // "a, b and 3 more"

} // namespace kx::check
