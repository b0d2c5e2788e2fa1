// Hashes that are the same in every build.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace kx::text {

// FNV-1a of the UTF-16 units, each as `unitOf` gives it: files and their names may hold it. No protection
// against texts that are made to collide.
template <typename TUnitOf = std::identity>
constexpr std::uint64_t StableHash(std::u16string_view text, const TUnitOf& unitOf = {}) {
  std::uint64_t hash = 14695981039346656037U;
  for (const char16_t unit : text)
    hash = (hash ^ static_cast<char16_t>(unitOf(unit))) * 1099511628211U;
  return hash;
}

} // namespace kx::text
