#include "program/runner/ProjectFile.h"

#include "foundation/platform/FileLock.h"
#include "tests/runner/TestActions.h"

#include <array>
#include <gtest/gtest.h>

namespace kx::tests {
namespace {

std::string Project(std::string_view actions) {
  return "<BuildProject>\n  <Actions>\n" + std::string(actions) + "\n  </Actions>\n</BuildProject>\n";
}

constexpr std::array<std::u16string_view, 1> Number{u"Number"};

// A project in p.kxproj, of which the first action is looked at.
class TSavedProject {
public:
  TSavedProject() = default; // nothing is loaded yet
  explicit TSavedProject(std::string_view bytes) { File.Load(Host.Write("p.kxproj", bytes)); }
  TEmbeddedHost Host;
  TProjectFile File{Host.Project()};

  const TActionNode& Node() { return *Host.Project().Actions().front(); }
  TStepAction& Action() { return static_cast<TStepAction&>(Node().Action()); }
  std::string OnDisk() const { return Host.Read("p.kxproj"); }
  bool Count(const TSavePatience& patience = {}) {
    return static_cast<bool>(File.Change(
        Node(), Number, [this] { ++Action().Number; }, patience));
  }
};

// Loads the text, lets `change` work on the first action and gives the text to be saved.
std::string Changed(std::string_view before, const std::function<void(TStepAction&)>& change) {
  TSavedProject project(before);
  change(project.Action());
  const std::string text = project.File.Text();
  EXPECT_TRUE(project.File.Save());
  EXPECT_EQ(project.File.Text(), text) << "saving twice changes more";
  EXPECT_EQ(project.OnDisk(), text);
  return text;
}

TEST(ProjectFileSave, OnlyTheChangedActionIsWritten) {
  const std::string untouched =
      "\xEF\xBB\xBF<?xml version='1.0'?>\r\n<!-- <Action> -->\n<BuildProject\tName='a>b' >\r\n"
      " <Actions ><Action Type='STEP'\r\n/> <![CDATA[ ]]> <?pi <x> ?>\r\n"
      "  <Action Type=\"STEP\"><Text>&#65;\r\n</Text ><Lines>\r\n x\r\n</Lines></Action>"
      "</Actions></BuildProject>\r\n<!-- end -->";
  const auto windows = [](const std::string& rest) {
    return "\xEF\xBB\xBF<BuildProject>\r\n\t<Actions>\r\n\t\t<Action Type=\"STEP\">\r\n\t\t\t" + rest +
           "\r\n\t\t</Action>\r\n\t</Actions>\r\n</BuildProject>";
  };
  const auto action = [](const std::string& rest) { return Project("    <Action Type='STEP'" + rest); };
  const auto numbered = [&action](const char* number) {
    return action(" Name='é' >\n      <Number>" + std::string(number) +
                  "</Number>  <!-- the build -->\n      <Text>t</Text> <!-- stays here -->\n\n"
                  "    </Action><Action Type='STEP'/>");
  };
  const auto setNumber = [](TStepAction& a) { a.Number = 2; };
  const auto setBlue = [](TStepAction& a) { a.Colour = TColour::Blue; };
  const auto setLines = [](TStepAction& a) { a.Lines = {u"{id of x}"}; };
  const auto setText = [](TStepAction& a) { a.Text = u"a\r\n\u00E9&<\"\r"; };
  const struct {
    const char* Name;
    std::string Before;
    std::function<void(TStepAction&)> Change;
    std::string After;
  } cases[] = {
      {"nothing", untouched, [](TStepAction&) {}, untouched},
      {"a number where it stands", numbered("1"), setNumber, numbered("2")},
      {"what the file did not state behind the present elements, in declaration order",
       action(">\n      <Flag>False</Flag> <!-- stays here -->\n    </Action>"),
       [](TStepAction& a) {
         a.Colour = TColour::Blue;
         a.Number = 2;
       },
       action(">\n      <Flag>False</Flag> <!-- stays here -->\n      <Number>2</Number>\n"
              "      <Colour Name=\"Blue\">2</Colour>\n    </Action>")},
      {"an empty element opens", action(" />"), setNumber,
       action(">\n      <Number>2</Number>\n    </Action>")},
      {"an enumeration by name becomes its ordinal with the name beside it",
       action("><Colour>red</Colour></Action>"), setBlue,
       action("><Colour Name=\"Blue\">2</Colour></Action>")},
      {"what the file states stays although it is the default now", action("><Number>1</Number></Action>"),
       [](TStepAction& a) { a.Number = 7; }, action("><Number>7</Number></Action>")},
      {"lists stay as they are written", action("><Lines>\n x\n</Lines></Action>"), setLines,
       action("><Lines>\n x\n</Lines></Action>")},
      {"a text with references is not replaced by what they gave", action("><Text>%Major%|1</Text></Action>"),
       setText, action("><Text>%Major%|1</Text></Action>")},
      {"tabs, line ends and the mark", windows("<Text>old</Text>"), setText,
       windows("<Text>a\r\n\xC3\xA9&amp;&lt;\"&#13;</Text>")},
      {"in a new element", windows("<Text/>"), setNumber, windows("<Text/>\r\n\t\t\t<Number>2</Number>")},
  };
  for (const auto& row : cases)
    EXPECT_EQ(Changed(row.Before, row.Change), row.After) << row.Name;
}

TEST(ProjectFileSave, AddedActionsAreWrittenWithAllThatTheyMean) {
  TSavedProject project("<BuildProject>\n</BuildProject>");
  const auto text = [](const std::string& more) {
    return "<BuildProject>\n  <Actions>\n    <Action Type=\"LOOP\" Name=\"Loop\" "
           "ContinueOnError=\"ignore\">\n"
           "      <LoopVariable>P</LoopVariable>\n      <Values>\n        <Line>a</Line>\n        "
           "<Line>b&lt;</Line>\n"
           "      </Values>\n      <Actions>\n        <Action Type=\"STEP\" ContinueOnError=\"true\">\n"
           "          <Number>8</Number>\n          <Colour Name=\"Blue\">2</Colour>\n        </Action>\n" +
           more +
           "      </Actions>\n    </Action>\n    <Action Type=\"LOOP\" Name=\"Loop\">\n      "
           "<LoopVariable>P</LoopVariable>\n";
  };
  TActionNode& loop = project.Host.AddLoop({u"a", u"b<"});
  loop.SetOnFailure(TOnFailure::Ignore);
  TStepAction& step = project.Host.AddStep(u"", u"", &loop);
  loop.Children().front()->SetOnFailure(TOnFailure::Continue);
  step.Number = 8;
  step.Colour = TColour::Blue;
  TActionNode& other = project.Host.AddLoop({});
  const std::string end = "    </Action>\n  </Actions>\n</BuildProject>";
  EXPECT_TRUE(project.File.Save());
  EXPECT_EQ(project.OnDisk(), text("") + end);
  for (TActionNode* parent : {&loop, &other})
    project.Host.AddStep(u"t", u"", parent);
  EXPECT_TRUE(project.File.Save());
  const std::string added = "        <Action Type=\"STEP\">\n          <Text>t</Text>\n        </Action>\n";
  EXPECT_EQ(project.OnDisk(), text(added) + "      <Actions>\n" + added + "      </Actions>\n" + end);
}

TEST(ProjectFileSave, AClearSecretIsReplacedByItsEncryptedForm) {
  TSavedProject project(
      Project("    <Action Type=\"STEP\">\n      <Password>hush</Password>\n    </Action>"));
  ASSERT_TRUE(project.File.Save());
  const TStepAction& step = project.Action();
  EXPECT_EQ(project.OnDisk(), Project("    <Action Type=\"STEP\">\n      <_Password>" +
                                      text::ToUtf8(step.Secret) + "</_Password>\n    </Action>"));
  EXPECT_EQ(step.DecryptString(step.Secret), u"hush");
  auto tampered = step.Secret;
  tampered[8] = tampered[8] == u'A' ? u'B' : u'A';
  EXPECT_EQ(step.DecryptString(tampered), u"");
}

TEST(ProjectFileSave, DoesNotOverwriteWhatSomebodyElseHasEdited) {
  TSavedProject project(Project("<Action Type=\"STEP\"/>"));
  project.Action().Number = 8;
  project.Host.Write("p.kxproj", "<BuildProject/>");
  EXPECT_FALSE(project.File.Save());
  EXPECT_EQ(project.OnDisk(), "<BuildProject/>");
}

// Two actions of one type: only their names tell them apart.
std::string Named(const std::string& number, const std::string& name = "A", const std::string& others = "") {
  return Project(others + "    <Action Type=\"STEP\" Name=\"" + name + "\">\n      <Number>" + number +
                 "</Number>\n    </Action>\n    <Action Type=\"STEP\" Name=\"B\"/>");
}

TEST(ProjectFileSave, NumbersAreCountedInTheFileAsItIsThen) {
  const std::string comment = "    <!-- theirs -->\n    <Action Type=\"STEP\" Name=\"C\"/>\n";
  const std::string twin = "    <Action Type=\"STEP\" Name=\"A\"/>\n";
  const std::tuple<const char*, std::string, std::string> cases[] = {
      // theirs, and what it becomes; empty: refused
      {"nobody else has been there", Named("5"), Named("6")},
      {"another run has counted", Named("8"), Named("9")},
      {"an editor has put something before it, too", Named("8", "A", comment), Named("9", "A", comment)},
      {"the action has another name now", Named("5", "Z"), ""},
      {"nobody knows which of two it is", Named("5", "A", twin), ""},
      {"it cannot be read any more", "<BuildProject>", ""},
  };
  for (const auto& [name, theirs, after] : cases) {
    SCOPED_TRACE(name);
    TSavedProject project(Named("5"));
    project.Host.Write("p.kxproj", theirs);
    EXPECT_EQ(project.Count(), !after.empty());
    EXPECT_EQ(project.OnDisk(), after.empty() ? theirs : after);
    if (after.empty()) {
      EXPECT_EQ(project.Action().Number, 5);
      continue;
    }
    // What is stored is not the run's to save any more: others may have counted on.
    project.Host.Write("p.kxproj", Named("20"));
    EXPECT_TRUE(project.File.Save());
    EXPECT_EQ(project.OnDisk(), Named("20"));
    EXPECT_TRUE(project.Count());
    EXPECT_EQ(project.OnDisk(), Named("21"));
  }
}

TEST(ProjectFileSave, WhatAnEditorHasNotSavedStaysOutOfTheFile) {
  const std::string comment = "    <!-- mine -->\n";
  const std::tuple<const char*, std::string, std::string, std::string> cases[] = {
      // unsaved; the file afterwards, and the text
      {"something else", Named("5", "A", comment), Named("9"), Named("9", "A", comment)},
      {"the number itself", Named("30"), Named("31"), Named("31")},
      {"an action that is new", Named("5", "New"), Named("8"), Named("6", "New")},
  };
  for (const auto& [name, unsaved, fileAfter, textAfter] : cases) {
    TSavedProject project;
    project.File.LoadBytes(unsaved, project.Host.Write("p.kxproj", Named("8")), Named("5"));
    EXPECT_TRUE(project.Count()) << name;
    EXPECT_EQ(project.OnDisk(), fileAfter) << name;
    EXPECT_EQ(project.File.Text(), textAfter) << name;
  }
}

TEST(ProjectFileSave, WaitsForWhoeverIsSavingAndSaysSo) {
  TSavedProject project(Named("5"));
  const std::u16string file = project.Host.Path("p.kxproj");
  const auto held = platform::FileLock::Acquire(file, std::chrono::seconds(0));
  ASSERT_TRUE(held);
  std::vector<std::u16string> said;
  EXPECT_FALSE(project.Count({.Longest = std::chrono::milliseconds(900),
                              .Say = [&](const std::u16string& message) { said.push_back(message); }}));
  EXPECT_EQ(project.Action().Number, 5);
  ASSERT_EQ(said.size(), 1U);
  EXPECT_TRUE(said.front().starts_with(u"Waiting for " + file + u", held by process "));
}

TEST(ProjectFileSave, ARunStoresANumberBeforeItIsUsed) {
  for (const bool isDry : {false, true}) {
    std::string seen;
    TEmbeddedHost host(isDry);
    TProjectFile file(host.Project());
    file.Load(host.Write("p.kxproj", Project("<Action Type='STEP'><Text>count</Text></Action>")));
    host.Runner.StoreIn(file);
    TStepAction::Deeds()[u"count"] = [&](TStepAction& action) {
      action.ChangeStored(Number, [&action] { ++action.Number; });
      seen = host.Read("p.kxproj");
      return true;
    };
    host.Run();
    EXPECT_EQ(seen.find("<Number>8<") != std::string::npos, !isDry);
  }
}

} // namespace
} // namespace kx::tests
