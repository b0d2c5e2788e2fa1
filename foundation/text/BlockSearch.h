// A search that looks at whole blocks without a branch a character, which the compiler makes vector
// instructions of: for characters that most long texts do not hold.
#pragma once

#include <cstddef>
#include <string_view>

namespace kx::text {

// The first of either character at or after `from`, else the size.
inline std::size_t FindEither(std::u16string_view text, char16_t a, char16_t b, std::size_t from = 0) {
  constexpr std::size_t block = 32;
  const char16_t* data = text.data();
  for (; from + block <= text.size(); from += block) {
    char16_t found = 0; // as wide as the characters, so that many are compared at once
    for (std::size_t i = 0; i < block; ++i)
      found |= static_cast<char16_t>((data[from + i] == a) | (data[from + i] == b));
    if (found != 0) break;
  }
  while (from < text.size() && data[from] != a && data[from] != b)
    ++from;
  return from;
}

} // namespace kx::text
