#include "program/parts/ProjectReach.h"

#include "foundation/text/WindowsPath.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <tuple>

namespace kx {
namespace {

class ProjectReach : public testing::Test {
protected:
  // The paths below the folder, in the order of the set.
  std::string Below(const TPathSet& paths) const {
    std::string names;
    for (const auto& path : paths)
      names += tests::Generic(text::ToUtf8(path.substr(folder_.Path("").size()))) + " ";
    return names;
  }

  tests::TTemporaryFolder folder_;
};

TEST_F(ProjectReach, IsWhatLeadsOutOfTheFolder) {
  for (const char* name :
       {"libs/a b/x.lib", "common/s.cs", "out/bin/old.dll", "main/own/c.cs", "main/own.cs", "top.cs"})
    folder_.Write(name, "");
  folder_.Write("props/p.props",
                R"(<Import Project="..\props\q.targets"/><I Include="more.h"/><I Include="..\top.cs"/>)");
  folder_.Write("props/q.targets", "<C>copy ..\\common\\s.cs .</C>");
  folder_.Write("core/core.csproj", R"(<C Include="..\common\s.cs"/><R Include="..\main\m.csproj"/>)");
  const std::tuple<std::string, std::string, std::string, std::string> rows[] = {
      // what the project holds; the folders of projects, other folders, files
      {R"-(<C Include="own\c.cs"/><C Include="own\..\own.cs"/><P>..\gone.cs</P><U>http://x/../y</U>)-",
       "main ", "", ""},
      {R"-(<File RelativePath="..\common\s.cs"/>)-", "main ", "", "common/s.cs "},
      {R"-(<H>../libs/a b/x.lib</H>)-", "main ", "", "libs/a b/x.lib "},
      {R"-(<R Include="..\core\core.csproj"><N>core</N></R>)-", "core main ", "", "common/s.cs "},
      {R"-(<OutputPath>..\out\bin\</OutputPath>)-", "main ", "out/bin ", ""},
      {R"-(<O>..\out\$(Configuration)\</O><C Include="..\common\*.cs"/>)-", "main ", "common out ", ""},
      {R"-(<T OutputDirectory="$(SolutionDir)\$(ConfigurationName)"/>)-", "main ", "libs ", ""},
      {R"-(<O>$(solutiondir)a b\x.lib</O><O>$(OutDir)\..\x</O>)-", "main ", "", "libs/a b/x.lib "},
      {R"-(<I Project="$(MSBuildToolsPath)\..\Microsoft.CSharp.targets"/>)-", "main ", "", ""},
      {R"-(<I>$(MSBuildProjectDirectory)\..\common\s.cs</I>)-", "main ", "", "common/s.cs "},
      {R"-(<E>xcopy /y "$(TargetPath)" ..\out\bin</E>)-", "main ", "out/bin ", ""},
      {R"-(<I Project="..\props\p.props"/>)-", "main ", "",
       "common/s.cs props/p.props props/q.targets top.cs "},
      {"<C>" + text::ToUtf8(folder_.Path("common/s.cs")) + "</C><C>/</C>", "main ", "", "common/s.cs "},
  };
  for (const auto& [text, projects, folders, files] : rows) {
    const std::u16string inputs[] = {folder_.Write("libs/all.sln", "..\\out\\bin"),
                                     folder_.Write("main/m.csproj", "<Project>" + text + "</Project>")};
    const auto reach = ReachOf(inputs);
    ASSERT_TRUE(reach);
    EXPECT_EQ(std::tuple(Below(reach->ProjectFolders), Below(reach->Folders), Below(reach->Files)),
              std::tuple(projects, folders, files))
        << text;
  }
  const std::u16string gone[] = {folder_.Path("gone.csproj")};
  EXPECT_FALSE(ReachOf(gone));
}

} // namespace
} // namespace kx
