#include "foundation/platform/TextFiles.h"

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
      {"a page that nobody has", 4711, "plain", std::nullopt},
  };
  for (const auto& [name, page, bytes, expected] : rows)
    EXPECT_EQ(FromCodePage(bytes, page), expected) << name;
}

} // namespace
} // namespace kx::platform
