#include "package/solution/VSNETSLN.Lines.h"

#include "foundation/platform/TextFiles.h"
#include "foundation/text/Text.h"
#include "tests/solution/SolutionFolder.h"

namespace kx::tests {

namespace {

class Lines : public SolutionFolder {
protected:
  // Ill-formed bytes are decoded as late as their reader likes.
  Strings ReadBytes(std::string_view bytes) const {
    Write("a.sln", bytes);
    return ReadFile("a.sln");
  }
  Strings ReadFile(const char* name) const {
    TSolutionLines lines(Path(name), nullptr);
    Strings all;
    while (lines.Next())
      all.push_back(text::ToUtf8(text::FromUtf8(lines.Line())));
    return all;
  }
  // With a buffer that no file before has made larger: one that such a line needs is not used again.
  Strings ReadAnew(std::string_view bytes) const {
    EXPECT_EQ(ReadFile("long.sln").size(), 1U);
    return ReadBytes(bytes);
  }
};

// What the lines of a file are when the whole of it is decoded first.
Strings PlainReading(std::string_view bytes) {
  const std::u16string text = platform::DecodeUtf8OrAnsi(bytes);
  Strings lines;
  for (const std::u16string_view line : text::SplitLines(text))
    if (!lines.empty() || !line.empty()) lines.push_back(text::ToUtf8(line));
  return lines;
}

TEST_F(Lines, EndInEveryWay) {
  const std::tuple<const char*, std::string_view, Strings> cases[] = {
      {"all line ends, an empty line inside", "\n\r\na\r\r\nb\nc\r", {"a", "", "b", "c"}},
      {"zero bytes are characters", {"a\0b\n", 4}, {{"a\0b", 3}}},
      {"ANSI without a mark", "caf\xE9\n\x80", {"caf\xC3\xA9", "\xE2\x82\xAC"}},
      {"UTF-8 without a mark", "caf\xC3\xA9\na\n\xE2\x82\xAC", {"caf\xC3\xA9", "a", "\xE2\x82\xAC"}},
      {"ANSI to its last byte", "caf\xC3\xA9\na\xC3", {"caf\xC3\x83\xC2\xA9", "a\xC3\x83"}},
      {"UTF-16, big end first", {"\xFE\xFF\0\xE9\0\r\0b", 8}, {"\xC3\xA9", "b"}},
      {"a lone surrogate and half a unit", {"\xFF\xFE\x3D\xD8\n\0b", 7}, {"\xEF\xBF\xBD", "\xEF\xBF\xBD"}},
  };
  for (const auto& [what, bytes, expected] : cases)
    EXPECT_EQ(ReadBytes(bytes), expected) << what;
}

// The border of the buffer within, before and behind each piece.
TEST_F(Lines, AreWholeWhereTheBufferEnds) {
  Write("long.sln", std::string((std::size_t{1} << 20) + 1, 'x'));
  const std::pair<const char*, std::string_view> pieces[] = {{"a lone CR", "\r"},
                                                             {"two", "\r\r"},
                                                             {"a pair behind one", "\r\r\n"},
                                                             {"the first lone CR of two", "\rb\rc\n"},
                                                             {"a line feed first", "\n\r"},
                                                             {"four bytes of UTF-8", "\xF0\x9F\x98\x80\r"},
                                                             {"cut UTF-8", "\xF0\x9F\x98\n"},
                                                             {"ANSI", "\xE9\r"}};
  constexpr std::size_t bufferSize = std::size_t{128} << 10;
  for (const auto& [what, piece] : pieces)
    for (std::size_t before = bufferSize - piece.size(); before <= bufferSize; ++before)
      for (const std::size_t lineLength : {std::size_t{70}, bufferSize}) {
        std::string bytes(before, 'x');
        for (std::size_t at = lineLength; at < before; at += lineLength)
          bytes[at] = '\n';
        bytes += piece;
        for (const std::string_view behind : {"y", "\ny\xC3\xA9\r"}) {
          const std::string whole = bytes + std::string(behind);
          ASSERT_TRUE(ReadAnew(whole) == PlainReading(whole))
              << what << " at " << before << " before " << behind.size();
        }
      }
  for (const auto& [what, piece] : pieces)
    for (std::size_t before = bufferSize / 2 - 3; before <= bufferSize / 2; ++before) {
      const std::string wide = "\xFF\xFE" + text::ToUtf16LE(std::u16string(before, u'x') +
                                                            text::FromUtf8(piece) + u"y\n\u00E9\U0001F600");
      ASSERT_TRUE(ReadAnew(wide) == PlainReading(wide)) << what << " of UTF-16 at " << before;
    }
}

} // namespace

} // namespace kx::tests
