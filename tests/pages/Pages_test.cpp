#include "package/pages/KxMSTestFrame.h"
#include "package/pages/KxMSTestPublishFrame.h"
#include "package/pages/KxMSTestSettingsFrame.h"
#include "package/pages/KxVSDotNetSolutionIteratorFrame.h"
#include "package/pages/KxVSDotNetWebProjectDetectionFrame.h"
#include "tests/pages/PagesFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace kx::tests {
namespace {

using testing::ElementsAre;

class TPagesTest : public testing::Test {
protected:
  TEditor editor_;
  TKxMSTestAction test_;
};

TEST_F(TPagesTest, ContainersAreLinesOnThePageAndQuotedItemsInTheAction) {
  const std::u16string file = u"txtAssemblyFilename", memo = u"MemoAssemblies";
  const std::tuple<const char*, std::u16string, std::u16string, std::u16string, std::u16string,
                   std::u16string>
      rows[] = {
          // stored; a field and what is typed there; shown at first, written
          {"a quoted path keeps its blank", u"a.dll|\"b c.dll\"", u"", u"", u"a.dll|b c.dll|",
           u"\"a.dll\"|\"b c.dll\""},
          {"a path with a bar becomes two", u"\"a|b.dll\"", u"", u"", u"a|b.dll|", u"\"a\"|\"b.dll\""},
          {"typed but not accepted", u"a.dll", file, u"A.dll", u"a.dll|", u"\"a.dll\"|\"A.dll\""},
          {"typed once more", u"a.dll", file, u"a.dll", u"a.dll|", u"\"a.dll\""},
          {"one a line, with blanks", u"a b.dll\r\nc d.dll", u"chkSpecifyTests", u"True", u"a b.dll|c d.dll|",
           u"\"a b.dll\"|\"c d.dll\""},
          {"references that may be lists stay bare, others are whole paths",
           u"%Tests%|\"%One%\"|$(More)|%Root%\\a.dll", file, u"%New%",
           u"%Tests%|%One%|$(More)|%Root%\\a.dll|", u"%Tests%|\"%One%\"|$(More)|\"%Root%\\a.dll\"|\"%New%\""},
          {"pasted with its quotation marks", u"", file, u"\"a b.dll\"", u"", u"\"a b.dll\""},
          {"empty lines are left out", u"", memo, u"\nx.dll\n\n", u"", u"\"x.dll\""},
      };
  for (const auto& [name, stored, field, typed, shown, written] : rows) {
    test_.Input().AssemblyFileName = stored;
    const TEdits edits = field.empty() ? TEdits() : TEdits{{field, typed}};
    const std::u16string first = editor_.Edit<TMSTestFrame>(test_, edits, memo);
    EXPECT_EQ(text::ReplaceAll(first, u"\r\n", u"|"), shown) << name;
    EXPECT_EQ(test_.Input().AssemblyFileName, written) << name;
  }
}

TEST_F(TPagesTest, WhatCanBeEditedFollowsTheTestSource) {
  TMSTestFrame page;
  editor_.Open(page, test_);
  EXPECT_THAT(Disabled(page),
              ElementsAre("edtTestMetadata", "chkSpecifyTestList", "txtTestList", "txtTests"));
  EXPECT_EQ(FailureOf([&] { page.SetValue(u"edtTestMetadata", u"x"); }),
            "The field \"Test Metadata File:\" is disabled.");
  Type(page, u"rbUseTestMetadata=True");
  EXPECT_THAT(Disabled(page), ElementsAre("txtAssemblyFilename", "txtTestList", "txtTests"));
  Type(page, u"chkSpecifyTestList=True&txtTestList=Nightly");
  EXPECT_THAT(Disabled(page), ElementsAre("txtAssemblyFilename", "txtTests"));
  page.WriteActionData();
  page.SetValue(u"RadioButton1", u"True");
  EXPECT_THAT(Disabled(page), testing::Contains("txtTestList")) << "although it is checked";
  page.ReadActionData();
  EXPECT_THAT(Checked(page), ElementsAre("rbUseTestMetadata", "chkSpecifyTestList"));
  EXPECT_EQ(page.Field(u"txtTestList").Value, u"Nightly");
}

TEST_F(TPagesTest, TheVersionOfMSTestAndTheStandaloneOne) {
  using enum TVSDotNetVersion;
  const std::u16string year = u"Visual Studio.NET 2008", alone = u"Standalone MSTest", box = u"chkShowBanner";
  const std::u16string field = u"cmbVSVer";
  const std::tuple<TVSDotNetVersion, bool, TVSDotNetVersion, std::u16string, std::u16string, std::u16string,
                   TVSDotNetVersion, bool>
      rows[] = {
          // stored, the default; shown at first, the field that is set and its value; written
          {vs2008, false, vs2010, year, box, u"False", vs2008, false},
          {vs2008, false, vs2010, year, field, alone, vs2010, true},
          {vs2008, true, vs2003, alone, box, u"False", vs2005, true},
          {vs2008, true, vs2010, alone, field, u"Visual Studio", vsUnknown, false},
          {vs2003, false, vs2010, u"", box, u"True", vs2003, false},
      };
  TMSTestRunSettings& run = test_.RunSettings();
  for (const auto& [stored, isAlone, otherwise, shown, name, value, written, writtenAlone] : rows) {
    VSDotNetOptions()->SetDefaultVSVersion(otherwise);
    run.VisualStudioVer = stored;
    run.UseStandaloneMSTest = isAlone;
    EXPECT_EQ(editor_.Edit<TMSTestSettingsFrame>(test_, {{name, value}}, field), shown);
    EXPECT_EQ(std::pair(run.VisualStudioVer, run.UseStandaloneMSTest), std::pair(written, writtenAlone));
  }
  EXPECT_TRUE(run.ShowBanner);
}

TEST_F(TPagesTest, TheLoopOverASolution) {
  TKxVSSolutionIterator loop;
  TSolutionIteratorFrame page;
  editor_.Open(page, loop);
  editor_.Chosen = u"C:\\src\\App";
  page.Click(u"txtSolution", TKxButtonKind::Browse);
  page.Click(u"txtSolution", TKxButtonKind::Custom);
  Type(page, u"rbAbsPath=False&cmbVariable=Project"); // neither path: the id
  page.WriteActionData();
  EXPECT_EQ(loop.Solution + u" " + loop.GetLoopVariable(), u"C:\\src\\App.sln Project");
  EXPECT_EQ(loop.IterateValue, TVSIterateSolutionValue::svProjectId);
  const TTemporaryFolder folder;
  folder.Write("App/x");
  folder.Write("Bare");
  editor_.Chosen = folder.Path("App");
  EXPECT_THAT(FailureOf([&] { page.Click(u"txtSolution", TKxButtonKind::Browse); }),
              testing::HasSubstr("is a folder"));
  editor_.Chosen = folder.Path("Bare");
  page.Click(u"txtSolution", TKxButtonKind::Browse);
  EXPECT_EQ(page.Field(u"txtSolution").Value, editor_.Chosen) << "a file that is there has its name";
  loop.SetLoopVariable(u"ROOT");
  page.ReadActionData();
  EXPECT_EQ(page.Field(u"cmbVariable").Value, u"Root");
  page.SetValue(u"cmbVariable", u"Other"); // a new one
  page.WriteActionData();
  EXPECT_EQ(loop.GetLoopVariable(), u"Other");
}

TEST_F(TPagesTest, ThePasswordOfWebProjectsNeverShowsAndStaysWhenItIsNotTyped) {
  TKxVSDotNetAction action;
  action.Attach(editor_.Host);
  action.SetWebDAVPassword(u"secret");
  TVSDotNetWebProjectLocationFrame page;
  editor_.Open(page, action);
  const TKxPageField& password = page.Field(u"edtPassword");
  EXPECT_TRUE(password.IsSet && !password.IsChanged && password.Value.empty());
  page.SetValue(u"edtUser", u"me");
  page.WriteActionData();
  EXPECT_EQ(action.GetWebDAVPassword(), u"secret");
  page.SetValue(u"edtPassword", u"new");
  EXPECT_TRUE(password.IsChanged && password.Value.empty());
  page.SetValue(u"spiWebsiteNumber", u"one");
  EXPECT_EQ(FailureOf([&] { page.WriteActionData(); }),
            "\"Use WMI - Specify website number\" takes a whole number, not \"one\".");
  EXPECT_EQ(action.GetWebDAVPassword(), u"secret") << "all or nothing";
  page.SetValue(u"spiWebsiteNumber", u" 7 ");
  page.WriteActionData();
  EXPECT_EQ(action.GetWebDAVPassword(), u"new");
  EXPECT_FALSE(password.IsChanged);
}

} // namespace
} // namespace kx::tests
