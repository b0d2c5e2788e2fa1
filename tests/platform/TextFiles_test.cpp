#include "platform/TextFiles.h"

#include <gtest/gtest.h>

namespace kx::platform {
namespace {

using namespace std::string_view_literals;

TEST(DecodeTextFile, GoesByTheByteOrderMark) {
  const struct {
    const char* Case;
    std::string_view Bytes;
    std::u16string_view Text;
  } rows[] = {
      {"nothing", "", u""},
      {"UTF-8", "\xEF\xBB\xBF\xC3\xA9", u"\u00E9"},
      {"UTF-16, low byte first", "\xFF\xFE\xE9\0"sv, u"\u00E9"},
      {"UTF-16, high byte first", "\xFE\xFF\0\xE9"sv, u"\u00E9"},
      {"a mark and no text", "\xEF\xBB\xBF", u""},
      {"no mark: not UTF-8, even where it could be", "\xC3\xA9", u"\u00C3\u00A9"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(DecodeTextFile(row.Bytes), row.Text) << row.Case;
}

TEST(AnsiPage, GivesNothingForWhatItLacks) {
  EXPECT_EQ(ToAnsi(u"\u00E9"), "\xE9");
  EXPECT_EQ(ToAnsi(u"\u65E5"), std::nullopt);
}

TEST(FromCodePage, DecodesThePagesOfWindows) {
  const struct {
    const char* Case;
    unsigned Page;
    std::string_view Bytes;
    std::optional<std::u16string_view> Text;
  } rows[] = {
      {"ASCII in any page", 949, "plain", u"plain"},
      {"UTF-8", 65001, "\xC3\xA9", u"\u00E9"},
      {"malformed UTF-8", 65001, "\xC3(", std::nullopt},
      {"Western", 1252, "\xE9\x81", u"\u00E9\x81"},
      {"DOS Western", 850, "\x82", u"\u00E9"},
      {"DOS American", 437, "\x82\xE1", u"\u00E9\u00DF"},
      {"Central European", 1250, "\x9A\xB3\xB9", u"\u0161\u0142\u0105"},
      {"Cyrillic", 1251, "\xC6\xE6\x88", u"\u0416\u0436\u20AC"},
      {"Greek", 1253, "\xC1\xE1", u"\u0391\u03B1"},
      {"Turkish", 1254, "\xDD\xFD", u"\u0130\u0131"},
      {"Hebrew with a point is not composed", 1255, "\xF9\xD1", u"\u05E9\u05C1"},
      {"Arabic", 1256, "\xC7", u"\u0627"},
      {"Baltic", 1257, "\xE0", u"\u0105"},
      {"Vietnamese with a tone mark is not composed", 1258, "\x61\xEC", u"a\u0301"},
      {"Thai", 874, "\xA1", u"\u0E01"},
      {"undefined control bytes stay controls", 1251, "\x98", u"\x98"},
      {"an undefined letter", 1253, "\xD2", std::nullopt},
      {"Japanese", 932, "\x93\xFA\x96\x7B", u"\u65E5\u672C"},
      {"a Japanese letter that holds a backslash byte", 932, "\x83\x5C\x5C\x7E", u"\u30BD\\~"},
      {"Japanese half-width", 932, "\xB1", u"\uFF71"},
      {"backslash and tilde of page 932", 932, "C:\\~", u"C:\\~"},
      {"half a Japanese letter", 932, "a\x93", std::nullopt},
      {"Simplified Chinese", 936, "\xD6\xD0\xCE\xC4", u"\u4E2D\u6587"},
      {"Korean", 949, "\xC7\xD1", u"\uD55C"},
      {"Traditional Chinese", 950, "\xA4\xA4\xA4\xE5", u"\u4E2D\u6587"},
      {"malformed Chinese", 950, "\xA4", std::nullopt},
      {"a page that nobody has", 4711, "plain", std::nullopt},
  };
  for (const auto& row : rows)
    EXPECT_EQ(FromCodePage(row.Bytes, row.Page), row.Text) << row.Case;
}

} // namespace
} // namespace kx::platform
