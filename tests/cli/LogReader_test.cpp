#include "program/cli/LogReader.h"

#include "foundation/text/Exceptions.h"
#include "tests/support/Failure.h"
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

TEST_F(LogReader, FindsTheEncodingOfConsolesAndRedirectionsUnlessOneIsNamed) {
  using namespace std::string_literals;
  const std::tuple<const char*, std::u16string_view, std::string, std::u16string> cases[] = {
      // the lines, each with its end
      {"UTF-8", u"", "\xC3\xA9\xC3\xA8\n", u"éè|"},
      {"UTF-8 with its mark", u"", "\xEF\xBB\xBF.\n", u".|"},
      {"UTF-16 little-endian", u"", "\xFF\xFE.\0\n\0\xE9\0\r\0\n\0"s, u".|é|"},
      {"UTF-16 big-endian", u"", "\xFE\xFF\0a\0\n\x0A\x0A\0b"s, u"a|\u0A0Ab|"},
      {"Windows-1252", u"", "\xE9\x63hou\xE9\n", u"échoué|"},
      {"console page 850", u"", "\x82\x63hou\x82\n", u"échoué|"},
      {"one odd byte makes the whole file ANSI", u"", "\xC3\xA9 ok\n\xE9\xE8\xE0\n", u"Ã© ok|éèà|"},
      {"empty", u"", "", u""},
      {"empty lines, and a lone CR", u"", "a\r\n\r\nb\rc\nd", u"a||b\rc|d|"},
      {"a console page by its name", u"cp850", "\x82\n", u"é|"},
      {"another", u"Windows-1252", "\x82\n", u"\u201A|"},
      {"by its number", u"1250", "\xE8\n", u"č|"},
  };
  for (const auto& [name, encoding, bytes, expected] : cases) {
    std::u16string lines;
    for (const auto& line : Read(bytes, encoding))
      lines += line + u"|";
    EXPECT_EQ(lines, expected) << name;
  }
  EXPECT_THROW(Read("a", u"klingon"), EKxException);
  EXPECT_THROW(Read("a", u"cp99999"), EKxException);
}

TEST_F(LogReader, ReadsLinesThatSpanManyBlocks) {
  const std::u16string long1(3'000'000, u'x'), long2(2'500'001, u'y');
  EXPECT_EQ(Read("a\n" + text::ToUtf8(long1) + "\n" + text::ToUtf8(long2) + "\nb\n"),
            (TLines{u"a", long1, long2, u"b"}));
}

TEST_F(LogReader, AMissingFileIsNamed) {
  EXPECT_NE(
      tests::FailureOf([] { ForEachLogLine(u"/nowhere/build.log", u"", {}); }).find("/nowhere/build.log"),
      std::string::npos);
}

} // namespace
} // namespace kx::cli
