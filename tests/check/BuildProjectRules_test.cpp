#include "package/registration/KxVSDotNetReg.h"
#include "program/check/BuildProjectFacts.h"
#include "program/check/Check.h"
#include "program/runner/PluginLoader.h"
#include "tests/runner/TestActions.h"

#include <gtest/gtest.h>

namespace kx::check {
namespace {

// The package's actions with their pages, and the two of the tests without.
class BuildProjectRules : public testing::Test {
protected:
  BuildProjectRules() {
    SetServices({.Actions = &Services, .Scripting = &Services, .Options = &Services});
    RegisterVisualStudioDotNet(TDesignContext());
    Services.RegisterAction(u"STEP", u"Tests", tests::TStepAction::Class());
    Services.RegisterAction(u"LOOP", u"Tests", tests::TLoopAction::Class());
  }
  ~BuildProjectRules() override { SetServices({}); }

  // "line rule message", a line each.
  std::string Found(const std::string& project, TRunSettings settings = {}) {
    settings.KeyFile = Folder.Path("keys");
    TKxEvent stop;
    TChecker checker{TCheckLevels()};
    checker.CheckBuildProject(
        ReadBuildProjectFacts(Folder.Write("p.kxproj", project), Services, stop, settings));
    EXPECT_EQ(checker.FileCount(), 1U);
    std::string found;
    for (const TFinding& finding : checker.TakeFindings())
      found += std::to_string(finding.Place.Line) + " " +
               text::ToUtf8(finding.Rule + u" " + finding.Message) + "\n";
    return Folder.Plain(found);
  }

  tests::TTemporaryFolder Folder;
  TOptionsStore Store;
  TServiceRegistry Services{Store};
};

TEST_F(BuildProjectRules, FindWhatIsWrongInItsLine) {
  const std::string step = "<Actions><Action Type='STEP'><Text>";
  const std::string end = "</Text></Action></Actions></BuildProject>";
  struct TRow {
    std::string_view Name;
    std::string Text;
    std::string_view Found;
  };
  const TRow rows[]{
      {"a healthy one", "<BuildProject>" + step + "x" + end, ""},
      {"broken XML", "<BuildProject>\n<Actions></BuildProject>",
       "2 build-project Premature end of data in tag BuildProject line 1\n"},
      {"an unknown action", "<BuildProject><Actions>\n<Action Type='X'/></Actions></BuildProject>",
       "2 build-project Unknown action type \"X\".\n"},
      {"validation, of the project and inside of a loop",
       "<BuildProject><Actions>\n<Action Type='LOOP'/>\n<Action Type='LOOP' Name='L'><Actions>\n<Action "
       "Type='STEP'/>\n<Action "
       "Type='STEP'><Text>%Gone%</Text></Action></Actions></Action></Actions></BuildProject>",
       "2 settings-invalid Loop: Actions: The loop holds no actions. Add one.\n4 settings-invalid Step: "
       "Text: A text has not been set\n5 settings-invalid Step: Text: Unknown name \"Gone\".\n"},
      {"no actions", "<BuildProject>\n</BuildProject>",
       "1 settings-invalid Project: Actions: The project holds no actions. Add one.\n"},
      {"variables that are named in each way, and two that are not",
       "<BuildProject><Variables><Variable Name='A'>%b%</Variable><Variable Name='B'>x</Variable>\n<Variable "
       "Name='C'>C</Variable><Variable Name='D'>x</Variable>\n<Variable Name='E'>E.</Variable></Variables>" +
           step + "%A%\n d " + end,
       "3 variable-unused Nothing refers to the variable E\n"},
      {"property sets, one of them named by an action",
       "<BuildProject><PropertySets><PropertySet Name='S' Kind='Win32'/>\n<PropertySet Name='T' "
       "Kind='Win32'/></PropertySets>" +
           step + "s" + end,
       "2 property-set-unused No action takes the property set T\n"},
      {"property sets where a text is computed",
       "<BuildProject><Variables><Variable Name='A'>x</Variable></Variables><PropertySets>\n<PropertySet "
       "Name='T' Kind='Win32'/></PropertySets>" +
           step + "%A%" + end,
       ""},
      {"secrets in clear text",
       "<BuildProject><Variables>\n<Variable Name='FtpPassword'>x</Variable><Variable "
       "Name='MyToken'>%FtpPassword%</Variable><Variable Name='ApiKey'> "
       "</Variable></Variables><Actions><Action Type='STEP'><Text>%MyToken% "
       "%ApiKey%</Text>\n<Password>x</Password></Action>\n<Action "
       "Type='STEP'><Text>x</Text><Password></Password></Action></Actions></BuildProject>",
       "2 secret-clear The variable FtpPassword holds its value in clear text\n3 secret-clear Step: Password "
       "is in clear text\n"},
      {"a setting that others switch off, beside one that is as by default",
       "<BuildProject><Actions><Action Type='DEVENV' "
       "Name='B'><Solution>a.sln</Solution>\n<SelectedProjects><Line>x</Line></"
       "SelectedProjects>\n<BuildType>btAllProjects</BuildType></Action><Action "
       "Type='DEVENV'><Solution>a.sln</Solution><BuildType>btSelectedProjects</"
       "BuildType><SelectedProjects><Line>x</Line></SelectedProjects></Action></Actions></BuildProject>",
       "1 settings-invalid B: This host offers no .NET framework information.\n2 setting-ineffective B: "
       "SelectedProjects has no effect with the other settings\n3 settings-invalid Build VS.Net Solution: "
       "This host offers no .NET framework information.\n"},
  };
  for (const TRow& row : rows)
    EXPECT_EQ(Found(row.Text), row.Found) << row.Name;
}

} // namespace
} // namespace kx::check
