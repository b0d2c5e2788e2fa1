// What comes behind what it needs.
#pragma once

#include <cstddef>
#include <vector>

namespace kx {

// The places from 0 to `count`, each behind those that it needs, level by level; `needsOf(place)` is a range
// of TActionNeed. What stands in a circle of needs, or behind one, is left out.
template <typename TNeedsOf>
std::vector<std::size_t> OrderByNeeds(std::size_t count, const TNeedsOf& needsOf) {
  std::vector<std::size_t> pending(count), order;
  std::vector<std::vector<std::size_t>> behind(count);
  for (std::size_t i = 0; i < count; ++i) {
    for (const auto& need : needsOf(i)) {
      behind[need.Action].push_back(i);
      ++pending[i];
    }
    if (pending[i] == 0) order.push_back(i);
  }
  for (std::size_t at = 0; at < order.size(); ++at)
    for (const std::size_t place : behind[order[at]])
      if (--pending[place] == 0) order.push_back(place);
  return order;
}

} // namespace kx
