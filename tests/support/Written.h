// What a writer gives piece by piece, as one text.
#pragma once

#include "foundation/platform/Spool.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace kx::tests {

// By a function that takes a receiver of UTF-8, and may fail.
template <typename TWrite>
std::string Written(const TWrite& write) {
  std::string all;
  const platform::PutBytes put = [&all](std::string_view bytes) -> platform::Status {
    all += bytes;
    return platform::Done{};
  };
  EXPECT_TRUE(write(put));
  return all;
}

inline std::size_t CountOf(std::string_view piece, std::string_view text) {
  std::size_t count = 0;
  for (std::size_t at = text.find(piece); at != text.npos; at = text.find(piece, at + piece.size()))
    ++count;
  return count;
}

} // namespace kx::tests
