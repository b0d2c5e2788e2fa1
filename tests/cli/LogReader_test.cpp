#include "program/cli/LogReader.h"

#include "foundation/text/Encoding.h"
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
      {"by its maker's name", u"IBM850", "\x82\n", u"é|"},
      {"UTF-8 by its names", u"utf8", "\xC3\xA9", u"é|"},
      {"whatever is in it", u"UTF-8", "\xE9\xC3\xA9", u"\uFFFDé|"},
      {"UTF-16 by its names", u"utf-16", ".\0\n\0"s, u".|"},
      {"and its order", u"UTF-16LE", "\xE9\0"s, u"é|"},
      {"the other order", u"utf-16be", "\0\xE9\0\n"s, u"é|"},
  };
  for (const auto& [name, encoding, bytes, expected] : cases) {
    std::u16string lines;
    for (const auto& line : Read(bytes, encoding))
      lines += line + u"|";
    EXPECT_EQ(lines, expected) << name;
  }
  for (const auto* name : {u"klingon", u"cp99999", u"0", u"cp-1", u"cp", u"windows-x"})
    EXPECT_THROW(Read("a", name), EKxException) << text::ToUtf8(name);
  EXPECT_EQ(
      tests::FailureOf([] { RequireEncoding(u"x"); }),
      "Unknown encoding x: say utf-8, utf-16le, utf-16be, or a code page such as windows-1252 or cp850.");
}

TEST_F(LogReader, ReadsLinesThatSpanManyBlocks) {
  const std::u16string long1(3'000'000, u'x'), long2(2'500'001, u'y');
  EXPECT_EQ(Read("a\n" + text::ToUtf8(long1) + "\n" + text::ToUtf8(long2) + "\nb\n"),
            (TLines{u"a", long1, long2, u"b"}));
}

// Bytes of two letters that are those of a line end.
TEST_F(LogReader, TakesNoLettersOfUtf16ForLineEnds) {
  std::u16string letters;
  for (int i = 0; i < 600'000; ++i)
    letters += u"\u0A41\u4100";
  const std::u16string text = u"first\n" + letters + u"\nlast";
  std::string swapped = text::ToUtf16LE(text);
  for (std::size_t i = 0; i < swapped.size(); i += 2)
    std::swap(swapped[i], swapped[i + 1]);
  const TLines lines{u"first", letters, u"last"};
  EXPECT_TRUE(Read("\xFF\xFE" + text::ToUtf16LE(text)) == lines);
  EXPECT_TRUE(Read("\xFE\xFF" + swapped) == lines);
}

TEST_F(LogReader, AMissingFileIsNamed) {
  EXPECT_NE(
      tests::FailureOf([] { ForEachLogLine(u"/nowhere/build.log", u"", {}); }).find("/nowhere/build.log"),
      std::string::npos);
}

} // namespace
} // namespace kx::cli
