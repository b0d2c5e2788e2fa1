#include "text/Encoding.h"

#include <gtest/gtest.h>

namespace kx::text {
namespace {

using namespace std::string_view_literals;

TEST(Utf8, DecodesAndPutsOneMarkForEachIllFormedPiece) {
  const struct {
    const char* Case;
    std::string_view Bytes;
    std::u16string_view Text;
    std::size_t ValidPrefix;
  } rows[] = {
      {"nothing", "", u"", 0},
      {"two, three and four bytes", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", u"\u00E9\u20AC\U0001F600", 9},
      {"the ends of each length",
       "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF",
       u"\u007F\u0080\u07FF\u0800\uFFFF\U00010000\U0010FFFF", 19},
      {"a NUL is a character", "a\0b"sv, u"a\0b"sv, 3},
      {"a byte that never occurs", "a\xFF\xC0z", u"a\uFFFD\uFFFDz", 1},
      {"a stray continuation byte", "\x80z", u"\uFFFDz", 0},
      {"a sequence cut off by a letter is one piece", "\xE2\x82z", u"\uFFFDz", 0},
      {"a sequence cut off by the end is one piece", "ab\xF0\x9F\x98", u"ab\uFFFD", 2},
      {"an overlong form", "\xE0\x80\x80", u"\uFFFD\uFFFD\uFFFD", 0},
      {"a surrogate", "\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD", 0},
      {"beyond the last code point", "\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD", 0},
      {"a fault behind a long run of ASCII", "0123456789abcdef0123456789abcdef0123456789\xC3(",
       u"0123456789abcdef0123456789abcdef0123456789\uFFFD(", 42},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(FromUtf8(row.Bytes), row.Text) << row.Case;
    EXPECT_EQ(ValidUtf8Prefix(row.Bytes), row.ValidPrefix) << row.Case;
    EXPECT_EQ(IsValidUtf8(row.Bytes), row.ValidPrefix == row.Bytes.size()) << row.Case;
    if (IsValidUtf8(row.Bytes)) {
      EXPECT_EQ(ToUtf8(row.Text), row.Bytes) << row.Case;
    }
  }
}

TEST(Utf8, ComesThroughAtEveryLengthAroundTheBlocks) {
  // One accented letter at each place of texts longer than a block and than the buffer.
  for (const std::size_t size : {1U, 7U, 8U, 31U, 32U, 33U, 64U, 2047U, 2048U, 2049U, 5000U}) {
    for (std::size_t at = 0; at<size; at += size> 100 ? 61 : 1) {
      std::u16string text(size, u'x');
      text[at] = u'\u00E9';
      const std::string bytes = ToUtf8(text);
      ASSERT_EQ(bytes.size(), size + 1);
      ASSERT_EQ(FromUtf8(bytes), text) << size << " " << at;
      ASSERT_EQ(ValidUtf8Prefix(bytes.substr(0, at + 1)), at) << size << " " << at;
      const auto ansi = ToSingleByte(text, SingleBytePage::Windows1252);
      ASSERT_EQ(FromSingleByte(*ansi, SingleBytePage::Windows1252), text) << size << " " << at;
    }
  }
}

TEST(Utf16, ReplacesLoneSurrogatesAndAnOddByte) {
  const struct {
    const char* Case;
    std::string_view LittleEndian;
    std::u16string_view Text;
  } rows[] = {
      {"letters", "a\0\xE9\0"sv, u"a\u00E9"},
      {"a pair stays", "\x3D\xD8\x00\xDE"sv, u"\U0001F600"},
      {"a high half alone", "\x3D\xD8z\0"sv, u"\uFFFDz"},
      {"a low half alone", "\x00\xDEz\0"sv, u"\uFFFDz"},
      {"a high half at the end", "z\0\x3D\xD8"sv, u"z\uFFFD"},
      {"an odd last byte", "a\0b"sv, u"a\uFFFD"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(FromUtf16LE(row.LittleEndian), row.Text) << row.Case;
    EXPECT_EQ(FromUtf16LE(ToUtf16LE(row.Text)), row.Text) << row.Case;
  }
  EXPECT_EQ(FromUtf16BE("\0a\xD8\x3D\xDE\x00"sv), u"a\U0001F600");
  EXPECT_EQ(ToUtf8(std::u16string{u'a', char16_t{0xD83D}, u'b'}), "a\xEF\xBF\xBD"
                                                                  "b");
  EXPECT_EQ(ToUtf16LE(std::u16string{char16_t{0xDE00}}), "\xFD\xFF");
}

TEST(ByteOrderMarks, AreFoundWithTheirLength) {
  const struct {
    std::string_view Bytes;
    ByteOrderMark Mark;
    std::size_t Length;
  } rows[] = {
      {"\xEF\xBB\xBFx", ByteOrderMark::Utf8, 3},
      {"\xFF\xFEx", ByteOrderMark::Utf16LE, 2},
      {"\xFE\xFFx", ByteOrderMark::Utf16BE, 2},
      {"\xEF\xBB", ByteOrderMark::None, 0},
      {"", ByteOrderMark::None, 0},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(DetectByteOrderMark(row.Bytes), row.Mark) << row.Bytes;
    EXPECT_EQ(LengthOf(row.Mark), row.Length) << row.Bytes;
  }
}

TEST(SingleBytePages, MapAllBytesThereAndBack) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte)
    all.push_back(static_cast<char>(byte));
  for (const auto page : {SingleBytePage::Windows1252, SingleBytePage::Dos850}) {
    const std::u16string text = FromSingleByte(all, page);
    ASSERT_EQ(text.size(), 256U);
    EXPECT_EQ(ToSingleByte(text, page), all);
  }
}

TEST(SingleBytePages, HoldTheCharactersOfTheirKeyboards) {
  const auto windows = SingleBytePage::Windows1252;
  const auto dos = SingleBytePage::Dos850;
  EXPECT_EQ(FromSingleByte("\x80\x85\x92\x9C\xE9\xFF", windows), u"\u20AC\u2026\u2019\u0153\u00E9\u00FF");
  EXPECT_EQ(FromSingleByte("\x81\x8D\x8F\x90\x9D", windows),
            u"\x81\x8D\x8F\x90\x9D"); // undefined in the page
  EXPECT_EQ(FromSingleByte("\x82\x8A\x85\x87\x88\x93\x8C\x96\x97\x90", dos),
            u"\u00E9\u00E8\u00E0\u00E7\u00EA\u00F4\u00EE\u00FB\u00F9\u00C9");
  EXPECT_EQ(FromSingleByte("\xC4\xB3\xE1\xFF", dos), u"\u2500\u2502\u00DF\u00A0");
  EXPECT_EQ(ToSingleByte(u"\u20AC", dos), std::nullopt);
  EXPECT_EQ(ToSingleByte(u"\u0416", windows), std::nullopt);
}

// The same words in both pages: the guess must tell them apart by the bytes alone.
TEST(SingleByteGuess, TellsThePageByTheAccentedLetters) {
  const struct {
    const char* Case;
    std::u16string_view Text;
    SingleBytePage Page;
  } rows[] = {
      {"French console text", u"La génération a échoué\u00A0: fichier introuvable", SingleBytePage::Dos850},
      {"a circumflex only", u"le chemin d'accès à la boîte, même là-bas", SingleBytePage::Dos850},
      {"French in the Windows page", u"La génération a échoué\u00A0: accès refusé",
       SingleBytePage::Windows1252},
      {"typographic marks of Windows", u"l\u2019élément \u00ABà\u00BB n\u2019est pas trouvé\u2026 voilà",
       SingleBytePage::Windows1252},
      {"German umlauts", u"Überprüfung der Größe für später", SingleBytePage::Dos850},
      {"German umlauts of Windows", u"Überprüfung der Größe für später", SingleBytePage::Windows1252},
      {"Spanish", u"compilación con éxito, según opción añadida", SingleBytePage::Dos850},
      {"no accented letter at all", u"Build succeeded.", SingleBytePage::Windows1252},
  };
  for (const auto& row : rows) {
    SingleByteGuess guess;
    std::string bytes;
    for (const char16_t c : row.Text) {
      // Console programs write a plain mark for what their page does not hold.
      bytes += ToSingleByte(std::u16string(1, c), row.Page).value_or("?");
    }
    guess.Feed(bytes);
    EXPECT_EQ(guess.Result(), row.Page) << row.Case;
  }
}

TEST(ToolOutputDecoder, DecidesLineByLineAndLearns) {
  ToolOutputDecoder decoder;
  EXPECT_EQ(decoder.Decode("plain"), u"plain");
  EXPECT_EQ(decoder.Decode("\xC3\xA9t\xC3\xA9"), u"\u00E9t\u00E9");
  EXPECT_EQ(decoder.Decode("\x82t\x82"), u"\u00E9t\u00E9"); // code page 850
  EXPECT_EQ(decoder.Decode("\xFF: 3"), u"\u00A0: 3");       // no letter: the page learned before
  EXPECT_EQ(decoder.Decode("\xC3\xA9t\xC3\xA9"), u"\u00E9t\u00E9");
}

} // namespace
} // namespace kx::text
