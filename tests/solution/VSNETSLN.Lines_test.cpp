#include "solution/VSNETSLN.Lines.h"

#include "platform/TextFiles.h"
#include "tests/solution/SolutionFolder.h"
#include "text/Text.h"

#include <random>

namespace kx::tests {

namespace {

class Lines : public SolutionFolder {
protected:
  Strings Read(TSolutionLines& lines) const {
    Strings all;
    while (lines.Next())
      all.emplace_back(lines.Line());
    EXPECT_EQ(lines.Index(), static_cast<std::int64_t>(all.size()));
    return all;
  }
  // Only the lines that begin with the letter, each behind its number.
  Strings ReadBeginningWith(char first) const {
    TSolutionLines lines(Path("a.sln"), nullptr);
    Strings found;
    if (!lines.Next()) return found;
    while (lines.NextBeginningWith(first))
      found.push_back(std::to_string(lines.Index()) + std::string(lines.Line()));
    return found;
  }
  Strings ReadBytes(std::string_view bytes) const {
    Write("a.sln", bytes);
    TSolutionLines lines(Path("a.sln"), nullptr);
    return Read(lines);
  }
};

// Ill-formed bytes are decoded later than in the plain reading.
Strings WellFormed(Strings lines) {
  for (std::string& line : lines)
    line = text::ToUtf8(text::FromUtf8(line));
  return lines;
}

// What the lines of a file are when the whole of it is decoded first.
Strings PlainReading(std::string_view bytes) {
  const std::u16string text = platform::DecodeTextFile(bytes);
  Strings lines;
  for (const std::u16string_view line : text::SplitLines(text)) {
    if (!lines.empty() || !line.empty()) lines.push_back(text::ToUtf8(line));
  }
  return lines;
}

Strings Beginning(const Strings& lines, char first) {
  Strings found;
  for (std::size_t i = 1; i < lines.size(); ++i) {
    const std::u16string line = text::FromUtf8(lines[i]);
    if (text::TrimLeft(line).starts_with(static_cast<char16_t>(first)))
      found.push_back(std::to_string(i) + lines[i]);
  }
  return found;
}

TEST_F(Lines, EndInEveryWay) {
  const struct {
    const char* What;
    std::string_view Bytes;
    Strings Expected;
  } cases[] = {
      {"an empty file", "", {}},
      {"only line ends", "\r\n\n\r", {}},
      {"CR LF, LF and CR", "a\r\nb\nc\rd", {"a", "b", "c", "d"}},
      {"a line end at the end adds nothing", "a\n", {"a"}},
      {"a CR at the end ends a line", "a\nb\r", {"a", "b"}},
      {"empty lines inside stay", "a\n\n\r\nb", {"a", "", "", "b"}},
      {"empty lines above do not count", "\n\r\na", {"a"}},
      {"a line of blanks above stays", "\n \na", {" ", "a"}},
      {"CR CR LF is an empty line more", "a\r\r\nb", {"a", "", "b"}},
      {"zero bytes are characters", {"a\0b\n", 4}, {{"a\0b", 3}}},
      {"a UTF-8 mark", "\xEF\xBB\xBF\na\xC3\xA9", {"a\xC3\xA9"}},
      {"ill-formed UTF-8 stays as it is", "\xEF\xBB\xBF\xE9", {"\xE9"}},
      {"ANSI without a mark", "caf\xE9\n\x80", {"caf\xC3\xA9", "\xE2\x82\xAC"}},
      {"UTF-16, little end first", {"\xFF\xFE\xE9\0\n\0b\0", 8}, {"\xC3\xA9", "b"}},
      {"UTF-16, big end first", {"\xFE\xFF\0\xE9\0\r\0b", 8}, {"\xC3\xA9", "b"}},
      {"a lone surrogate and half a unit", {"\xFF\xFE\x3D\xD8\n\0b", 7}, {"\xEF\xBF\xBD", "\xEF\xBF\xBD"}},
  };
  for (const auto& row : cases)
    EXPECT_EQ(ReadBytes(row.Bytes), row.Expected) << row.What;
}

// Whatever lies across the borders of the buffer, in files of all encodings, around the sizes at which it
// fills.
TEST_F(Lines, AreThoseOfThePlainReadingForRandomFiles) {
  std::mt19937 random(20);
  const std::string_view pieces[] = {"\r",      "\n", "\r\n", " x", "\xC3\xA9", "\xE9", "\xF0\x9F\x98\x80",
                                     "{1}.A = "};
  const std::string_view marks[] = {"", "\xEF\xBB\xBF"};
  for (int file = 0; file < 40; ++file) {
    const std::size_t fills = std::size_t{128} << (10 + file % 3);
    const std::size_t size = file < 20 ? random() % 200 : fills - 20 + random() % 40;
    const std::size_t most = file % 4 == 0 ? std::size(pieces) : 4 + random() % 4;
    std::string bytes(marks[file % 2]);
    while (bytes.size() < size) {
      bytes += pieces[random() % most];
      if (random() % 8 == 0) bytes.append(std::min<std::size_t>(random() % 5000, size), 'y');
    }
    EXPECT_TRUE(WellFormed(ReadBytes(bytes)) == PlainReading(bytes)) << "file " << file;
    EXPECT_TRUE(WellFormed(ReadBeginningWith('x')) == Beginning(PlainReading(bytes), 'x')) << "file " << file;
    const std::string wide =
        "\xFF\xFE" + text::ToUtf16LE(text::FromUtf8(bytes)) + (file % 3 == 0 ? "\x3D" : "");
    EXPECT_TRUE(ReadBytes(wide) == PlainReading(wide)) << "file " << file << " in UTF-16";
  }
}

TEST_F(Lines, ComeAgainAfterRewind) {
  for (const std::size_t size : {20U, 400'000U}) {
    std::string bytes = "\r\nfirst\nsecond\r";
    while (bytes.size() < size)
      bytes += "line " + std::to_string(bytes.size()) + "\n";
    Write("a.sln", bytes);
    TSolutionLines lines(Path("a.sln"), nullptr);
    const Strings once = Read(lines);
    lines.Rewind();
    EXPECT_EQ(Read(lines), once) << size;
    lines.Rewind();
    ASSERT_TRUE(lines.Next() && lines.Next());
    EXPECT_EQ(lines.Line(), "second");
    EXPECT_EQ(lines.LineNumber(), 3) << "an editor counts the empty line too";
  }
}

TEST_F(Lines, AreReadFromRegularFilesOnlyAndUntilAStop) {
  EXPECT_THROW(TSolutionLines(Path("missing.sln"), nullptr), EKxParseError);
  EXPECT_THROW(TSolutionLines(Path(""), nullptr), EKxParseError) << "a folder";
  Write("a.sln", "a");
  TKxEvent stop;
  stop.Raise();
  TSolutionLines lines(Path("a.sln"), &stop);
  EXPECT_THROW(lines.Next(), EKxException);
}

} // namespace

} // namespace kx::tests
