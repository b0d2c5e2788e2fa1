#include "program/runner/Expressions.h"

#include "foundation/platform/System.h"
#include "tests/runner/TestActions.h"
#include "tests/support/Failure.h"

#include <gtest/gtest.h>

namespace kx::tests {
namespace {

class ExpressionsTest : public testing::Test {
protected:
  ExpressionsTest() {
    Host.Project().FileName = u"/srv/100%x%/nightly.kxproj";
    Host.Project().Variables = {{u"Root", u"/src"},      {u"App", u"%Root%/App.sln"},
                                {u"Both", u"project"},   {u"Local", u"hidden"},
                                {u"A", u"$(b)"},         {u"B", u"%C%"},
                                {u"C", u"%a%"},          {u"Own", u"never"},
                                {u"Broken", u"%Rooot%"}, {u"Mixed.Case_1", u"m"}};
    Host.AddStep(u"", u"Other Build");
  }

  std::u16string Expand(std::u16string_view text) { return Host.Runner.Expand(Step, text); }

  TEmbeddedHost Host;
  TStepAction& Step = Host.AddStep(u"", u"Build");
};

TEST_F(ExpressionsTest, Expand) {
  const std::tuple<const char*, std::u16string_view, std::u16string_view> cases[] = {
      {"plain text", u"C:\\a b\\c.sln", u"C:\\a b\\c.sln"},
      {"both forms", u"%Root%|$(Root)", u"/src|/src"},
      {"letter case is ignored", u"%rOOT%$(MIXED.case_1)", u"/srcm"},
      {"values hold references in turn", u"<%App%>", u"</src/App.sln>"},
      {"a doubled sign stands for one", u"100%% $$(Root) %%Root%%", u"100% $(Root) %Root%"},
      {"signs that open nothing", u"5% of $5, ^(a|b)$ 50 % x % $( $() $(a b) %a-b% $(%.Describe(\"x\"))",
       u"5% of $5, ^(a|b)$ 50 % x % $( $() $(a b) %a-b% $(%.Describe(\"x\"))"},
      {"names that nothing closes", u"%Root $(Root|%Root", u"%Root $(Root|%Root"},
      {"the action's own variables come before the project's, and are not expanded", u"%Local%", u"100%Own%"},
      {"the command line comes before the project", u"%Both% %Nested%", u"command line <set>"},
      {"the host's own, not expanded", u"%ProjectDir%", u"/srv/100%x%"},
      {"constants and enumeration names are numbers", u"$(Blue)-$(red)", u"2-0"},
      {"a function of the action", u"$(Describe(\"x\"))", u"Build<x>"},
      {"of another action, whose name has a blank", u"$(Other Build.Describe(\"y\"))", u"Other Build<y>"},
      {"references and quotes in the argument", u"$(Describe(\"%Root% \"\"a)\"\"\"))", u"Build</src \"a)\">"},
  };
  for (const auto& [name, text, expanded] : cases)
    EXPECT_EQ(text::ToUtf8(Expand(text)), text::ToUtf8(expanded)) << name;
  EXPECT_EQ(Expand(u"%path%"), platform::EnvironmentVariable(u"PATH")) << "the environment comes last";
}

TEST_F(ExpressionsTest, AreBounded) {
  for (int i = 0; i <= 100; ++i)
    Host.Project().Variables.Set(
        {u"D" + text::FromInteger(i), i == 0 ? u"end" : u"%D" + text::FromInteger(i - 1) + u"%"});
  EXPECT_EQ(Expand(u"%D99%"), u"end");
  EXPECT_EQ(FailureOf([&] { Expand(u"%D100%"); }), "The variables refer to each other too deeply.");
  Host.Services.RegisterFunction(
      TStepAction::Class(), u"Again", [](TCustomKxAction& action, std::u16string_view argument) {
        return argument.size() == 16
                   ? u"done"
                   : action.ExpandExpression(u"$(Again(\"" + std::u16string(argument) + u"x\"))");
      });
  EXPECT_EQ(Expand(u"$(Again(\"x\"))"), u"done");
  EXPECT_EQ(FailureOf([&] { Expand(u"$(Again(\"\"))"); }),
            "The function \"Again\" calls itself without end.");
}

TEST_F(ExpressionsTest, SayWhatIsWrong) {
  const std::pair<std::u16string_view, const char*> cases[] = {
      {u"%Roto%", "Unknown name \"Roto\". Did you mean \"Root\"?"},
      {u"%Broken%", "Unknown name \"Rooot\". Did you mean \"Root\"?"},
      {u"%B%", "The variable \"b\" refers to itself: b, C, a, b."},
      {u"$(Descrbe(\"\"))", "The action STEP has no function \"Descrbe\". Did you mean \"Describe\"?"},
      {u"$(Nobody.Describe(\"\"))", "No action is named \"Nobody\"."},
  };
  // The chain names a variable as it was written or declared.
  for (const auto& [text, message] : cases)
    EXPECT_STRCASEEQ(FailureOf([&] { Expand(text); }).c_str(), message);
}

} // namespace
} // namespace kx::tests
