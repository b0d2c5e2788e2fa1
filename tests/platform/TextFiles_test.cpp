#include "foundation/platform/TextFiles.h"

#include "foundation/platform/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kx::platform {
namespace {

using namespace std::string_view_literals;

TEST(DecodeTextFile, GoesByTheByteOrderMark) {
  EXPECT_EQ(DecodeTextFile("\xEF\xBB\xBF\xC3\xA9"), u"\u00E9");
  EXPECT_EQ(DecodeTextFile("\xFF\xFE\xE9\0"sv), u"\u00E9");
  EXPECT_EQ(DecodeTextFile("\xFE\xFF\0\xE9"sv), u"\u00E9");
  EXPECT_EQ(DecodeTextFile("\xC3\xA9"), u"\u00C3\u00A9") << "not UTF-8, even where it could be";
}

TEST(ReadTextFile, GivesTheTextOrTheReason) {
  const tests::TTemporaryFolder folder;
  EXPECT_EQ(*ReadTextFile(folder.Write("a.txt", "\xE9")), u"\u00E9");
  EXPECT_EQ(ReadTextFile(folder.Path("b.txt")).Message(), ReadFile(folder.Path("b.txt")).Message());
}

TEST(DecodeUtf8OrAnsi, TakesOnlyWhatIsValidUtf8AllThroughForUtf8) {
  const std::pair<std::string_view, std::u16string_view> rows[] = {
      {"\xC3\xA9", u"\u00E9"},
      {"\xC3\xA9 \xE9", u"\u00C3\u00A9 \u00E9"},
      {"\xEF\xBB\xBF\xE9", u"\uFFFD"},
      {"\xFF\xFE\xE9\0"sv, u"\u00E9"},
  };
  for (const auto& [bytes, text] : rows)
    EXPECT_EQ(DecodeUtf8OrAnsi(bytes), text) << bytes;
}

TEST(FromCodePage, DecodesThePagesOfWindows) {
  const std::tuple<const char*, unsigned, std::string_view, std::optional<std::u16string_view>> rows[] = {
      {"malformed UTF-8", 65001, "\xC3(", std::nullopt},
      {"Central European", 1250, "\x9A\xB3\xB9", u"\u0161\u0142\u0105"},
      {"Hebrew with a point is not composed", 1255, "\xF9\xD1", u"\u05E9\u05C1"},
      {"undefined control bytes stay controls", 1251, "\xC6\x98", u"\u0416\x98"},
      {"an undefined letter", 1253, "\xD2", std::nullopt},
      {"a Japanese letter that holds a backslash byte", 932, "\x83\x5C\x5C\x7E", u"\u30BD\\~"},
      {"half a Japanese letter", 932, "a\x93", std::nullopt},
      {"Traditional Chinese", 950, "\xA4\xA4\xA4\xE5", u"\u4E2D\u6587"},
      {"Simplified Chinese", 936, "\xD6\xD0", u"\u4E2D"},
      {"Korean", 949, "\xB0\xA1", u"\uAC00"},
      {"Western European of DOS", 850, "\x82\xFF", u"\u00E9\u00A0"},
      {"Western European of Windows", 1252, "\x80\x81", u"\u20AC\x81"},
      {"ASCII of any page", 949, "\\~", u"\\~"},
      {"a page that nobody has", 4711, "plain", std::nullopt},
  };
  for (const auto& [name, page, bytes, expected] : rows)
    EXPECT_EQ(FromCodePage(bytes, page), expected) << name;
  std::string controls; // what a page leaves undefined there is a control character
  for (int byte = 0x80; byte <= 0x9F; ++byte)
    controls += static_cast<char>(byte);
  for (const unsigned page :
       {437U, 852U, 855U, 857U, 866U, 874U, 1250U, 1251U, 1253U, 1254U, 1255U, 1256U, 1257U, 1258U, 28591U}) {
    const auto text = FromCodePage(controls, page);
    EXPECT_TRUE(text && text->size() == controls.size()) << page;
  }
}

TEST(ToAnsiLossy, CountsTheCharactersThatAreLost) {
  const std::tuple<std::u16string_view, std::string_view, std::size_t> rows[] = {
      {u"", "", 0},
      {u"a\u00E9\u20AC", "a\xE9\x80", 0},
      {u"a\u4E2D\U0001F600b", "a??b", 2},
      {u"\xD83D\u00E9\xDE00\xD83D", "?\xE9??", 3}, // halves of pairs
      {u"\xDE00\xD83D", "??", 2},
  };
  for (const auto& [text, bytes, lost] : rows) {
    const LossyText found = ToAnsiLossy(text);
    EXPECT_EQ(std::tuple(std::string_view(found.Bytes), found.Lost), std::tuple(bytes, lost)) << bytes;
  }
}

} // namespace
} // namespace kx::platform
