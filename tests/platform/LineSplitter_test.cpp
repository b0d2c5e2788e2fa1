#include "foundation/platform/LineSplitter.h"

#include <gtest/gtest.h>
#include <vector>

namespace kx::platform {
namespace {

using Lines = std::vector<std::string>;

TEST(LineSplitter, GivesTheSameLinesWhereverTheBlocksEnd) {
  const std::tuple<const char*, std::string_view, std::size_t, Lines> rows[] = {
      {"both line ends and empty lines", "a\nb\r\n\n\r\nc", 100, {"a", "b", "", "", "c"}},
      {"a lone CR ends nothing", "10%\r20%\r\r\nx\ry\n", 100, {"10%\r20%\r", "x\ry"}},
      {"a long line in pieces", "abcdefgh\nij\n", 3, {"abc", "def", "gh", "ij"}},
      {"as long as the limit", "abc\nd\n", 3, {"abc", "d"}},
      {"no character is parted", "ab€cdée\n", 4, {"ab", "€c", "dée"}},
      {"bytes of no character", "\x80\x80\x80\x80\x80\x80\n", 5, {"\x80\x80", "\x80\x80\x80\x80"}},
  };
  for (const auto& [name, bytes, limit, expected] : rows)
    for (const std::size_t blockSize : {1U, 2U, 3U, 5U, 100U}) {
      Lines lines;
      LineSplitter splitter([&](std::string_view line) { lines.emplace_back(line); }, limit);
      for (std::size_t at = 0; at < bytes.size(); at += blockSize)
        splitter.Feed(bytes.substr(at, blockSize));
      splitter.Finish();
      EXPECT_EQ(lines, expected) << name << ", blocks of " << blockSize;
    }
}

} // namespace
} // namespace kx::platform
