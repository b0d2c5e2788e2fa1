#include "platform/LineSplitter.h"

#include <gtest/gtest.h>
#include <vector>

namespace kx::platform {
namespace {

using Lines = std::vector<std::string>;

Lines LinesOf(std::string_view bytes, std::size_t blockSize, std::size_t limit) {
  Lines lines;
  LineSplitter splitter([&](std::string_view line) { lines.emplace_back(line); }, limit);
  for (; !bytes.empty(); bytes.remove_prefix(std::min(blockSize, bytes.size()))) {
    splitter.Feed(bytes.substr(0, blockSize));
  }
  splitter.Finish();
  return lines;
}

TEST(LineSplitter, GivesTheSameLinesWhereverTheBlocksEnd) {
  const struct {
    const char* Case;
    std::string_view Bytes;
    std::size_t Limit;
    Lines Expected;
  } rows[] = {
      {"nothing", "", 100, {}},
      {"both line ends", "a\nb\r\nc\n", 100, {"a", "b", "c"}},
      {"empty lines", "\n\r\n\n", 100, {"", "", ""}},
      {"a last line without an end", "a\nb", 100, {"a", "b"}},
      {"a lone CR ends nothing", "10%\r20%\r\nx\ry", 100, {"10%\r20%", "x\ry"}},
      {"only the CR before the LF goes", "a\r\r\n", 100, {"a\r"}},
      {"a long line in pieces", "abcdefgh\nij\n", 3, {"abc", "def", "gh", "ij"}},
      {"as long as the limit", "abc\nd\n", 3, {"abc", "d"}},
      {"no character is parted",
       "ab\xE2\x82\xAC"
       "cd\xC3\xA9"
       "e\n",
       4,
       {"ab",
        "\xE2\x82\xAC"
        "c",
        "d\xC3\xA9"
        "e"}},
      {"bytes that belong to no character",
       "\x80\x80\x80\x80\x80\x80\n",
       5,
       {"\x80\x80", "\x80\x80\x80\x80"}},
  };
  for (const auto& row : rows) {
    for (const std::size_t blockSize : {1U, 2U, 3U, 5U, 100U}) {
      EXPECT_EQ(LinesOf(row.Bytes, blockSize, row.Limit), row.Expected)
          << row.Case << ", blocks of " << blockSize;
    }
  }
}

} // namespace
} // namespace kx::platform
