#include "text/StringList.h"

#include <gtest/gtest.h>

namespace kx::text {
namespace {

TEST(StringListDelimitedText, IsReadByTheRulesOfSavedLists) {
  const struct {
    const char* Case;
    std::u16string_view Text;
    char16_t Delimiter;
    TStringList Expected;
  } rows[] = {
      {"no text, no items", u"", u',', {}},
      {"only blanks", u" \r\n ", u',', {}},
      {"plain items", u"a,b", u',', {u"a", u"b"}},
      {"an empty item in the middle", u"a,,b", u',', {u"a", u"", u"b"}},
      {"a delimiter at the end", u"a,", u',', {u"a", u""}},
      {"a delimiter in front", u",a", u',', {u"", u"a"}},
      {"a delimiter alone", u",", u',', {u"", u""}},
      {"blanks around delimiters vanish", u"  a ,\t b ", u',', {u"a", u"b"}},
      {"blanks separate too", u"a b  c", u',', {u"a", u"b", u"c"}},
      {"a project line",
       u"\"App\", \"App\\App.csproj\", \"{1}\"",
       u',',
       {u"App", u"App\\App.csproj", u"{1}"}},
      {"quotes keep blanks and delimiters", u"\" a, b \",c", u',', {u" a, b ", u"c"}},
      {"a doubled quote stands for one", u"\"say \"\"hi\"\"\"", u',', {u"say \"hi\""}},
      {"an empty quoted item", u"\"\"", u',', {u""}},
      {"text behind a closing quote is a new item", u"\"a\"b,c", u',', {u"a", u"b", u"c"}},
      {"a quote inside a plain item is a character", u"a\"b c\"", u',', {u"a\"b", u"c\""}},
      {"an open quote runs to the end", u"\"a, b", u',', {u"a, b"}},
      {"another delimiter leaves commas alone", u"a,b|\"c d\"|e f", u'|', {u"a,b", u"c d", u"e", u"f"}},
  };
  for (const auto& row : rows) {
    TStringList list;
    list.SetDelimitedText(row.Text, row.Delimiter);
    EXPECT_EQ(list.GetText(), row.Expected.GetText()) << row.Case;
    EXPECT_EQ(list, row.Expected) << row.Case;
  }
}

TEST(StringListDelimitedText, IsWrittenWithQuotesWhereNeededAndReadsBack) {
  const struct {
    TStringList List;
    std::u16string_view CommaText;
  } rows[] = {
      {{}, u""},
      {{u""}, u"\"\""},
      {{u"", u""}, u","},
      {{u"a", u"", u"b"}, u"a,,b"},
      {{u"a b", u"c,d", u"e"}, u"\"a b\",\"c,d\",e"},
      {{u"say \"hi\""}, u"\"say \"\"hi\"\"\""},
      {{u"tab\there", u" "}, u"\"tab\there\",\" \""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.List.GetCommaText(), row.CommaText);
    TStringList list{u"old"};
    list.SetCommaText(row.CommaText);
    EXPECT_EQ(list, row.List) << "from " << testing::PrintToString(row.CommaText);
  }
  EXPECT_EQ((TStringList{u"a|b", u"c'd"}).GetDelimitedText(u'|', u'\''), u"'a|b'|'c''d'");
}

TEST(StringList, FindsNamesAndValuesWithoutRegardToCase) {
  const TStringList list{u"Configuration=Release", u"no equals sign", u"=nameless", u"CONFIGURATION=Debug",
                         u"a=b=c"};
  EXPECT_EQ(list.Value(u"configuration"), u"Release");
  EXPECT_EQ(list.IndexOfName(u"A"), 4U);
  EXPECT_EQ(list.Value(u"a"), u"b=c");
  EXPECT_EQ(list.IndexOfName(u"a=b"), std::nullopt);
  EXPECT_EQ(list.IndexOfName(u"no equals sign"), std::nullopt);
  EXPECT_EQ(list.IndexOfName(u"Config"), std::nullopt);
  EXPECT_EQ(list.IndexOfName(u""), 2U);
  EXPECT_EQ(list.NameOf(1), u"");
  EXPECT_EQ(list.ValueOf(1), u"");
  EXPECT_EQ(list.IndexOf(u"NO EQUALS SIGN"), 1U);
  EXPECT_EQ(list.IndexOf(u"missing"), std::nullopt);
}

TEST(StringList, TakesABadIndexCalmly) {
  TStringList list{u"a=1"};
  list.Set(7, u"x");
  list.Delete(7);
  EXPECT_EQ(list, (TStringList{u"a=1"}));
  EXPECT_EQ(list[7], u"");
  EXPECT_EQ(list.NameOf(7), u"");
  EXPECT_EQ(list.ValueOf(7), u"");
  list.Set(0, u"b");
  list.Add(u"c");
  list.Delete(0);
  EXPECT_EQ(list, (TStringList{u"c"}));
}

TEST(StringList, ReadsEveryLineEndAndWritesOne) {
  TStringList list;
  list.SetText(u"a\r\nb\nc\r\r\nd");
  EXPECT_EQ(list, (TStringList{u"a", u"b", u"c", u"", u"d"}));
  EXPECT_EQ(list.GetText(), u"a\r\nb\r\nc\r\n\r\nd\r\n");
  list.SetText(u"");
  EXPECT_TRUE(list.IsEmpty());
}

} // namespace
} // namespace kx::text
