#include "foundation/platform/System.h"
#include "tests/buildaction/BuildActionFixture.h"

namespace kx::tests {
namespace {

class ProjectSearch : public TBuildActionTest {};

TEST_F(ProjectSearch, FindsAProjectByEachOfItsNames) {
  const std::u16string folder = folder_.Path();
  for (const std::u16string& text :
       {std::u16string(u"Lib\\Lib.csproj"), folder + u"/Lib\\Lib.csproj", folder + u"/LIB/lib.csproj",
        std::u16string(u"lib.CSPROJ"), std::u16string(u"LIB"), LibId})
    EXPECT_EQ(TKxVSDotNetAction::GetProjectIDFunction(*action_, text), LibId) << text::ToUtf8(text);
  for (const std::u16string_view text : {u"", u"Libs", u"Other\\Lib.csproj", u"*"})
    EXPECT_EQ(action_->GetProjectID(text), u"") << text::ToUtf8(text);
  EXPECT_EQ(TKxVSDotNetAction::GetProjectNameFunction(*action_, u"setup\\setup.vdproj"), u"Installer");
  EXPECT_EQ(TKxVSDotNetAction::GetProjectPathFunction(*action_, u"Lib"), folder_.Path("Lib/Lib.csproj"));
  EXPECT_EQ(Get(u"AllSolutionConfigurations"), "Debug|Any CPU\r\nRelease|Any CPU\r\n");
  // The exact name counts before the same in other letters.
  const std::u16string other = u"LIB\\lib.csproj";
  folder_.Write("App.sln", With(u"Setup\\Setup.vdproj", other));
  const std::u16string separator = platform::IsWindows() ? u"\\" : u"/";
  for (const std::u16string& text : {other, folder + separator + other})
    EXPECT_EQ(TKxVSDotNetAction::GetProjectNameFunction(*action_, text), u"Installer") << text::ToUtf8(text);
}

// The host evaluates script functions while it expands; the solution's own name may hold one.
TEST_F(ProjectSearch, IsNotCaughtInASolutionNameThatAsksForAProject) {
  struct TScriptingHost : TRecordingHost {
    std::u16string Expand(TCustomKxAction& action, std::u16string_view /*text*/) override {
      return TKxVSDotNetAction::GetProjectPathFunction(action, u"Lib");
    }
  } host;
  action_->Attach(host);
  EXPECT_EQ(action_->GetProjectID(u"Lib"), u"");
}

} // namespace
} // namespace kx::tests
