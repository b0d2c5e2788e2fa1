#include "program/runner/Conditions.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "tests/support/Failure.h"

#include <gtest/gtest.h>

#include <map>

namespace kx::tests {
namespace {

std::u16string Expand(std::u16string_view reference) {
  static const std::map<std::u16string, std::u16string, std::less<>> values{
      {u"%Ten%", u"10"}, {u"%Empty%", u""}, {u"%Text%", u"two words) and \""}, {u"$(F(\"a b\"))", u"called"}};
  const auto found = values.find(reference);
  if (found == values.end()) throw EExpressionError(u"Unknown name.");
  return found->second;
}

bool Holds(std::u16string_view text) {
  return TCondition(text).Holds(Expand);
}

// Between semicolons; versions are no numbers, so texts.
TEST(Conditions, HoldOrDoNot) {
  const std::pair<bool, std::u16string_view> lists[] = {
      {true, u"true; -1; not %Empty%; %Ten% == 10.0; 9 <= %Ten%; %Ten%>=10; %Empty% == ''; %Ten%x < 9x; "
             u"12345678901234567890 < 12345678901234567891; 007 == 7; "
             u"1.9.0 > 1.10.0; %Empty%a%Ten% == a10; Main == \"main\"; \"a \"\"b\"\"\" == 'a \"b\"'; "
             u"'100%' == \"100%%\"; %Text% == 'two words) and \"'; $(F(\"a b\")) == called; "
             u"true or true and false; not (false and false); not not yes AND NOT no; "
             u"'and' == and1 or 'or' == \"OR\"; ' 10 ' == 10; '' < 5; 00 == 0.0; 10 < 9a; 5 < x; "
             u"true\nor\rfalse; \"a\"%Empty%\"b\" == ab; \"a\"b\"c\" == abc; \"a\"'b' == ab; a\"\" == a"},
      {false,
       u"No; 0; %Empty%; 9007199254740993 == 9007199254740992; %Ten% < 9; %Ten%>10; %Ten% != \"10\"; "
       u"'' == ''''; 1.9 < 1.10; 1.9.0 < 1.10.0; "
       u"(true or true) and false; not false and false; false and true; 5- < 10; x < 5; 5 < ''; 10 > 010; "
       u"-1 > .5; %Empty%=='0'"}};
  for (const auto& [holds, list] : lists)
    for (const auto condition : text::Split(list, u';'))
      EXPECT_EQ(Holds(condition), holds) << text::ToUtf8(condition);
}

TEST(Conditions, AreAsLongAndNestedAsAnybodyWritesThem) {
  const auto nested = [](std::size_t levels) {
    return std::u16string(levels, u'(') + u"true" + std::u16string(levels, u')');
  };
  EXPECT_TRUE(Holds(nested(99)));
  EXPECT_EQ(FailureOf([&] { static_cast<void>(Holds(nested(100))); }), "The condition is nested too deeply.");
  std::u16string many = u"true";
  for (int i = 0; i < 150; ++i)
    many += u" and true";
  EXPECT_TRUE(Holds(many));
}

TEST(Conditions, SayWhereTheyAreWrong) {
  const std::u16string deep(200, u'(');
  const std::pair<std::u16string, std::string> cases[] = {
      {u"", "At the beginning a value is expected."},
      {u"%Ten% ==", "Behind \"%Ten% ==\" a value is expected."},
      {u"%Ten% = 1", "Behind \"%Ten%\" an operator, \"and\" or \"or\" is expected, not \"=\"."},
      {u"%Ten% < > 1", "Behind \"%Ten% <\" a value is expected, not \">\"."},
      {u"true && false", "Behind \"true\" an operator, \"and\" or \"or\" is expected, not \"&&\"."},
      {u"(true", "Behind \"( true\" \")\" is expected."},
      {u"true)", "Behind \"true\" an operator, \"and\" or \"or\" is expected, not \")\"."},
      {u"true and or false", "Behind \"true and\" a value is expected, not \"or\"."},
      {u"1 < 2 < 3", "Behind \"1 < 2\" an operator, \"and\" or \"or\" is expected, not \"<\"."},
      {u"a == \"b", "The quote \" is not closed."},
      {u"\"a\" \"b\"", "Behind \"a\" an operator, \"and\" or \"or\" is expected, not \"b\"."},
      {u"(a == b c", "Behind \"a == b\" \")\" is expected, not \"c\"."},
      {u"a === b", "Behind \"a ==\" a value is expected, not \"=\"."},
      {u"(=1)", "Behind \"(\" a value is expected, not \"=\"."},
      {u"1.2.3", "\"1.2.3\" is neither true nor false. Compare it: %Name% == \"1.2.3\"."},
      {u"maybe", "\"maybe\" is neither true nor false. Compare it: %Name% == \"maybe\"."},
      {u"true or %Nothing%", "Unknown name."},
      {deep, "The condition is nested too deeply."},
  };
  for (const auto& row : cases)
    EXPECT_EQ(FailureOf([&] { static_cast<void>(Holds(row.first)); }), row.second);
}

} // namespace
} // namespace kx::tests
