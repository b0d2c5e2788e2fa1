#include "package/assemblyinfo/AssemblyInfoLiterals.h"

#include "foundation/text/Encoding.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

using enum TAssemblyInfoLanguage;

// A literal, what it decodes to ("-" where it cannot be), and what follows it in its file.
struct TRow {
  TAssemblyInfoLanguage Language;
  std::u16string_view Literal;
  std::u16string_view Value;
  std::u16string_view Behind = u" x";
};

TEST(AssemblyInfoLiterals, EndAndMeanWhatTheirLanguageSays) {
  const TRow rows[] = {
      {CSharp, u"\"\"", u"", u"+\"\""},
      {CSharp, uR"("\a\b\f\n\r\t\v\\\"\'")", u"\a\b\f\n\r\t\v\\\"'"},
      {CSharp, uR"("\u0041\uFFFF\U00010000\U0010FFFF\x041g\x7")", u"A\uFFFF\U00010000\U0010FFFFAg\x7"},
      {CSharp, uR"("\U00110000")", u"-"},
      {CSharp, uR"("\u004")", u"-"},
      {CSharp, uR"("\?")", u"-"},
      {CSharp, uR"("\1")", u"-"},
      {CSharp, uR"(@"a""b\")", u"a\"b\\"},
      {CSharp, u"@\"a\nb\"", u"a\nb"},
      {CSharp, uR"($"a{b["c"] + $"{d}"}}}{{e")", u"-"},
      {CSharp, uR"($@"\{x:{"}"}}")", u"-"},
      {CSharp, u"\"\"\"a\"\"b\"\"\"", u"a\"\"b"},
      {CSharp, u"\"\"\"\"a\"\"\"b\"\"\"\"", u"a\"\"\"b"},
      {CSharp, u"\"\"\"\na\n\"\"\"", u"-"},
      {VisualBasic, u"\"a\"\"b\\\"", u"a\"b\\"},
      {VisualBasic, u"\u201Ca\u201D\u201Db\uFF02", u"a\u201Db"},
      {VisualBasic, u"\"x\"c", u"-"},
      {VisualBasic, u"\"x\"C", u"-"},
      {VisualBasic, u"$\"a\"", u"-"},
      {Cpp, uR"("\1012\7\x00000041f\?\u0041")",
       u"A2\x7"
       u"Af?A"},
      {Cpp, uR"("\8")", u"-"},
      {Cpp, u"L\"a\"", u"a"},
      {Cpp, u"u8\"a\"", u"a"},
      {Cpp, u"u\"a\"", u"a"},
      {Cpp, u"U\"a\"", u"a"},
      {Cpp, u"R\"x(a)\" b)x\"", u"a)\" b"},
      {Cpp, u"u8R\"(\\\n)\"", u"\\\n"},
      {Cpp, u"R\"0123456789abcdef(a)0123456789abcdef\"", u"a"},
      {Cpp, u"\"a\\\r\nb\"", u"-"},
      {JSharp, uR"("\u0041\377\"")", u"A\u00FF\""},
      {JSharp, uR"("\U00000041")", u"-"},
      {JSharp, uR"("\x41")", u"-"},
      {FSharp, u"\"a\n\\0651\\x41\"", u"a\nA1A"},
      {FSharp, uR"("\x4")", u"-"},
      {FSharp, uR"("\06")", u"-"},
      {FSharp, u"@\"a\\\"", u"a\\"},
      {FSharp, u"\"\"\"\"a\n\"\"\"", u"\"a\n", u"\""}};
  for (const TRow& row : rows) {
    const std::u16string literal(row.Literal);
    const TLiteralEnd end = SkipLiteral(literal + std::u16string(row.Behind), 0, row.Language);
    EXPECT_EQ(std::pair(end.At, end.Closed), std::pair(literal.size(), true)) << text::ToUtf8(literal);
    const auto value = DecodeLiteral(literal, row.Language);
    EXPECT_EQ(value.value_or(u"-"), row.Value) << text::ToUtf8(literal);
  }
  for (const auto language : {CSharp, FSharp, Cpp})
    EXPECT_EQ(DecodeLiteral(u"\"\\0\"", language), std::u16string(1, u'\0'));
}

TEST(AssemblyInfoLiterals, EndWithTheirLineOrTextWhenNothingClosesThem) {
  const TRow rows[] = {
      {CSharp, u"\"ab", {}, u"\n\""},    {CSharp, u"\"a\\", {}, u"\nb\""},
      {CSharp, u"$\"a{b", {}, u"\n}\""}, {CSharp, u"@\"a\nb\"\"", {}, u""},
      {CSharp, u"\"\"\"a\"\"", {}, u""}, {VisualBasic, u"\"a\nb\"\"", {}, u""},
      {Cpp, u"\"ab", {}, u"\r\""},       {Cpp, u"R\"(ab\n", {}, u""},
      {FSharp, u"\"a\nb", {}, u""},      {FSharp, u"\"a\\", {}, u""},
  };
  for (const TRow& row : rows) {
    const std::u16string literal(row.Literal);
    const TLiteralEnd end = SkipLiteral(literal + std::u16string(row.Behind), 0, row.Language);
    EXPECT_EQ(std::pair(end.At, end.Closed), std::pair(literal.size(), false)) << text::ToUtf8(literal);
  }
}

TEST(AssemblyInfoLiterals, OfCharactersAreToldFromApostrophes) {
  const std::tuple<TAssemblyInfoLanguage, std::u16string_view, std::size_t> rows[] = {
      {CSharp, u"'\"' '", 3},
      {CSharp, u"'\\'' '", 4},
      {CSharp, u"'\\U0001F600'", 12},
      {CSharp, u"'12345678901'", 0},
      {CSharp, u"'a\n'", 0},
      {VisualBasic, u"'a'", 0},
      {FSharp, u"'a' 'b'", 3},
      {FSharp, u"'\\n' '", 4},
      {FSharp, u"'a -> 'b'", 0},
      {FSharp, u"'a", 0},
      {JSharp, u"'a'", 3},
  };
  for (const auto& [language, text, end] : rows)
    EXPECT_EQ(SkipLiteral(text, 0, language).At, end) << text::ToUtf8(text);
  EXPECT_EQ(SkipLiteral(u"@\"a\"", 1, CSharp).At, 1U) << "it begins before";
  EXPECT_TRUE(IsConstantLiteral(u"@\"a\"", CSharp) && !IsConstantLiteral(u"$\"a\"", CSharp));
}

} // namespace
} // namespace kx
