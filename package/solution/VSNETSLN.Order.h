// The build order of projects.
#pragma once

#include "package/solution/VSNETSLN.h"

#include <span>
#include <vector>

namespace kx {

// Where each project goes: the positions of the given projects in their new order.
//
// The order is that of a plain search with exchanges: from the second project on, the first project that
// stands before another one and yet depends on it changes places with it, and the search begins anew. Builds
// rely on that very order, so it is kept; but after an exchange only positions that can have become wrong are
// looked at again.
//
// Raises EKxParseError for two projects that depend on each other. A longer circle makes the exchanges go on
// until `stop` is raised; then EKxException says so.
std::vector<std::size_t> OrderByDependancies(std::span<const std::shared_ptr<IVSDotNetProject>> projects,
                                             const TKxEvent* stop);

// What FindCircles finds, by the positions of the given projects.
std::vector<std::vector<std::size_t>>
CirclesAmong(std::span<const std::shared_ptr<IVSDotNetProject>> projects);

} // namespace kx
