#include "program/runner/Validation.h"

#include "tests/runner/TestActions.h"

#include <gmock/gmock.h>

namespace kx::tests {
namespace {

using testing::ElementsAre;

class Validation : public testing::Test {
protected:
  // "action/page: message", a line each.
  std::vector<std::string> Found() {
    std::vector<std::string> lines;
    for (const auto& entry : Host.Runner.Validate())
      lines.push_back(text::ToUtf8(entry.Action + u"/" + entry.Page + u": " + entry.Message));
    return lines;
  }
  TActionNode& Loop(std::u16string_view variable) {
    TActionNode& node = Host.Project().AddAction(u"LOOP");
    static_cast<TLoopAction&>(node.Action()).SetLoopVariable(std::u16string(variable));
    return node;
  }

  TEmbeddedHost Host;
};

TEST_F(Validation, NamesAProjectAndALoopWithoutActions) {
  EXPECT_THAT(Found(), ElementsAre("Project/Actions: The project holds no actions. Add one."));
  Loop(u"Item");
  EXPECT_THAT(Found(), ElementsAre("Loop/Actions: The loop holds no actions. Add one."));
}

TEST_F(Validation, TellsWhatEachActionSaysAgainstItself) {
  Host.AddStep(u"", u"None");
  Host.AddStep(u"throws", u"Wild");
  Host.AddStep(u"good", u"Good");
  EXPECT_THAT(Found(), ElementsAre("None/Text: A text has not been set", "Wild/: cannot validate"));
}

TEST_F(Validation, LooksAtEachReferenceByItself) {
  Host.Project().Variables = {{u"Known", u"%FromRun%"}, {u"FromRun", u"x"}, {u"Broken", u"%Nowhere%"}};
  TStepAction& step = Host.AddStep(u"%Known% %Nothing% %Item% %No.where%", u"A");
  step.Lines = {u"fine", u"%Broken%"};
  step.Secret = u"%Secret%";
  TActionNode& loop = Loop(u"Item");
  Host.AddStep(u"%Item%", u"Inside", &loop);
  Host.AddStep(u"%Item%", u"Behind");
  EXPECT_THAT(Found(), ElementsAre("A/Text: Unknown name \"Nothing\".", "A/Text: Unknown name \"Item\".",
                                   "A/Text: Unknown name \"No.where\".", "A/Lines: Unknown name \"Nowhere\".",
                                   "Behind/Text: Unknown name \"Item\"."));
}

TEST_F(Validation, NamesEachCircleOfVariablesOnce) {
  Host.Project().Variables = {
      {u"Lead", u"%A%"}, {u"A", u"%B%"}, {u"B", u"%A%"}, {u"Own", u"%Own%"}, {u"Fine", u"x"}};
  Host.AddStep(u"good", u"Good");
  EXPECT_THAT(Found(),
              ElementsAre(testing::StartsWith("Project/Variables: The variable \"A\" refers to itself"),
                          testing::StartsWith("Project/Variables: The variable \"Own\" refers")));
}

} // namespace
} // namespace kx::tests
