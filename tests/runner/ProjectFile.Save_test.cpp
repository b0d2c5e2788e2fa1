#include "program/runner/ProjectFile.h"

#include "foundation/platform/FileLock.h"
#include "tests/runner/TestActions.h"

#include <array>
#include <gmock/gmock.h>

namespace kx::tests {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string Project(std::string_view actions) {
  return "<BuildProject>\n  <Actions>\n" + std::string(actions) + "\n  </Actions>\n</BuildProject>\n";
}

class ProjectFileSave : public testing::Test {
protected:
  // Loads the text, lets `change` work on the first action and gives the text to be saved.
  std::string Changed(std::string_view before, const std::function<void(TStepAction&)>& change) {
    TEmbeddedHost host;
    TProjectFile file(host.Project());
    file.Load(host.Write("p.kxproj", before));
    change(static_cast<TStepAction&>(host.Project().Actions().front()->Action()));
    const std::string text = file.Text();
    EXPECT_TRUE(file.Save());
    EXPECT_EQ(file.Text(), text) << "saving twice changes more";
    std::string saved = host.Read("p.kxproj");
    EXPECT_EQ(saved, text);
    ExpectUntouched(saved);
    return saved;
  }

  static void ExpectUntouched(std::string_view saved) {
    TEmbeddedHost again;
    TProjectFile file(again.Project());
    file.LoadBytes(std::string(saved), u"/p/p.kxproj");
    EXPECT_EQ(file.Text(), saved) << "what was saved does not read back unchanged";
  }
};

TEST_F(ProjectFileSave, AnUntouchedProjectKeepsEveryByte) {
  const std::string text =
      "\xEF\xBB\xBF<?xml version='1.0'?>\r\n<!-- <Action> -->\n<BuildProject\tName='a>b' >\r\n"
      " <Actions ><Action Type='STEP'\r\n/> <![CDATA[ ]]> <?pi <x> ?>\r\n"
      "  <Action Type=\"STEP\"><Text>&#65;\r\n</Text ><Lines>\r\n x\r\n</Lines></Action>"
      "</Actions></BuildProject>\r\n<!-- end -->";
  EXPECT_EQ(Changed(text, [](TStepAction&) {}), text);
}

TEST_F(ProjectFileSave, OnlyTheChangedActionIsWritten) {
  const struct {
    const char* Name;
    std::string Before;
    std::function<void(TStepAction&)> Change;
    std::string After;
  } cases[] = {
      {"a number where it stands",
       Project("    <!-- first --><Action  Type='STEP' >\n"
               "      <Number>1</Number>  <!-- the build -->\n"
               "      <Text>t</Text> <!-- stays here -->\n\n    </Action><Action Type='STEP'/>"),
       [](TStepAction& a) { a.Number = 2; },
       Project("    <!-- first --><Action  Type='STEP' >\n"
               "      <Number>2</Number>  <!-- the build -->\n"
               "      <Text>t</Text> <!-- stays here -->\n\n    </Action><Action Type='STEP'/>")},
      {"what the file did not state behind the present elements, in declaration order",
       Project("    <Action Type='STEP'>\n      <Flag>False</Flag> <!-- stays here -->\n    </Action>"),
       [](TStepAction& a) {
         a.Colour = TColour::Blue;
         a.Number = 2;
       },
       Project("    <Action Type='STEP'>\n      <Flag>False</Flag> <!-- stays here -->\n"
               "      <Number>2</Number>\n      <Colour Name=\"Blue\">2</Colour>\n    </Action>")},
      {"an empty element opens", Project("    <Action Type=\"STEP\" />"),
       [](TStepAction& a) { a.Number = 2; },
       Project("    <Action Type=\"STEP\">\n      <Number>2</Number>\n    </Action>")},
      {"an enumeration by name becomes its ordinal with the name beside it",
       Project("    <Action Type=\"STEP\">\n      <Colour>red</Colour>\n    </Action>"),
       [](TStepAction& a) { a.Colour = TColour::Blue; },
       Project("    <Action Type=\"STEP\">\n      <Colour Name=\"Blue\">2</Colour>\n    </Action>")},
      {"what the file states stays although it is the default now",
       Project("    <Action Type=\"STEP\"><Number>1</Number></Action>"), [](TStepAction& a) { a.Number = 7; },
       Project("    <Action Type=\"STEP\"><Number>7</Number></Action>")},
      {"lists stay as they are written", Project("    <Action Type=\"STEP\"><Lines>\n x\n</Lines></Action>"),
       [](TStepAction& a) { a.Lines = {u"{id of x}"}; },
       Project("    <Action Type=\"STEP\"><Lines>\n x\n</Lines></Action>")},
      {"a text with references is not replaced by what they gave",
       Project("    <Action Type=\"STEP\"><Text>%Major%|1</Text></Action>"),
       [](TStepAction& a) { a.Text = u"4|2"; },
       Project("    <Action Type=\"STEP\"><Text>%Major%|1</Text></Action>")},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.Name);
    EXPECT_EQ(Changed(row.Before, row.Change), row.After);
  }
}

