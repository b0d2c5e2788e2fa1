#include "program/runner/Validation.h"

#include "contract/LookAhead.h"
#include "tests/runner/TestActions.h"

#include <gmock/gmock.h>

namespace kx::tests {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

class Validation : public testing::Test {
protected:
  // "action/page: message", a line each.
  std::vector<std::string> Found() {
    std::vector<std::string> lines;
    for (const auto& entry : Host.Runner.Validate())
      lines.push_back(text::ToUtf8(entry.Action + u"/" + entry.Page + u": " + entry.Message));
    EXPECT_THAT(Host.Sink.Lines, testing::IsEmpty()) << "nothing may run";
    return lines;
  }

  TEmbeddedHost Host;
};

TEST_F(Validation, TellsWhatEachActionSaysAgainstItself) {
  EXPECT_THAT(Found(), ElementsAre("Project/Actions: The project holds no actions. Add one."));
  TActionNode& loop = Host.AddLoop({});
  EXPECT_THAT(Found(), ElementsAre("Loop/Actions: The loop holds no actions. Add one."));
  Host.AddStep(u"", u"None", &loop);
  Host.AddStep(u"throws", u"Wild");
  Host.AddStep(u"good", u"Good");
  TStepAction::Deeds()[u"validate mute"] = [](TStepAction& mute) { return !mute.IsValidating(); };
  Host.AddStep(u"mute", u"Mute");
  EXPECT_THAT(Found(), ElementsAre("None/Text: A text has not been set", "Wild/: cannot validate",
                                   "Mute/: The settings are not valid."));
}

class TChangeAction : public TStepAction {
public:
  void GetFilesToChange(text::TStringList& files) override { files.Add(Text); }
  void LookAhead(IKxActionValidationError& /*errors*/) override {
    if (Text.empty()) throw EKxException(u"no file to look at");
  }
};

TEST_F(Validation, TellsWhichFilesWillBeChangedAndWhichCannot) {
  Host.Services.RegisterAction(u"CHANGE", u"Tests", ClassNamed<TChangeAction>(u"TChangeAction"));
  const auto add = [this](std::u16string_view name, const std::u16string& file, TActionNode* loop) {
    TActionNode& node = Host.Project().AddAction(u"CHANGE", loop);
    node.SetName(name);
    node.Set(u"Text", file);
  };
  add(u"none", u"", nullptr);
  EXPECT_THAT(Found(), testing::Contains("none/: no file to look at"));
  Host.Project().FindNamed(u"none")->Set(u"Text", Host.Write("a.txt", ""));
  add(u"hush!", Host.Path("hush!/b.txt"), &Host.AddLoop({}));
  TStepAction& step = Host.AddStep(u"good");
  step.Secret = step.EncryptString(u"hush!");
  EXPECT_EQ(Host.Runner.FilesToChange(), (text::TStringList{Host.Path("a.txt"), Host.Path("hush!/b.txt")}));
  const auto notes = Host.Runner.CheckFilesToChange();
  ASSERT_EQ(notes.size(), 1U);
  EXPECT_EQ(notes[0].Action, u"***");
  EXPECT_THAT(text::ToUtf8(notes[0].Message), testing::HasSubstr("***"));
}

class TLookingAction : public TStepAction {
public:
  void LookAhead(IKxActionValidationError& errors) override {
    const auto* run = dynamic_cast<const IKxForeseenRun*>(&errors);
    errors.Add(u"", run != nullptr && run->MayMakeFilesBefore() ? u"may be made" : u"is not there", nullptr);
  }
};

TEST_F(Validation, TellsWhetherActionsOfOtherKindsRunBefore) {
  Host.Services.RegisterAction(u"LOOK", u"Tests", ClassNamed<TLookingAction>(u"TLookingAction"));
  const auto add = [this](std::u16string_view name, TActionNode* loop = nullptr) {
    TActionNode& node = Host.Project().AddAction(u"LOOK", loop);
    node.SetName(name);
    node.Set(u"Text", u"x");
  };
  add(u"first");
  add(u"of its own kind");
  TActionNode& loop = Host.AddLoop({u"1"});
  add(u"in a loop", &loop);
  Host.AddStep(u"make", u"make", &loop);
  add(u"behind", &loop);
  add(u"last");
  EXPECT_THAT(Found(), ElementsAre("first/: is not there", "of its own kind/: is not there",
                                   "in a loop/: is not there", "behind/: may be made", "last/: may be made"));
}

TEST_F(Validation, LooksAtEachReferenceByItself) {
  Host.Project().Variables = {{u"Known", u"%FromRun%"}, {u"FromRun", u"x"}, {u"Broken", u"%Nowhere%"}};
  TStepAction& step = Host.AddStep(u"%Known% %Nothing% %P% %No.where%", u"A");
  step.Lines = {u"fine", u"%Broken%"};
  step.Secret = u"%Secret%";
  Host.AddStep(u"%P%", u"Inside", &Host.AddLoop({}));
  Host.AddStep(u"%P%", u"Behind");
  EXPECT_THAT(Found(), ElementsAre("A/Text: Unknown name \"Nothing\".", "A/Text: Unknown name \"P\".",
                                   "A/Text: Unknown name \"No.where\".", "A/Lines: Unknown name \"Nowhere\".",
                                   "Behind/Text: Unknown name \"P\"."));
}

TEST_F(Validation, NamesEachCircleOfVariablesOnce) {
  // A loop's variable hides one of the project's.
  Host.Project().Variables = {{u"Lead", u"%A%"},  {u"A", u"%B%"},        {u"B", u"%A%"},
                              {u"Own", u"%Own%"}, {u"Round", u"%Loop%"}, {u"Loop", u"%Round%"},
                              {u"Fine", u"x"}};
  Host.AddStep(u"good", u"Good", &Host.AddLoop({}, nullptr, u"Loop"));
  EXPECT_THAT(Found(), ElementsAre(StartsWith("Project/Variables: The variable \"A\" refers to itself"),
                                   StartsWith("Project/Variables: The variable \"Own\" refers")));
}

} // namespace
} // namespace kx::tests
