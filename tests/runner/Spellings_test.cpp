#include "program/runner/Spellings.h"

#include "foundation/text/Encoding.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

// What is meant, then for each of its characters the end of its spelling.
std::string Decoded(const TSpellings& spellings, std::string_view utf8) {
  const TDecodedText decoded = Decode(spellings, text::FromUtf8(utf8));
  std::string shown = text::ToUtf8(decoded.Text) + "|";
  for (const std::size_t end : decoded.Ends)
    shown += " " + std::to_string(end);
  return shown;
}

TEST(Spellings, SayWhereEachCharacterStood) {
  enum { Address, Form, Xml, Json, Windows, Shell, ShellQuote, Cmd, PowerShell };
  const std::tuple<int, const char*, const char*> rows[] = {
      {Address, "a%41%6Ab", "aAjb| 1 4 7 8"},
      {Address, "%C3%B6%e2%82%AC!", "\u00F6\u20AC!| 6 15 16"},
      {Address, "%F0%9F%94%91", "\U0001F511| 12 12"},
      {Address, "%C3%C3%B6", "\u00C3\u00F6| 3 9"}, // the first byte is none of UTF-8
      {Address, "%4 %4g %g4 %", "%4 %4g %g4 %| 1 2 3 4 5 6 7 8 9 10 11 12"},
      {Address, "plain", "|"},
      {Form, "a+%2B", "a +| 1 2 5"},
      {Form, "a%20b", "|"},
      {Xml, "&lt;&gt;&amp;&quot;&apos;", "<>&\"'| 4 8 13 19 25"},
      {Xml, "&#65;&#x6A;&#X6a;", "Ajj| 5 11 17"},
      {Xml, "&#x0010FFFF;&#x10000;", "\U0010FFFF\U00010000| 12 12 21 21"},
      {Xml, "&#x110000;", "&#x110000;| 1 2 3 4 5 6 7 8 9 10"},
      {Xml, "&#x00010FFFF;", "&#x00010FFFF;| 1 2 3 4 5 6 7 8 9 10 11 12 13"}, // longer than any character
      {Xml, "&#;&#x;&;&#6A;", "&#;&#x;&;&#6A;| 1 2 3 4 5 6 7 8 9 10 11 12 13 14"},
      {Xml, "&lt &amp", "&lt &amp| 1 2 3 4 5 6 7 8"},
      {Json, R"(\b\f\n\r\t\"\\\/\')", "\b\f\n\r\t\"\\/'| 2 4 6 8 10 12 14 16 18"},
      {Json, R"(\u0041\x6a.)", "Aj.| 6 10 11"},
      {Json, R"(\u004\x6\)", R"(\u004\x6\| 1 2 3 4 5 6 7 8 9)"},
      {Json, R"(\u00g1\a)", R"(\u00g1\a| 1 2 3 4 5 6 7 8)"},
      {Windows, R"(""a\\"b)", R"("a\"b| 2 3 5 6 7)"},
      {Windows, R"(\"\\\"\\)", R"("\"\\| 2 4 6 7 8)"},
      {Windows, R"(a\b")", R"(a\b"| 1 2 3 4)"},
      {Shell, R"(\$\a\ \~\)", R"($\a ~\| 2 3 4 6 8 9)"},
      {Shell, "'\\''x", "'x| 4 5"},
      {ShellQuote, R"('"'"'x'\')", R"('x''| 5 6 7 9)"},
      {ShellQuote, "\"'\"", "\"'\"| 1 2 3"},
      {Cmd, "^&^a^^`|^", "&^a^|^| 2 3 4 6 8 9"},
      {PowerShell, "`$`0^%", "$`0%| 2 3 4 6"},
  };
  for (const auto& [spelling, text, meant] : rows)
    EXPECT_EQ(Decoded(KnownSpellings()[static_cast<std::size_t>(spelling)], text), meant) << text;
}

TEST(Spellings, AreTakenOffOneByOne) {
  const TSpellings& xml = KnownSpellings()[2];
  const TSpellings& address = KnownSpellings()[0];
  const TSpellings& json = KnownSpellings()[3];
  EXPECT_EQ(Decoded({xml[0], address[0]}, "&amp;&#37;41b"), "&Ab| 5 12 13");
  EXPECT_EQ(Decoded({json[0], xml[0]}, R"(x\u0026lt;)"), "x<| 1 10");
  EXPECT_EQ(Decoded({xml[0], address[0]}, "&amp;"), "|");
  for (const TSpellings& spellings : KnownSpellings())
    EXPECT_EQ(Decoded(spellings, "none of it"), "|");
}

} // namespace
} // namespace kx
