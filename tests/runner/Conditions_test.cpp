#include "program/runner/Conditions.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
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

TEST(Conditions, Hold) {
  const std::pair<const char16_t*, bool> cases[] = {
      {u"true", true},
      {u"No", false},
      {u"0", false},
      {u"-1", true},
      {u"%Empty%", false},
      {u"not %Empty%", true},
      {u"%Ten% == 10.0", true},
      {u"%Ten% < 9", false},
      {u"%Ten%x < 9x", true}, // texts
      {u"9 <= %Ten%", true},
      {u"%Ten%>10", false},
      {u"%Ten%>=10", true},
      {u"%Ten% != \"10\"", false},
      {u"%Empty% == ''", true},
      {u"%Empty%a%Ten% == a10", true},
      {u"Main == \"main\"", true},
      {u"\"a \"\"b\"\"\" == 'a \"b\"'", true},
      {u"'' == ''''", false},
      {u"'100%' == \"100%%\"", true},
      {u"%Text% == 'two words) and \"'", true},
      {u"$(F(\"a b\")) == called", true},
      {u"true or true and false", true},
      {u"(true or true) and false", false},
      {u"not false and false", false},
      {u"not (false and false)", true},
      {u"not not yes AND NOT no", true},
      {u"1.9 < 1.10", false},
      {u"1.9.0 < 1.10.0", false}, // no numbers, so texts
      {u"'and' == and1 or 'or' == \"OR\"", true},
  };
  for (const auto& [text, holds] : cases)
    EXPECT_EQ(Holds(text), holds) << text::ToUtf8(text);
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
      {u"maybe", "\"maybe\" is neither true nor false. Compare it: %Name% == \"maybe\"."},
      {u"true or %Nothing%", "Unknown name."},
      {deep, "The condition is nested too deeply."},
  };
  for (const auto& row : cases)
    EXPECT_EQ(FailureOf([&] { static_cast<void>(Holds(row.first)); }), row.second);
}

} // namespace
} // namespace kx::tests
