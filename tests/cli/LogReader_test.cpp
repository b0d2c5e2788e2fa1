#include "program/cli/LogReader.h"

#include "foundation/text/Exceptions.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kx::cli {
namespace {

using TLines = std::vector<std::u16string>;

class LogReader : public testing::Test {
protected:
  TLines Read(const std::string& bytes, std::u16string_view encoding = u"") {
    const std::u16string file = folder_.Write("build.log", bytes);
    TLines lines;
    ForEachLogLine(file, encoding, [&lines](std::u16string_view line) { lines.emplace_back(line); });
    return lines;
  }

  tests::TTemporaryFolder folder_;
};

TEST_F(LogReader, FindsTheEncodingOfConsolesAndRedirections) {
  struct TCase {
    const char* What;
    std::string Bytes;
    TLines Lines;
  };
  const TCase cases[] = {
      {"UTF-8", "\xC3\xA9\xC3\xA8\n", {u"éè"}},
      {"UTF-8 with its mark",
       "\xEF\xBB\xBF"
       "a\n",
       {u"a"}},
      {"UTF-16 little-endian",
       std::string("\xFF\xFE"
                   "a\0\n\0\xE9\0\r\0\n\0",
                   12),
       {u"a", u"é"}},
      {"UTF-16 big-endian", std::string("\xFE\xFF\0a\0\n\x0A\x0A\0b", 10), {u"a", u"\u0A0Ab"}},
      {"Windows-1252",
       "\xE9"
       "chou\xE9\n",
       {u"échoué"}},
      {"console page 850",
       "\x82"
       "chou\x82\n",
       {u"échoué"}},
      {"one odd byte makes the whole file ANSI", "\xC3\xA9 ok\n\xE9\xE8\xE0\n", {u"Ã© ok", u"éèà"}},
      {"empty", "", {}},
  };
  for (const auto& row : cases)
    EXPECT_EQ(Read(row.Bytes), row.Lines) << row.What;
}

TEST_F(LogReader, SplitsAtLineFeedsAndKeepsEmptyLines) {
  EXPECT_EQ(Read("a\r\n\r\nb\nc"), (TLines{u"a", u"", u"b", u"c"}));
  EXPECT_EQ(Read("a\rb\n"), (TLines{u"a\rb"}));
}

TEST_F(LogReader, ANamedEncodingWins) {
  EXPECT_EQ(Read("\x82\n", u"cp850"), TLines{u"é"});
  EXPECT_EQ(Read("\x82\n", u"Windows-1252"), TLines{u"\u201A"});
  EXPECT_EQ(Read("\xE8\n", u"1250"), TLines{u"č"});
  EXPECT_THROW(Read("a", u"klingon"), EKxException);
  EXPECT_THROW(Read("a", u"cp99999"), EKxException);
}

TEST_F(LogReader, ReadsLinesThatSpanManyBlocks) {
  const std::string long1(3'000'000, 'x');
  const std::string long2(2'500'001, 'y');
  const TLines lines = Read("a\n" + long1 + "\n" + long2 + "\nb\n");
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_EQ(lines[1].size(), long1.size());
  EXPECT_EQ(lines[2].size(), long2.size());
  EXPECT_EQ(lines[3], u"b");
}

TEST_F(LogReader, AMissingFileIsNamed) {
  try {
    ForEachLogLine(u"/nowhere/build.log", u"", [](std::u16string_view) {});
    FAIL() << "there is no such file";
  } catch (const EKxException& error) {
    EXPECT_NE(error.Message().find(u"/nowhere/build.log"), std::u16string::npos);
  }
}

} // namespace
} // namespace kx::cli
