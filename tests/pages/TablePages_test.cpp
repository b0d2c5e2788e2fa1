#include "package/pages/KxVSDotNetFrames.h"
#include "package/pages/KxVSDotNetWebProjectDetectionFrame.h"
#include "package/pages/KxVersionInfoUpdaterFrame.h"
#include "package/versioninfo/KxVersionInfoUpdaterAction.h"
#include "tests/pages/PagesFixture.h"
#include "tests/support/TemporaryFolder.h"

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

TEST_F(TTablePagesTest, TheSolutionOffersWhatItHolds) {
  const TTemporaryFolder folder;
  const auto project = [](const std::string& name, const std::string& needs) {
    return "Project(\"{FAE04EC0-301F-11D3-BF4B-00C04F79EFBC}\") = \"" + name + "\", \"http://h/" + name +
           "\", \"{" + name + "}\"\n" +
           (needs.empty() ? ""
                          : "ProjectSection(ProjectDependencies)\nx = " + needs + "\nEndProjectSection\n") +
           "EndProject\n";
  };
  const auto file = folder.Write(
      "A.sln", "\nMicrosoft Visual Studio Solution File, Format Version 10.00\n" + project("App", "{Lib}") +
                   project("Lib", "") +
                   "Project(\"{2150E333-8FDC-42A3-9474-1A3956D46DE8}\") = \"Tools\", \"Tools\", \"{T}\"\n"
                   "EndProject\nGlobal\nGlobalSection(SolutionConfiguration) = preSolution\n"
                   "Debug = Debug\nRelease = Release\nEndGlobalSection\n"
                   "GlobalSection(NestedProjects) = preSolution\n{lib} = {T}\nEndGlobalSection\nEndGlobal\n");
  editor_.Host.Variables[u"Sln"] = file;
  TVSDotNetProjectFrame page;
  editor_.Open(page, action_);
  EXPECT_THAT(Labels(page.Offers(u"SelectedProjects")), ElementsAre("! No solution file is named yet."));
  page.SetValue(u"Solution", folder.Write("bad.sln", "nothing"));
  EXPECT_THAT(Labels(page.Offers(u"SelectedProjects")),
              ElementsAre(testing::StartsWith("! Error Parsing Solution File : ")));
  page.SetValue(u"Solution", u"%Sln%"); // typed, not yet accepted
  EXPECT_EQ(FailureOf([&] { page.SetValue(u"SelectedProjects", u"lib"); }),
            "The field \"Selected Projects\" is disabled.");
  EXPECT_EQ(page.Field(u"SelectedProjects").Needs, u"Needs \"Build Type\": Selected Projects.");
  Type(page, u"BuildType=Selected Projects&SelectedProjects=lib\r\n");
  EXPECT_THAT(Labels(page.Offers(u"SelectedProjects")),
              ElementsAre("* Lib (http://h/Lib)", "App (http://h/App)"));
  const auto inFolders = page.Offers(u"SelectedProjects").Items;
  EXPECT_EQ(inFolders[0].Folders, std::vector<std::u16string>{u"Tools"});
  EXPECT_TRUE(inFolders[1].Folders.empty());
  const std::tuple<std::u16string_view, std::u16string_view, std::string> rows[] = {
      {u"debug", u"False", "* Debug|Release|"},
      {u"e", u"True", "* Debug|* Release|"},
      {u"e", u"False", "Debug|Release|! The solution has no configuration \"e\".|"},
      {u"", u"True", "Debug|Release|! No configuration is named yet.|"},
      {u"%Nowhere%", u"True", "Debug|Release|! Unknown name: Nowhere|"},
      {u"(", u"True", "Debug|Release|! missing closing parenthesis at position 2 of \"(\"|"},
  };
  for (const auto& [wanted, expression, offered] : rows) {
    page.SetValue(u"SolutionConfiguration", wanted);
    page.SetValue(u"UseRegExOnConfigName", expression);
    std::string shown;
    for (const auto& label : Labels(page.Offers(u"SolutionConfiguration")))
      shown += label + "|";
    EXPECT_EQ(shown, offered);
  }
}

TEST_F(TTablePagesTest, ProjectsAreSelectedByTheirNamesWhereThoseMeanJustOne) {
  const std::tuple<std::string, std::string, std::string, std::u16string_view> rows[] = {
      // name, id, file; the value
      {"Core", "{C}", "Core.vcproj", u"Core"},
      {"Twin", "{T1}", "a/Twin.vcproj", u"{T1}"},
      {"twin", "{T2}", "b/Twin.vcproj", u"{T2}"},
      {"%Any%", "{A}", "Any.vcproj", u"{A}"},
      {"{odd}", "{O}", "Odd.vcproj", u"{O}"},
      {"Core.vcproj", "{F}", "File.vcproj", u"{F}"}}; // which is the file of another
  const TTemporaryFolder folder;
  std::string solution = "\nMicrosoft Visual Studio Solution File, Format Version 10.00\n";
  for (const auto& [name, id, file, value] : rows)
    solution += "Project(\"{8BC9CEB8-8B4A-11D0-8D11-00A0C91BC942}\") = \"" + name + "\", \"" +
                Generic(text::ToUtf8(folder.Write(file, "<VisualStudioProject/>"))) + "\", \"" + id +
                "\"\nEndProject\n";
  action_.Solution().Solution = folder.Write("A.sln", solution + "Global\nEndGlobal\n");
  action_.Solution().SelectedProjects = {u"{c}", u"core", u"nobody", u"b/twin.vcproj"};
  TVSDotNetProjectFrame page;
  editor_.Open(page, action_);
  const auto offers = page.Offers(u"SelectedProjects");
  ASSERT_EQ(offers.Items.size(), std::size(rows)) << text::ToUtf8(offers.Error);
  // The lines go when the project is chosen no more.
  std::map<std::u16string_view, std::vector<std::u16string>> lines{{u"Core", {u"{c}", u"core"}},
                                                                   {u"{T2}", {u"b/twin.vcproj"}}};
  for (const auto& [name, id, file, value] : rows) {
    const auto offer = std::ranges::find(offers.Items, value, &TKxFieldOffer::Value);
    ASSERT_NE(offer, offers.Items.end()) << name;
    EXPECT_EQ(offer->Lines, lines[value]) << name;
  }
}

} // namespace
} // namespace kx::tests
