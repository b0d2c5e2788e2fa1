#include "foundation/text/Encoding.h"

#include <gtest/gtest.h>

namespace kx::text {
namespace {

using namespace std::string_view_literals;
using enum SingleBytePage;

TEST(Utf8, DecodesAndPutsOneMarkForEachIllFormedPiece) {
  const std::tuple<const char*, std::string_view, std::u16string_view, std::size_t> rows[] = {
      {"the first of each length", "\xC2\x80\xE0\xA0\x80\xF0\x90\x80\x80", u"\u0080\u0800\U00010000", 9},
      {"the last of each length", "\xDF\xBF\xEF\xBF\xBF\xF4\x8F\xBF\xBF", u"\u07FF\uFFFF\U0010FFFF", 9},
      {"a NUL is a character", "a\0b"sv, u"a\0b"sv, 3},
      {"bytes that begin nothing", "a\xFF\xC0\x80z", u"a\uFFFD\uFFFD\uFFFDz", 1},
      {"a sequence cut off by a letter is one piece", "\xE2\x82z", u"\uFFFDz", 0},
      {"a sequence cut off by the end is one piece", "ab\xF0\x9F\x98", u"ab\uFFFD", 2},
      {"an overlong form", "\xE0\x80\x80", u"\uFFFD\uFFFD\uFFFD", 0},
      {"a surrogate", "\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD", 0},
      {"beyond the last code point", "\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD", 0},
  };
  for (const auto& [name, bytes, text, validPrefix] : rows) {
    const bool valid = validPrefix == bytes.size();
    EXPECT_EQ(FromUtf8(bytes), text) << name;
    EXPECT_EQ(ValidUtf8Prefix(bytes), validPrefix) << name;
    EXPECT_TRUE(IsValidUtf8(bytes) == valid && (ToUtf8(text) == bytes) == valid) << name;
  }
}

TEST(Encodings, ComeThroughAtEveryLengthAroundTheBlocks) {
  // One accented letter near the end of texts as long as a block or the buffer, and around that.
  for (const std::size_t size : {1U, 8U, 31U, 32U, 33U, 64U, 2047U, 2048U, 2049U, 5000U}) {
    ASSERT_EQ(FromUtf8(std::string(size, 'x')), std::u16string(size, u'x')) << size;
    for (std::size_t at = size - std::min<std::size_t>(size, 33); at != size; ++at) {
      std::u16string text(size, u'x');
      text[at] = u'\u00E9';
      const std::string bytes = ToUtf8(text);
      ASSERT_EQ(FromUtf8(bytes), text) << size << " " << at;
      ASSERT_EQ(ValidUtf8Prefix(bytes.substr(0, at + 1)), at) << size << " " << at;
      ASSERT_EQ(FromSingleByte(*ToSingleByte(text, Windows1252), Windows1252), text) << size << " " << at;
    }
  }
}

TEST(Utf16, ReplacesLoneSurrogatesAndAnOddByte) {
  const std::pair<std::string_view, std::u16string_view> rows[] = {
      {"\xE9\0\x3D\xD8\x00\xDE"sv, u"\u00E9\U0001F600"},
      {"\x3D\xD8z\0"sv, u"\uFFFDz"},
      {"\x00\xDEz\0"sv, u"\uFFFDz"},
      {"z\0\x3D\xD8"sv, u"z\uFFFD"},
      {"a\0b"sv, u"a\uFFFD"},
  };
  for (const auto& [littleEndian, text] : rows) {
    EXPECT_EQ(FromUtf16LE(littleEndian), text);
    EXPECT_EQ(FromUtf16LE(ToUtf16LE(text)), text);
  }
  EXPECT_EQ(FromUtf16BE("\0a\xD8\x3D\xDE\x00"sv), u"a\U0001F600");
  EXPECT_EQ(ToUtf8(std::u16string{u'a', char16_t{0xD83D}, u'z'}), "a\xEF\xBF\xBDz");
}

TEST(SingleBytePages, MapAllBytesThereAndBack) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte)
    all.push_back(static_cast<char>(byte));
  for (const auto page : {Windows1252, Dos850})
    EXPECT_EQ(ToSingleByte(FromSingleByte(all, page), page), all);
  EXPECT_EQ(FromSingleByte(std::string_view(all).substr(0x80, 0x20), Windows1252),
            u"€\x81‚ƒ„…†‡ˆ‰Š‹Œ\x8D"
            u"Ž\x8F\x90‘’“”•–—˜™š›œ\x9D"
            u"žŸ");
  EXPECT_EQ(FromSingleByte("\xA0\xE9\xFF", Windows1252), u"\u00A0éÿ");
  EXPECT_EQ(FromSingleByte(std::string_view(all).substr(0x80), Dos850),
            u"ÇüéâäàåçêëèïîìÄÅÉæÆôöòûùÿÖÜø£Ø×ƒáíóúñÑªº¿®¬½¼¡«»░▒▓│┤ÁÂÀ©╣║╗╝¢¥┐└┴┬├─┼ãÃ╚╔╩╦╠═╬¤ðÐÊËÈıÍÎÏ┘┌█▄¦Ì"
            u"▀ÓßÔÒõÕµþÞÚÛÙýÝ¯´\u00AD±‗¾¶§÷¸°¨·¹³²■\u00A0");
  EXPECT_EQ(ToSingleByte(u"\u20AC", Dos850), std::nullopt);
}

TEST(ByteOrderMarks, AreKnownByTheirBytes) {
  const std::tuple<std::string_view, ByteOrderMark, std::size_t> rows[] = {
      {"\xEF\xBB\xBFx", ByteOrderMark::Utf8, 3},
      {"\xFF\xFE", ByteOrderMark::Utf16LE, 2},
      {"\xFE\xFF", ByteOrderMark::Utf16BE, 2},
      {"\xEF\xBB", ByteOrderMark::None, 0}};
  for (const auto& [bytes, mark, length] : rows)
    EXPECT_EQ(std::pair(DetectByteOrderMark(bytes), LengthOf(mark)), std::pair(mark, length));
}

// The same words in both pages: the guess must tell them apart by the bytes alone.
TEST(SingleByteGuess, TellsThePageByTheAccentedLetters) {
  const std::pair<std::u16string_view, SingleBytePage> rows[] = {
      {u"La génération a échoué\u00A0: accès refusé", Dos850},
      {u"La génération a échoué\u00A0: accès refusé", Windows1252},
      {u"l\u2019élément \u00ABà\u00BB n\u2019est pas trouvé\u2026 voilà", Windows1252},
      {u"Überprüfung der Größe für später", Dos850},
      {u"Überprüfung der Größe für später", Windows1252},
      {u"compilación con éxito, según opción añadida", Dos850},
      {u"Build succeeded.", Windows1252},
  };
  for (const auto& [text, page] : rows) {
    SingleByteGuess guess;
    guess.Feed(*ToSingleByte(text, page));
    EXPECT_EQ(guess.Result(), page) << ToUtf8(text);
  }
}

TEST(ToolOutputDecoder, DecidesLineByLineAndLearns) {
  ToolOutputDecoder decoder;
  std::u16string text;
  for (const auto* line : {"\xC3\xA9t\xC3\xA9", "\x82t\x82", "\xFF: 3", "\xC3\xA9t\xC3\xA9"})
    text += decoder.Decode(line) + u"|";
  EXPECT_EQ(text, u"été|été|\u00A0: 3|été|") << "without a letter the page that was learned before";
}

} // namespace
} // namespace kx::text
