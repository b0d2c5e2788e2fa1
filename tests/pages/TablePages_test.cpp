#include "pages/KxVSDotNetFrames.h"
#include "pages/KxVSDotNetWebProjectDetectionFrame.h"
#include "pages/KxVersionInfoUpdaterFrame.h"
#include "tests/pages/PagesFixture.h"
#include "tests/support/TemporaryFolder.h"
#include "versioninfo/KxVersionInfoUpdaterAction.h"

#include <map>

namespace kx::tests {
namespace {

using testing::ElementsAre;

class TTablePagesTest : public testing::Test {
protected:
  TTablePagesTest() { action_.Attach(editor_.Host); }

  TEditor editor_;
  TKxVSDotNetAction action_;
};

std::vector<std::string> Labels(const TKxFieldOffers& offers) {
  std::vector<std::string> labels;
  for (const auto& item : offers.Items)
    labels.push_back((item.Chosen ? "* " : "") + text::ToUtf8(item.Label));
  if (!offers.Error.empty()) labels.push_back("! " + text::ToUtf8(offers.Error));
  return labels;
}

TEST_F(TTablePagesTest, EveryPropertyOfTheBuildActionIsOnOnePageAndCanBeChangedThere) {
  std::map<std::u16string, int> pages;
  for (const auto* pageClass : {&TVSDotNetProjectFrame::Class(), &TVSDotNetPathsFrame::Class(),
                                &TVSDotNetBuildFrame::Class(), &TVSDotNetAssemblyFrame::Class(),
                                &TVC7VersionInfoFrame::Class(), &TVSDotNetWebProjectLocationFrame::Class()}) {
    const auto page = pageClass->Create();
    editor_.Open(*page, action_);
    std::set<std::u16string> onPage;
    for (const auto& field : page->Fields())
      if (!field.Property.empty()) onPage.insert(field.Property);
    for (const auto& property : onPage)
      ++pages[property];
  }
  // A label; two texts that are edited by their parts; what the host makes of the password.
  const std::set<std::u16string_view> onNone{u"AssemblyInfo", u"AssemblyVersion", u"AssemblyFileVersion",
                                             u"_WebDAVPassword"};
  for (const auto& property : action_.PublishedProperties().Rows())
    EXPECT_EQ(pages[std::u16string(property.Name)],
              property.ReadOnly || onNone.contains(property.Name) ? 0 : 1)
        << text::ToUtf8(property.Name);
}

TEST_F(TTablePagesTest, OnlyWhatChangedIsWrittenAndChangedBackToo) {
  action_.AssemblyInfo().Version.SetText(u"1|2|3|4|5");
  TVSDotNetAssemblyFrame page;
  editor_.Open(page, action_);
  page.SetValue(u"UpdateAssemblyTitle", u"True");
  page.SetValue(u"AssemblyTitle", u"Café");
  page.WriteActionData();
  EXPECT_EQ(action_.AssemblyInfo().Version.Text(), u"1|2|3|4|5");
  EXPECT_EQ(action_.AssemblyInfo().Title, u"Café");
  page.SetValue(u"AssemblyTitle", u"");
  page.WriteActionData();
  EXPECT_EQ(action_.AssemblyInfo().Title, u"");
}

TEST_F(TTablePagesTest, KindsItemsAndRulesComeFromTheTable) {
  TVSDotNetBuildFrame page;
  editor_.Open(page, action_);
  page.SetValue(u"OverrideWarnings", u"True");
  page.SetValue(u"SelectedWarningsAsErrors", u"True");
  EXPECT_TRUE(page.Field(u"WarningsAsErrors").Enabled);
  EXPECT_FALSE(page.Field(u"DisableWarnings").Enabled);
  page.SetValue(u"OverrideWarnings", u"False");
  EXPECT_FALSE(page.Field(u"WarningsAsErrors").Enabled);
  page.SetValue(u"LogLevel", u"Diagnostic");
  page.SetValue(u"ExtraMSBuildProperties", u"A=1\nB=2");
  page.SetValue(u"MaxCPUs", u"4");
  page.WriteActionData();
  EXPECT_EQ(action_.MSBuild().LogLevel, TMSLogLevel::llDiagnostic);
  EXPECT_EQ(action_.MSBuild().ExtraMSBuildProperties, (text::TStringList{u"A=1", u"B=2"}));
  EXPECT_EQ(action_.MSBuild().MaxCPUs, 4);
  EXPECT_EQ(page.Field(u"MaxCPUs").Label, u"Max CPUs");
  EXPECT_EQ(page.Field(u"TargetFramework").Items[2], u".NET Framework 3.5");
  EXPECT_THAT(text::ToUtf8(page.Field(u"ExtraMSBuildProperties").Hint),
              testing::HasSubstr("Do not quote entries"));
}

TEST_F(TTablePagesTest, TheGeneralFormLeavesOutWhatIsHiddenAndKeepsTheGroups) {
  TKxTablePage page(u"Properties");
  editor_.Open(page, action_);
  std::vector<std::string> first;
  for (const auto& field : page.Fields().first(8))
    first.push_back(text::ToUtf8(field.Label));
  EXPECT_THAT(first, ElementsAre("Solution", "Solution", "SolutionConfiguration", "Visual Studio Version",
                                 "Use MSBuild", "MSBuild", "Extra MSBuild Properties", "Other Properties"));
  EXPECT_THAT(NamesWhere(page, [](const auto& field) { return field.Kind == TKxFieldKind::Secret; }),
              ElementsAre("WebDAVPassword"));
  for (const auto* name : {"BuildType", "CompilerErrorCount"})
    EXPECT_THAT(NamesWhere(page, [](const auto&) { return true; }), testing::Not(testing::Contains(name)));
}

TEST_F(TTablePagesTest, TheSolutionOffersWhatItHolds) {
  const TTemporaryFolder folder;
  const auto project = [](const std::string& name, const std::string& needs) {
    return "Project(\"{FAE04EC0-301F-11D3-BF4B-00C04F79EFBC}\") = \"" + name + "\", \"http://h/" + name +
           "\", \"{" + name + "}\"\n" +
           (needs.empty() ? ""
                          : "ProjectSection(ProjectDependencies)\nx = " + needs + "\nEndProjectSection\n") +
           "EndProject\n";
  };
  const auto file =
      folder.Write("A.sln", "\nMicrosoft Visual Studio Solution File, Format Version 10.00\n" +
                                project("App", "{Lib}") + project("Lib", "") +
                                "Global\nGlobalSection(SolutionConfiguration) = preSolution\n"
                                "Debug = Debug\nRelease = Release\nEndGlobalSection\nEndGlobal\n");
  editor_.Host.Variables[u"Sln"] = file;
  TVSDotNetProjectFrame page;
  editor_.Open(page, action_);
  EXPECT_THAT(Labels(page.Offers(u"SelectedProjects")), ElementsAre("! No solution file is named yet."));
  page.SetValue(u"Solution", folder.Write("bad.sln", "nothing"));
  EXPECT_THAT(Labels(page.Offers(u"SelectedProjects")),
              ElementsAre(testing::StartsWith("! Error Parsing Solution File : ")));
  page.SetValue(u"Solution", u"%Sln%"); // typed, not yet accepted
  page.SetValue(u"SelectedProjects", u"lib\r\n");
  EXPECT_THAT(Labels(page.Offers(u"SelectedProjects")),
              ElementsAre("* Lib (http://h/Lib)", "App (http://h/App)"));
  const struct {
    std::u16string_view Wanted;
    bool Expression;
    std::vector<std::string> Offered;
  } rows[] = {
      {u"debug", false, {"* Debug", "Release"}},
      {u"e", true, {"* Debug", "* Release"}},
      {u"e", false, {"Debug", "Release", "! The solution has no configuration \"e\"."}},
  };
  for (const auto& row : rows) {
    page.SetValue(u"SolutionConfiguration", row.Wanted);
    page.SetValue(u"UseRegExOnConfigName", row.Expression ? u"True" : u"False");
    EXPECT_EQ(Labels(page.Offers(u"SolutionConfiguration")), row.Offered) << text::ToUtf8(row.Wanted);
  }
  page.SetValue(u"SolutionConfiguration", u"(");
  page.SetValue(u"UseRegExOnConfigName", u"True");
  EXPECT_THAT(Labels(page.Offers(u"SolutionConfiguration")),
              ElementsAre("Debug", "Release", testing::StartsWith("! ")));
}

TEST_F(TTablePagesTest, TheOptionsAndTheUpdater) {
  TVSDotNetOptions& options = *VSDotNetOptions();
  editor_.Edit<TVSDotNetOptionsFrame>(options, {}, u"DevEnvLocation");
  EXPECT_FALSE(options.IsModified());
  editor_.Edit<TVSDotNetOptionsFrame>(
      options, {{u"DevEnvLocation", u"C:\\VS7"}, {u"DefaultVSVersion", u"Visual Studio.NET 2010"}},
      u"DevEnvLocation");
  EXPECT_TRUE(options.IsModified());
  EXPECT_EQ(options.GetDevEnv2002Location(), u"C:\\VS7");
  EXPECT_EQ(options.GetDefaultVSVersion(), TVSDotNetVersion::vs2010);

  TKxVersionInfoUpdaterAction updater;
  updater.Attach(editor_.Host);
  TKxVersionInfoUpdaterFrame page;
  editor_.Open(page, updater);
  page.SetValue(u"PropertiesToUpdate", u"majorversion=1\nComments=False\n");
  const auto offers = Labels(page.Offers(u"PropertiesToUpdate"));
  EXPECT_EQ(offers.size(), 24U); // fourteen of the block, eleven texts, one of them both
  EXPECT_THAT(offers, testing::Contains("* MajorVersion"));
  EXPECT_THAT(offers, testing::Contains("Comments"));
}

} // namespace
} // namespace kx::tests
