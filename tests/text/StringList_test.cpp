#include "foundation/text/StringList.h"

#include <gtest/gtest.h>

namespace kx::text {
namespace {

TEST(StringListDelimitedText, IsReadByTheRulesOfSavedLists) {
  const std::tuple<const char*, std::u16string_view, char16_t, TStringList> rows[] = {
      {"only blanks", u" \r\n ", u',', {}},
      {"empty items everywhere", u",a,,b,", u',', {u"", u"a", u"", u"b", u""}},
      {"blanks separate too", u"a b  c", u',', {u"a", u"b", u"c"}},
      {"quotes keep blanks and delimiters", u"\" a, b \", c", u',', {u" a, b ", u"c"}},
      {"text behind a closing quote is a new item", u"\"a\"b,c", u',', {u"a", u"b", u"c"}},
      {"a quote inside a plain item is a character", u"a\"b c\"", u',', {u"a\"b", u"c\""}},
      {"an open quote runs to the end", u"\"a, b", u',', {u"a, b"}},
      {"another delimiter leaves commas alone", u"a,b|\"c d\"|e f", u'|', {u"a,b", u"c d", u"e", u"f"}},
  };
  for (const auto& [name, text, delimiter, expected] : rows) {
    TStringList list;
    list.SetDelimitedText(text, delimiter);
    EXPECT_EQ(list, expected) << name;
  }
}

TEST(StringListDelimitedText, IsWrittenWithQuotesWhereNeededAndReadsBack) {
  const std::pair<TStringList, std::u16string_view> rows[] = {
      {{}, u""},
      {{u""}, u"\"\""},
      {{u"a", u"", u"b"}, u"a,,b"},
      {{u"a b", u"c,d", u"tab\t"}, u"\"a b\",\"c,d\",\"tab\t\""},
      {{u"say \"hi\""}, u"\"say \"\"hi\"\"\""},
  };
  for (const auto& [list, commaText] : rows) {
    EXPECT_EQ(list.GetCommaText(), commaText);
    TStringList readBack{u"old"};
    readBack.SetCommaText(commaText);
    EXPECT_EQ(readBack, list) << testing::PrintToString(commaText);
  }
  EXPECT_EQ((TStringList{u"a|b", u"c'd"}).GetDelimitedText(u'|', u'\''), u"'a|b'|'c''d'");
}

TEST(StringList, FindsNamesAndValuesWithoutRegardToCase) {
  const TStringList list{u"Configuration=Release", u"no equals sign", u"CONFIGURATION=Debug", u"a=b=c"};
  EXPECT_EQ(list.Value(u"configuration"), u"Release");
  EXPECT_EQ(list.Value(u"A"), u"b=c");
  EXPECT_EQ(list.IndexOfName(u"no equals sign"), std::nullopt);
  EXPECT_EQ(list.IndexOfName(u"Config"), std::nullopt);
  EXPECT_TRUE(list[7].empty() && list.NameOf(1).empty() && list.ValueOf(7).empty());
  EXPECT_EQ(list.IndexOf(u"NO EQUALS SIGN"), 1U);
}

TEST(StringList, ChangesTheLinesThatAreThere) {
  TStringList list{u"a", u"b", u"c"};
  list.Set(1, u"B");
  list.Set(3, u"d");
  list.Delete(0);
  list.Delete(2);
  list.Add(u"e");
  EXPECT_EQ(list, (TStringList{u"B", u"c", u"e"}));
}

TEST(StringList, ReadsEveryLineEndAndWritesOne) {
  TStringList list;
  list.SetText(u"a\r\nb\nc\r\r\nd");
  EXPECT_EQ(list.GetText(), u"a\r\nb\r\nc\r\n\r\nd\r\n");
}

} // namespace
} // namespace kx::text
