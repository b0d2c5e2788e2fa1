#include "runner/IniText.h"

#include "host/Exceptions.h"
#include "text/Encoding.h"

#include <gmock/gmock.h>

namespace kx::tests {
namespace {

using testing::ElementsAre;

TIniText Parsed(std::u16string_view text) {
  TIniText ini;
  ini.Parse(text, u"options.ini");
  return ini;
}

TEST(IniText, ReadsValuesWhateverTheirDress) {
  const auto ini = Parsed(u"; head\n[VisualStudioDotNet]\r\n  MSDevPath2008 =  C:\\VS 9\\ ;x  \n# c\nEmpty=\n"
                          u"Quoted=\"  a \"\nPath=a=b;c\ndup=1\nDUP=2\n\n[ Other ]\nv4.0=x");
  const struct {
    std::u16string_view Section, Key, Value;
  } cases[] = {
      {u"visualstudiodotnet", u"msdevpath2008", u"C:\\VS 9\\ ;x"},
      {u"VisualStudioDotNet", u"Empty", u""},
      {u"VisualStudioDotNet", u"Quoted", u"  a "},
      {u"VisualStudioDotNet", u"Path", u"a=b;c"},
      {u"VisualStudioDotNet", u"Dup", u"1"},
      {u"Other", u"v4.0", u"x"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(ini.Get(row.Section, row.Key), row.Value) << text::ToUtf8(row.Key);
  EXPECT_EQ(ini.Get(u"Other", u"Path"), std::nullopt);
  EXPECT_THAT(ini.Sections(), ElementsAre(u"VisualStudioDotNet", u"Other"));
  EXPECT_THAT(ini.Keys(u"visualstudiodotnet"),
              ElementsAre(u"MSDevPath2008", u"Empty", u"Quoted", u"Path", u"dup"));
}

TEST(IniText, ChangesOnlyWhatIsSet) {
  const struct {
    const char* Name;
    std::u16string_view Before, Section, Key, Value, After;
  } cases[] = {
      {"an empty file gets section and key", u"", u"S", u"K", u"v", u"[S]\nK=v\n"},
      {"the same value leaves every blank", u"[S]\n K =  v  \n", u"s", u"k", u"v", u"[S]\n K =  v  \n"},
      {"a value changes behind its blanks", u"[S]\n K =  v ;c\n", u"s", u"k", u"w", u"[S]\n K =  w\n"},
      {"comments and order stay", u"; a\r\n[S]\r\n; b\r\nK=1\r\nL=2\r\n; c\r\n", u"S", u"K", u"9",
       u"; a\r\n[S]\r\n; b\r\nK=9\r\nL=2\r\n; c\r\n"},
      {"a new key goes behind the last of its section, in the file's line ends",
       u"[S]\r\nK=1\r\n; tail\r\n\r\n[T]\r\n", u"S", u"L", u"2",
       u"[S]\r\nK=1\r\nL=2\r\n; tail\r\n\r\n[T]\r\n"},
      {"a section without keys gets its first", u"[S]\n\n[T]\nA=1\n", u"S", u"K", u"1",
       u"[S]\nK=1\n\n[T]\nA=1\n"},
      {"a last line without end gets one", u"[S]\nK=1", u"S", u"L", u"2", u"[S]\nK=1\nL=2\n"},
      {"a new section stands apart", u"[S]\nK=1\n", u"T", u"A", u"1", u"[S]\nK=1\n\n[T]\nA=1\n"},
      {"a section in two places grows at its end", u"[S]\nA=1\n[T]\n[S]\nB=2\n", u"S", u"C", u"3",
       u"[S]\nA=1\n[T]\n[S]\nB=2\nC=3\n"},
      {"of two equal keys the first counts", u"[S]\nK=1\nK=2\n", u"S", u"K", u"3", u"[S]\nK=3\nK=2\n"},
      {"blanks at the ends need quotes", u"[S]\nK=1\n", u"S", u"K", u" a ", u"[S]\nK=\" a \"\n"},
      {"an emptied value keeps its key", u"[S]\nK=1\n", u"S", u"K", u"", u"[S]\nK=\n"},
  };
  for (const auto& row : cases) {
    auto ini = Parsed(row.Before);
    ini.Set(row.Section, row.Key, row.Value);
    EXPECT_EQ(text::ToUtf8(ini.Text()), text::ToUtf8(row.After)) << row.Name;
    auto again = Parsed(ini.Text());
    EXPECT_EQ(again.Get(row.Section, row.Key), row.Value) << row.Name;
    again.Set(row.Section, row.Key, row.Value);
    EXPECT_EQ(again.Text(), ini.Text()) << row.Name << ": not idempotent";
  }
}

TEST(IniText, ReadsBackEveryValueThatItTakes) {
  for (const std::u16string_view value :
       {u"", u"plain", u" ", u"\t", u"\"", u"\"\"", u"\"a\"", u" \"a\" ", u"\"a", u"; no comment",
        u"[no section]", u"a = b", u"\u00E9\u4E2D"}) {
    TIniText ini;
    ini.Set(u"S", u"K", value);
    EXPECT_EQ(Parsed(ini.Text()).Get(u"S", u"K"), value) << text::ToUtf8(value);
  }
}

TEST(IniText, RefusesWhatOneLineCannotHold) {
  const struct {
    std::u16string_view Section, Key, Value;
  } cases[] = {{u"", u"K", u"v"},   {u"a]", u"K", u"v"}, {u"S", u"", u"v"},     {u"S", u"a=b", u"v"},
               {u"S", u"[k", u"v"}, {u"S", u";k", u"v"}, {u"S", u"K", u"a\nb"}, {u" S", u"K", u"v"}};
  for (const auto& row : cases) {
    TIniText ini;
    EXPECT_THROW(ini.Set(row.Section, row.Key, row.Value), EKxException)
        << text::ToUtf8(row.Section) << "." << text::ToUtf8(row.Key);
    EXPECT_EQ(ini.Text(), u"");
  }
}

TEST(IniText, NamesFileAndLineOfAnError) {
  const struct {
    std::u16string_view Text;
    const char* Message;
  } cases[] = {
      {u"[S]\nnonsense\n", "options.ini(2): Expected [Section], Key=Value or a comment."},
      {u"\n\n[S\n", "options.ini(3): The section's name has no closing bracket."},
      {u"[ ]", "options.ini(1): The section has no name."},
      {u"; c\r\nK=1\r\n", "options.ini(2): The value stands before the first [Section]."},
      {u"[S]\n = 1", "options.ini(2): The value has no key."},
  };
  for (const auto& row : cases) {
    try {
      Parsed(row.Text);
      ADD_FAILURE() << row.Message;
    } catch (const EKxParseError& error) {
      EXPECT_STREQ(error.what(), row.Message);
    }
  }
}

TEST(IniText, RemovesOneLine) {
  auto ini = Parsed(u"[S]\nA=1\n; c\nB=2\n");
  ini.Remove(u"s", u"a");
  ini.Remove(u"s", u"missing");
  EXPECT_EQ(ini.Text(), u"[S]\n; c\nB=2\n");
}

} // namespace
} // namespace kx::tests
