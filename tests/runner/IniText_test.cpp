#include "program/runner/IniText.h"

#include "foundation/text/Encoding.h"
#include "tests/support/Failure.h"

#include <gtest/gtest.h>

namespace kx::tests {
namespace {

TIniText Parsed(std::u16string_view text) {
  TIniText ini;
  ini.Parse(text, u"options.ini");
  return ini;
}

TEST(IniText, ChangesOnlyWhatIsSet) {
  const std::tuple<const char*, std::u16string, std::u16string_view, std::u16string_view, std::u16string>
      cases[] = {
          // of the section S: before; key and value; after
          {"an empty file gets section and key", u"", u"K", u"v", u"[S]\nK=v\n"},
          {"the same value leaves every blank", u"[s]\n K =  v  \n", u"k", u"v", u"[s]\n K =  v  \n"},
          {"comments and order stay", u"; a\r\n[S]\r\n; b\r\nK=1\r\nL=2\r\n; c\r\n", u"K", u"9",
           u"; a\r\n[S]\r\n; b\r\nK=9\r\nL=2\r\n; c\r\n"},
          {"a new key goes behind the last of its section, in the file's line ends",
           u"[S]\r\nK=1\r\n; tail\r\n\r\n[T]\r\n", u"L", u"2", u"[S]\r\nK=1\r\nL=2\r\n; tail\r\n\r\n[T]\r\n"},
          {"a last line without end gets one", u"[S]\nK=1", u"L", u"2", u"[S]\nK=1\nL=2\n"},
          {"of two equal keys the first counts", u"[S]\nK=1\nK=2\n", u"K", u"3", u"[S]\nK=3\nK=2\n"},
          {"a section in pieces grows at its last one", u"[S]\nK=1\n[T]\nL=2\n[s]\n;c\n[T]\n", u"L", u"3",
           u"[S]\nK=1\n[T]\nL=2\n[s]\nL=3\n;c\n[T]\n"},
          {"blanks at the ends need quotes", u"[S]\nK=1\n", u"K", u" a ", u"[S]\nK=\" a \"\n"},
          {"a quote alone is one", u"[S]\n", u"K", u"\"", u"[S]\nK=\"\n"},
          {"a quote at the beginning", u"[S]\n", u"K", u"\"a", u"[S]\nK=\"a\n"},
          {"a quote at the end", u"[S]\n", u"K", u"a\"", u"[S]\nK=a\"\n"},
          {"a comment ends the text", u"; a", u"K", u"1", u"; a\n\n[S]\nK=1\n"},
          {"a blank line ends it", u"[T]\n\n", u"K", u"1", u"[T]\n\n[S]\nK=1\n"},
          {"quotes in quotes", u"[S]\n", u"K", u"\"a\"", u"[S]\nK=\"\"a\"\"\n"},
      };
  for (const auto& [name, before, key, value, after] : cases) {
    auto ini = Parsed(before);
    ini.Set(u"S", key, value);
    EXPECT_EQ(text::ToUtf8(ini.Text()), text::ToUtf8(after)) << name;
    EXPECT_EQ(Parsed(ini.Text()).Get(u"S", key), value) << name;
  }
}

TEST(IniText, RefusesWhatItCouldNotReadBack) {
  const std::string end = " cannot be kept in the options store.";
  const std::tuple<std::u16string_view, std::u16string_view, std::u16string_view, std::string> cases[] = {
      {u"S]", u"K", u"v", "The section name \"S]\"" + end},
      {u"", u"K", u"v", "The section name \"\"" + end},
      {u" S", u"K", u"v", "The section name \" S\"" + end},
      {u"S\n", u"K", u"v", "The section name \"S\n\"" + end},
      {u"S\r", u"K", u"v", "The section name \"S\r\"" + end},
      {u"S", u"K\nL", u"v", "The key \"K\nL\"" + end},
      {u"S", u"#K", u"v", "The key \"#K\"" + end},
      {u"S", u"[K", u"v", "The key \"[K\"" + end},
      {u"S", u"", u"v", "The key \"\"" + end},
      {u"S", u"a=b", u"v", "The key \"a=b\"" + end},
      {u"S", u";K", u"v", "The key \";K\"" + end},
      {u"S", u"K ", u"v", "The key \"K \"" + end},
      {u"S", u"K", u"a\rb", "A line break in the value \"a\rb\"" + end},
      {u"S", u"K;", u";=[ v", ""},
  };
  for (const auto& [section, key, value, message] : cases)
    EXPECT_EQ(FailureOf([&] { TIniText().Set(section, key, value); }), message);
}

TEST(IniText, KnowsWhereItsSectionsEndWhenValuesGo) {
  auto ini = Parsed(u"[S]\nK=1\nL=2\nk=3\n[T]\n[S]\nM=4\n");
  ini.Remove(u"s", u"m");
  ini.Remove(u"S", u"K");
  EXPECT_EQ(ini.Get(u"S", u"K"), u"3");
  EXPECT_EQ(ini.Keys(u"S"), (std::vector<std::u16string>{u"L", u"k"}));
  ini.Set(u"S", u"N", u"5");
  EXPECT_EQ(text::ToUtf8(ini.Text()), "[S]\nL=2\nk=3\n[T]\n[S]\nN=5\n");
  for (const auto* key : {u"k", u"L", u"N"})
    ini.Remove(u"S", key);
  EXPECT_EQ(ini.Keys(u"S"), std::vector<std::u16string>());
  EXPECT_EQ(ini.Sections(), (std::vector<std::u16string_view>{u"S", u"T"}));
  ini.Remove(u"S", u"K"); // what is not there
  ini.Set(u"T", u"K", u"6");
  EXPECT_EQ(text::ToUtf8(ini.Text()), "[S]\n[T]\nK=6\n[S]\n");
}

} // namespace
} // namespace kx::tests