TEST_F(ProjectFileSave, KeepsTabsLineEndsAndTheMark) {
  const auto file = [](std::string_view text, std::string_view added) {
    return "\xEF\xBB\xBF<BuildProject>\r\n\t<Actions>\r\n\t\t<Action Type=\"STEP\">\r\n\t\t\t" +
           std::string(text) + std::string(added) + "\r\n\t\t</Action>\r\n\t</Actions>\r\n</BuildProject>";
  };
  EXPECT_EQ(Changed(file("<Text>old</Text>", ""),
                    [](TStepAction& a) {
                      a.Text = u"a\r\n\u00E9&<\"\r";
                      a.Number = 8;
                    }),
            file("<Text>a\r\n\xC3\xA9&amp;&lt;\"&#13;</Text>", "\r\n\t\t\t<Number>8</Number>"));
}

TEST_F(ProjectFileSave, AClearSecretIsReplacedByItsEncryptedForm) {
  TEmbeddedHost host;
  TProjectFile file(host.Project());
  file.Load(host.Write("p.kxproj", Project("    <Action Type=\"STEP\">\n      <Password>hush</Password>\n"
                                           "    </Action>")));
  ASSERT_TRUE(file.Save());
  const std::string saved = host.Read("p.kxproj");
  EXPECT_THAT(saved, Not(HasSubstr("hush")));
  const auto& step = static_cast<TStepAction&>(host.Project().Actions().front()->Action());
  EXPECT_THAT(saved, HasSubstr("<_Password>" + text::ToUtf8(step.Secret) + "</_Password>"));
  EXPECT_EQ(step.DecryptString(step.Secret), u"hush");
  auto tampered = step.Secret;
  tampered[8] = tampered[8] == u'A' ? u'B' : u'A';
  EXPECT_EQ(step.DecryptString(tampered), u"");
  ExpectUntouched(saved);
}

TEST_F(ProjectFileSave, DoesNotOverwriteWhatSomebodyElseHasEdited) {
  TEmbeddedHost host;
  TProjectFile file(host.Project());
  file.Load(host.Write("p.kxproj", Project("<Action Type=\"STEP\"/>")));
  static_cast<TStepAction&>(host.Project().Actions().front()->Action()).Number = 8;
  host.Write("p.kxproj", "<BuildProject/>");
  EXPECT_FALSE(file.Save());
  EXPECT_EQ(host.Read("p.kxproj"), "<BuildProject/>");
}

// Two actions of one type: only their names tell them apart.
std::string Named(std::string_view number, std::string_view name = "A", std::string_view others = "") {
  return Project(std::string(others) + "    <Action Type=\"STEP\" Name=\"" + std::string(name) +
                 "\">\n      <Number>" + std::string(number) +
                 "</Number>\n    </Action>\n    <Action Type=\"STEP\" Name=\"B\"/>");
}

constexpr std::array<std::u16string_view, 1> Number{u"Number"};

