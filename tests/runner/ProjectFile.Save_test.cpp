#include "runner/ProjectFile.h"

#include "tests/runner/TestActions.h"

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

} // namespace
} // namespace kx::tests
