#include "tests/build/BuildActionFixture.h"

namespace kx::tests {
namespace {

class ProjectSearch : public TBuildActionTest {
protected:
  std::string IdOf(std::u16string_view text) {
    return text::ToUtf8(TKxVSDotNetAction::GetProjectIDFunction(action_, text));
  }
};

TEST_F(ProjectSearch, FindsAProjectByEachOfItsNames) {
  const std::u16string folder = folder_.Path();
  for (const std::u16string& text :
       {std::u16string(u"Lib\\Lib.csproj"), folder + u"/Lib\\Lib.csproj", folder + u"/LIB/lib.csproj",
        std::u16string(u"lib/LIB.csproj"), std::u16string(u"lib.CSPROJ"), std::u16string(u"LIB"),
        std::u16string(u"{22222222-2222-2222-2222-222222222222}")})
    EXPECT_EQ(IdOf(text), text::ToUtf8(LibId)) << text::ToUtf8(text);
  for (const std::u16string_view text : {u"", u"Libs", u"Other\\Lib.csproj", u"*"})
    EXPECT_EQ(IdOf(text), "") << text::ToUtf8(text);
  EXPECT_EQ(TKxVSDotNetAction::GetProjectNameFunction(action_, u"setup\\setup.vdproj"), u"Installer");
  EXPECT_EQ(TKxVSDotNetAction::GetProjectPathFunction(action_, u"Lib"), folder + u"/Lib/Lib.csproj");
  EXPECT_EQ(Get(u"AllSolutionConfigurations"), "Debug|Any CPU\r\nRelease|Any CPU\r\n");
}

TEST_F(ProjectSearch, AnswersNothingForASolutionThatCannotBeOpened) {
  for (const std::u16string_view solution : {u"", u"No.sln", u"%Nowhere%", u"MSBuild.exe"}) {
    Set({{u"Solution", std::u16string(solution)}});
    EXPECT_EQ(IdOf(u"Lib"), "") << text::ToUtf8(solution);
    EXPECT_EQ(Get(u"AllSolutionConfigurations"), "") << text::ToUtf8(solution);
  }
  TKxVSDotNetAction detached;
  EXPECT_EQ(detached.GetProjectPath(u"Lib"), u"");
}

TEST_F(ProjectSearch, TurnsSelectedEntriesIntoIdsWhereItCan) {
  host_.Variables[u"Which"] = u"App";
  Set({{u"SelectedProjects", u"Lib\\Lib.csproj\n%Which%\n{unknown}\n%Nowhere%\nOther"}});
  EXPECT_EQ(Get(u"SelectedProjects"), text::ToUtf8(std::u16string(LibId) + u"\r\n" + std::u16string(AppId)) +
                                          "\r\n{unknown}\r\n%Nowhere%\r\nOther\r\n");
}

// The host evaluates script functions while it expands; the solution's own name may hold one.
TEST_F(ProjectSearch, IsNotCaughtInASolutionNameThatAsksForAProject) {
  class TScriptingHost : public TRecordingHost {
  public:
    std::u16string Expand(TCustomKxAction& action, std::u16string_view text) override {
      return text == u"$(GetProjectPath(\"Lib\"))" ? TKxVSDotNetAction::GetProjectPathFunction(action, u"Lib")
                                                   : TRecordingHost::Expand(action, text);
    }
  };
  TScriptingHost host;
  action_.Attach(host);
  Set({{u"Solution", u"$(GetProjectPath(\"Lib\"))"}});
  EXPECT_EQ(IdOf(u"Lib"), "");
}

} // namespace
} // namespace kx::tests