TEST_F(ProjectFileSave, NumbersAreCountedInTheFileAsItIsThen) {
  const std::string comment = "    <!-- theirs -->\n    <Action Type=\"STEP\" Name=\"C\"/>\n";
  const std::string twin = "    <Action Type=\"STEP\" Name=\"A\"/>\n";
  const struct {
    const char* Name;
    std::string Theirs;
    std::string After; // empty: refused
  } cases[] = {
      {"nobody else has been there", Named("5"), Named("6")},
      {"another run has counted", Named("8"), Named("9")},
      {"an editor has put something before it", Named("5", "A", comment), Named("6", "A", comment)},
      {"both", Named("8", "A", comment), Named("9", "A", comment)},
      {"the action has another name now", Named("5", "Z"), ""},
      {"nobody knows which of two it is", Named("5", "A", twin), ""},
      {"it cannot be read any more", "<BuildProject>", ""},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.Name);
    TEmbeddedHost host;
    TProjectFile file(host.Project());
    file.Load(host.Write("p.kxproj", Named("5")));
    host.Write("p.kxproj", row.Theirs);
    const TActionNode& node = *host.Project().Actions().front();
    auto& action = static_cast<TStepAction&>(node.Action());
    const auto count = [&] { return file.Change(node, Number, [&] { ++action.Number; }); };
    EXPECT_EQ(static_cast<bool>(count()), !row.After.empty());
    EXPECT_EQ(host.Read("p.kxproj"), row.After.empty() ? row.Theirs : row.After);
    if (row.After.empty()) {
      EXPECT_EQ(action.Number, 5);
      continue;
    }
    // What is stored is not the run's to save any more: others may have counted on.
    host.Write("p.kxproj", Named("20"));
    EXPECT_TRUE(file.Save());
    EXPECT_EQ(host.Read("p.kxproj"), Named("20"));
    EXPECT_TRUE(count());
    EXPECT_EQ(host.Read("p.kxproj"), Named("21"));
  }
}

TEST_F(ProjectFileSave, WhatAnEditorHasNotSavedStaysOutOfTheFile) {
  const struct {
    const char* Name;
    std::string Unsaved;
    std::string FileAfter;
    std::string TextAfter;
  } cases[] = {
      {"something else", Named("5", "A", "    <!-- mine -->\n"), Named("9"),
       Named("9", "A", "    <!-- mine -->\n")},
      {"the number itself", Named("30"), Named("31"), Named("31")},
      {"an action that is new", Named("5", "New"), Named("8"), Named("6", "New")},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.Name);
    TEmbeddedHost host;
    TProjectFile file(host.Project());
    file.LoadBytes(row.Unsaved, host.Write("p.kxproj", Named("8")), Named("5"));
    const TActionNode& node = *host.Project().Actions().front();
    EXPECT_TRUE(file.Change(node, Number, [&] { ++static_cast<TStepAction&>(node.Action()).Number; }));
    EXPECT_EQ(host.Read("p.kxproj"), row.FileAfter);
    EXPECT_EQ(file.Text(), row.TextAfter);
  }
}

TEST_F(ProjectFileSave, WaitsForWhoeverIsSavingAndSaysSo) {
  TEmbeddedHost host;
  TProjectFile file(host.Project());
  file.Load(host.Write("p.kxproj", Named("5")));
  const TActionNode& node = *host.Project().Actions().front();
  auto& action = static_cast<TStepAction&>(node.Action());
  const auto held = platform::FileLock::Acquire(host.Path("p.kxproj"), std::chrono::seconds(0));
  ASSERT_TRUE(held);
  std::vector<std::u16string> said;
  const TSavePatience patience{.Longest = std::chrono::milliseconds(900),
                               .Say = [&](const std::u16string& message) { said.push_back(message); }};
  EXPECT_FALSE(file.Change(
      node, Number, [&] { ++action.Number; }, patience));
  EXPECT_EQ(action.Number, 5);
  ASSERT_EQ(said.size(), 1U);
  EXPECT_TRUE(said.front().starts_with(u"Waiting for " + host.Path("p.kxproj") + u", held by process "));
}

TEST_F(ProjectFileSave, ARunStoresANumberBeforeItIsUsed) {
  const auto counting = [](const char* number) {
    return Project("    <Action Type=\"STEP\"><Text>count</Text><Number>" + std::string(number) +
                   "</Number></Action>");
  };
  std::string seen;
  for (const bool isDry : {false, true}) {
    TEmbeddedHost host(isDry);
    TProjectFile file(host.Project());
    file.Load(host.Write("p.kxproj", counting("5")));
    host.Runner.StoreIn(file);
    TStepAction::Deeds()[u"count"] = [&](TStepAction& action) {
      action.ChangeStored(Number, [&action] { ++action.Number; });
      seen = host.Read("p.kxproj");
      return true;
    };
    host.Run();
    EXPECT_EQ(seen, counting(isDry ? "5" : "6"));
  }
}

} // namespace
} // namespace kx::tests
