#include "program/check/ProjectFacts.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kx::check {
namespace {

// "config name; line kind path; line (kind path) where it is not used; line ref path id; line hint path; line
// .NET v3.5", in this order, and "error line" where the file cannot be read.
std::string Shown(const TProjectFacts& facts) {
  std::u16string shown;
  const auto add = [&](int line, const std::u16string& what) {
    shown += (shown.empty() ? u"" : u"; ") + (line == 0 ? u"" : text::FromInteger(line) + u" ") + what;
  };
  for (const auto& name : facts.Configurations)
    add(0, u"config " + name);
  for (const auto* list : {&facts.Sources, &facts.Hints})
    for (const auto& file : *list)
      add(file.Line, (file.IsUsed ? u"" : u"unused ") + file.Kind + u" " + file.Path);
  for (const auto& reference : facts.References)
    add(reference.Line, u"ref " + reference.Path + u" " + reference.Id);
  if (!facts.Framework.empty()) add(facts.FrameworkLine, u".NET " + facts.Framework);
  if (!facts.Error.empty()) add(facts.ErrorLine, u"error");
  return text::ToUtf8(shown) + (facts.IsManaged() ? " managed" : "") + (facts.IsSdkStyle ? " sdk" : "");
}

TEST(ProjectFacts, AreThoseOfEachForm) {
  const std::string debug = "<PropertyGroup Condition=\"'$(Configuration)|$(Platform)' == 'Debug|AnyCPU'\"/>";
  struct TRow {
    std::string_view Name, File;
    std::string Text;
    std::string_view Shown;
  };
  const TRow rows[]{
      {"items, and what a build alone can tell", "a.csproj",
       "<Project><ItemGroup>\n<Compile Include=' a.cs ;$(X).cs;b/*.cs;@(L);%(M);?.cs;;c.cs'/>\n<None "
       "Include='n.txt'/><Page Include='p.xaml'/></ItemGroup><Compile Include='outside.cs'/></Project>",
       "2 Compile a.cs; 2 Compile c.cs; 3 Page p.xaml managed"},
      {"conditions around and at an item", "a.csproj",
       "<Project><ItemGroup Condition='x'>\n<Compile Include='a.cs'/></ItemGroup>\n<ItemGroup><Compile "
       "Include='b.cs' Condition='y'/>\n<Compile Include='c.cs'/></ItemGroup></Project>",
       "2 unused Compile a.cs; 3 unused Compile b.cs; 4 Compile c.cs managed"},
      {"excluded sources", "a.vcxproj",
       "<Project><ItemGroup><ClCompile Include='a.cpp'><Link/>\n<ExcludedFromBuild "
       "Condition='x'>true</ExcludedFromBuild></ClCompile>\n<ClCompile Include='b.cpp'/><None "
       "Include='n'><ExcludedFromBuild/></None></ItemGroup></Project>",
       "1 unused ClCompile a.cpp; 3 ClCompile b.cpp"},
      {"listed configurations count before conditions", "a.vcxproj",
       "<Project><ItemGroup><ProjectConfiguration Include='Debug|Win32'/></ItemGroup>" + debug + "</Project>",
       "config Debug|Win32"},
      {"configurations of conditions", "a.csproj",
       "<Project>" + debug +
           "<PropertyGroup Condition=\"'$(Configuration)|$(Platform)'==' Release|x86 '\"/><PropertyGroup "
           "Condition=\"'$(Configuration)' == ''\"/><PropertyGroup Condition=\"'$(Platform)'==''\"/><Import "
           "Project='$(MSBuildToolsPath)\\x.targets'/><Import Project='$(VCTargetsPath)x'/><Import "
           "Project='$(UserRootDir)\\x'/></Project>",
       "config Debug|AnyCPU; config Release|x86"},
      {"others may be in what is imported", "a.csproj",
       "<Project>" + debug + "<Import Project='own.targets'/></Project>", ""},
      {"others may be meant by a condition", "a.csproj",
       "<Project>" + debug + "<PropertyGroup Condition=\"'$(Configuration)' != 'Debug'\"/></Project>", ""},
      {"no configuration is excluded by name", "a.csproj",
       "<Project><PropertyGroup Condition=\"'$(Configuration)|$(Platform)' != 'Debug|AnyCPU'\"/></Project>",
       ""},
      {"a condition that breaks off", "a.csproj",
       "<Project><Choose Condition=\"'$(Configuration)|$(Platform)' == 'Debug\"/><When "
       "Condition=\"'$(Configuration)|$(Platform)'\"/></Project>",
       ""},
      {"an SDK as attribute", "a.csproj", "<Project Sdk='x'>" + debug + "</Project>", " sdk"},
      {"an SDK as element", "a.csproj", "<Project><Sdk Name='x'/>" + debug + "</Project>", " sdk"},
      {"references, hints and the framework", "a.csproj",
       "<Project><PropertyGroup>\n<TargetFrameworkVersion> v3.5 "
       "</TargetFrameworkVersion>\n</PropertyGroup><PropertyGroup "
       "Condition='x'><TargetFrameworkVersion>v4.0</TargetFrameworkVersion></"
       "PropertyGroup><ItemGroup>\n<ProjectReference "
       "Include='..\\b.csproj'><Project>b0</Project><Name>b</Name></ProjectReference>\n<ProjectReference "
       "Include='$(C).csproj'/><ProjectReference "
       "Include='d.csproj'><Project>{d}</Project></ProjectReference><Reference Include='L'>\n<HintPath> "
       "L.dll </HintPath><HintPath>$(Lib)\\M.dll</HintPath></Reference><Reference Include='N' "
       "Condition='x'><HintPath>N.dll</HintPath></Reference></ItemGroup></Project>",
       "6 Reference L.dll; 6 unused Reference N.dll; 4 ref ..\\b.csproj {b0}; 5 ref d.csproj {d}; 2 .NET "
       "v3.5"},
      {"C++ of the older tools", "a.vcproj",
       "<VisualStudioProject ProjectType='Visual C++'><Configurations><Configuration "
       "Name='Debug|Win32'/></Configurations><References>\n<ProjectReference "
       "ReferencedProjectIdentifier='{b}'/></References><Files>\n<File RelativePath='a.CPP'/><File "
       "RelativePath='b.h'><FileConfiguration ExcludedFromBuild='true'/></File><File "
       "RelativePath='c.c'><FileConfiguration ExcludedFromBuild='TRUE'/></File><File "
       "RelativePath='d.rc'><FileConfiguration ExcludedFromBuild='false'/></File><File "
       "RelativePath='$(X).c'/></Files></VisualStudioProject>",
       "config Debug|Win32; 3 .cpp a.CPP; 3 unused .c c.c; 3 .rc d.rc; 2 ref  {b}"},
      {"the oldest form", "a.csproj",
       "<VisualStudioProject><CSHARP><Build><Settings><Config "
       "Name='Debug'/><Config/></Settings>\n<References><Reference Project='{b}'/><Reference "
       "HintPath='L.dll'/><Reference HintPath='$(L)'/></References></Build><Files><Include>\n<File "
       "RelPath='a.cs' BuildAction='Compile'/><File RelPath='i.cs' Link='..\\i.cs' "
       "BuildAction='Compile'/><File RelPath='r.resx' BuildAction='EmbeddedResource'/><File RelPath='n' "
       "BuildAction='None'/></Include></Files></CSHARP></VisualStudioProject>",
       "config Debug; 3 Compile a.cs; 3 Compile ..\\i.cs; 3 EmbeddedResource r.resx; 2 Reference L.dll; 2 "
       "ref  {b} managed"},
      {"something else", "a.csproj", "<Other><ItemGroup><Compile Include='a.cs'/></ItemGroup></Other>", ""},
      {"broken, after what was read", "a.csproj",
       "<Project>\n" + debug + "<ItemGroup>\n<Compile Include='a.cs'/>\n</x>", "4 error"},
      {"no XML, and none that should be", "a.vdproj", "\"DeployProject\"", ""},
      {"no XML, and no project", "a.txt", "x", ""},
  };
  const tests::TTemporaryFolder folder;
  for (const TRow& row : rows)
    EXPECT_EQ(Shown(ReadProjectFacts(folder.Write(row.File, row.Text))), row.Shown) << row.Name;
}

} // namespace
} // namespace kx::check
