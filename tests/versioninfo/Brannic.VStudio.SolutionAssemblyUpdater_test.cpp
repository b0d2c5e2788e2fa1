#include "package/versioninfo/Brannic.VStudio.SolutionAssemblyUpdater.h"

#include "package/versioninfo/ProjectSources.h"
#include "tests/support/BareAction.h"
#include "tests/support/Failure.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace kx {
namespace {

using testing::ElementsAre;

class TStampAction : public tests::TBareAction<TCustomKxAction>, public IAssemblyInfoCallback {
public:
  bool Execute() override { return true; }
  void OnProcessFile(std::u16string_view fileName, IAssemblyInfoAttributes& updater) override {
    SendMessage(u"File " + std::u16string(fileName));
    updater.SetAttribute(u"AssemblyVersion", Version);
  }
  void AssemblyInfoProcessEntry(std::u16string_view /*name*/, std::u16string_view /*value*/) override {}
  void AssemblyInfoProcessMessage(std::u16string_view text) override {
    Messages.push_back(text::ToUtf8(text));
  }

  std::u16string Version = u"1.2.3.4";
  std::vector<std::string> Messages;
};

std::string Id(char letter) {
  return "{" + std::string(36, letter) + "}";
}

std::string Compiling(const std::string& files, const std::string& more = "") {
  return "<Project><Compile Include=\"" + files + "\"/>" + more + "</Project>";
}

// Every web address is a folder of the test's.
struct TDirectory : IKxDirectoryService {
  explicit TDirectory(std::u16string path) : Path(std::move(path)) { SetServices({.Directory = this}); }
  ~TDirectory() override { SetServices({}); }
  std::optional<platform::DirectoryObject> FindObject(std::u16string_view /*path*/) override {
    return platform::DirectoryObject{u"IIsWebVirtualDir", Path};
  }
  std::u16string Path;
};

class SolutionAssemblyUpdater : public testing::Test {
protected:
  SolutionAssemblyUpdater() { action_.Attach(host_); }

  void AddProject(char letter, const std::string& location) {
    solution_ += "Project(\"" + Id('F') + "\") = \"" + letter + "\", \"" + location + "\", \"" + Id(letter) +
                 "\"\nEndProject\n";
  }
  void AddProject(char letter, const std::string& file, const std::string& content) {
    AddProject(letter, file);
    folder_.Write(file, content);
  }
  std::shared_ptr<IKxAssemblyInfoUpdater> Updater(const TKxWebProjectSettings& web = {},
                                                  TAssemblyInfoHistory* history = nullptr) {
    const std::u16string path = folder_.Write("App.sln", solution_ + "Global\nEndGlobal\n");
    return GetAssemblyInfoUpdater(OpenSolution(path, true), action_, action_, web, history);
  }
  // The lines with the test's folder as DIR.
  std::vector<std::string> Plain(std::vector<std::string> lines) const {
    for (auto& line : lines)
      line = folder_.Plain(line);
    return lines;
  }
  std::vector<std::string> Log() const { return Plain(host_.Log()); }
  // Those since the last call.
  std::vector<std::string> Messages() { return Plain(std::exchange(action_.Messages, {})); }

  tests::TTemporaryFolder folder_;
  tests::TRecordingHost host_;
  TStampAction action_;
  std::string solution_ = "Microsoft Visual Studio Solution File, Format Version 10.00\n";
};

constexpr const char* Old = "[assembly: AssemblyVersion(\"1.0\")]";
constexpr const char* New = "[assembly: AssemblyVersion(\"1.2.3.4\")]";
const std::string Item = Compiling("Properties\\AssemblyInfo.cs");

TEST_F(SolutionAssemblyUpdater, StampsWhatEachProjectNames) {
  AddProject('A', "a\\a.csproj");
  folder_.Write("a/a.csproj", Item);
  folder_.Write("a/Properties/AssemblyInfo.cs", Old);
  AddProject('B', "b.vbproj", "<Compile Include=\"Main.vb\" />");
  Updater()->UpdateAllProjects();
  EXPECT_THAT(Log(), ElementsAre("0 2 projects to process.", "0 Processing Project File : DIR/a/a.csproj",
                                 "0 File DIR/a/Properties/AssemblyInfo.cs",
                                 "0 Processing Project File : DIR/b.vbproj"));
  EXPECT_EQ(folder_.Read("a/Properties/AssemblyInfo.cs"), New);
}

TEST_F(SolutionAssemblyUpdater, AMissingProjectFileEndsTheRun) {
  AddProject('A', "missing.csproj");
  AddProject('B', "b.csproj", "");
  EXPECT_EQ(folder_.Plain(tests::FailureOf([this] { Updater()->UpdateAllProjects(); })),
            "ERROR : Unable to find : DIR/missing.csproj");
  EXPECT_THAT(Log(), ElementsAre("0 2 projects to process."));
}

TEST_F(SolutionAssemblyUpdater, WebProjectsAreFoundAsTheActionSays) {
  const TDirectory directory(folder_.Path());
  AddProject('A', "HTTP://localhost/App/a.csproj");
  folder_.Write("a.csproj", Item);
  folder_.Write("Properties/AssemblyInfo.cs", Old);
  TKxWebProjectSettings web;
  Updater(web)->UpdateAllProjects();
  EXPECT_EQ(folder_.Read("Properties/AssemblyInfo.cs"), New);

  web.ProjLocDetectMethod = TProjLocDetectMethod::useShare;
  web.SharePath = u"no-such-share$";
  EXPECT_EQ(tests::FailureOf([&] { Updater(web)->UpdateAllProjects(); }),
            "ERROR : Unable to find : \\\\localhost\\no-such-share$\\App\\a.csproj");
}

// What another source of the project carries is changed there; nothing stands twice.
TEST_F(SolutionAssemblyUpdater, ChangesAnAttributeWhereItStands) {
  // What the project has beside its AssemblyInfo.cs without a version, and where that comes to stand.
  const std::tuple<const char*, std::string, std::string> cases[] = {
      {"a link", R"(<Compile Include="..\Common.cs"><Link>Common.cs</Link></Compile>)", "Common.cs"},
      {"a link of Visual Studio 2003",
       R"(<File RelPath="Common.cs" Link="..\Common.cs" BuildAction="Compile"/>)", "Common.cs"},
      {"a C++ project", R"(<File RelativePath="..\Common.cpp"/>)", "Common.cpp"},
      {"a list with escapes and properties",
       R"(<PropertyGroup><Root>..\</Root></PropertyGroup><Compile Include="x.cs;$(Root)%43ommon.cs"/>)",
       "Common.cs"},
      {"a pattern", R"(<Compile Include="..\**\C*n.cs" Exclude="..\b\**"/>)", "Common.cs"},
      {"an imported file", R"(<Import Project="..\all.targets"/>)", "Common.cs"},
      {"an item under a condition", R"(<Compile Include="..\Common.cs" Condition="'$(X)'=='1'"/>)",
       "Common.cs"},
      {"in a comment", R"(<!-- <Compile Include="..\Common.cs"/> -->)", "a/AssemblyInfo.cs"},
      {"not compiled", R"(<None Include="..\Common.cs"/>)", "a/AssemblyInfo.cs"},
      {"removed again", R"(<Compile Include="..\Common.cs"/><Compile Remove="..\Common.cs"/>)",
       "a/AssemblyInfo.cs"},
      {"not on disk", R"(<Compile Include="..\Missing.cs"/>)", "a/AssemblyInfo.cs"},
      {"not on disk yet", R"(<Compile Include="..\MyVersion.cs"/>)", "a/AssemblyInfo.cs"},
  };
  for (const auto& [name, item, stamped] : cases) {
    SCOPED_TRACE(name);
    solution_.resize(solution_.find('\n') + 1);
    AddProject('A', "a/a.csproj", Compiling("AssemblyInfo.cs", item));
    folder_.Write("a/AssemblyInfo.cs", "[assembly: AssemblyTitle(\"\")]");
    folder_.Write("all.targets", Compiling("$(MSBuildThisFileDirectory)Common.cs"));
    folder_.Write("Common.cs", Old);
    folder_.Write("Common.cpp", std::string(Old) + ";");
    Updater()->UpdateAllProjects();
    for (const std::string file : {"a/AssemblyInfo.cs", "Common.cs", "Common.cpp"})
      EXPECT_EQ(folder_.Read(file).find(New) != std::string::npos, file == stamped) << file;
    const bool isWarned = stamped != "a/AssemblyInfo.cs" || std::string_view(name) == "not on disk yet";
    EXPECT_EQ(Messages().empty(), !isWarned);
  }
}

// Whoever is stamped first: what one project adds must not keep the other from it.
TEST_F(SolutionAssemblyUpdater, AddsWhatIsCommonToTheFileThatIsAllThatAProjectHasAndNothingTwice) {
  AddProject('A', "a.csproj", Compiling("AssemblyInfo.cs;CommonAssemblyInfo.cs"));
  AddProject('B', "b.csproj", Compiling("CommonAssemblyInfo.cs"));
  AddProject('C', "c.csproj",
             R"(<Project Sdk="x"><Compile Remove="*"/><None Include="c/AssemblyInfo.cs"/></Project>)");
  folder_.Write("AssemblyInfo.cs", "\n");
  folder_.Write("c/AssemblyInfo.cs", "\n");
  folder_.Write("CommonAssemblyInfo.cs", "using System.Reflection;");
  Updater()->UpdateAllProjects();
  EXPECT_EQ(folder_.Read("AssemblyInfo.cs") + folder_.Read("c/AssemblyInfo.cs"), "\n\n");
  EXPECT_EQ(folder_.Read("CommonAssemblyInfo.cs"), std::string("using System.Reflection;\r\n") + New);
  EXPECT_THAT(Messages().back(), testing::HasSubstr("is not added: C has it written by its build"));
  folder_.Write("AssemblyInfo.cs", Old);
  folder_.Write("CommonAssemblyInfo.cs", "\n");
  Updater()->UpdateProjects({text::FromAscii(Id('B'))}, nullptr);
  EXPECT_EQ(folder_.Read("CommonAssemblyInfo.cs"), "\n");
  EXPECT_THAT(Messages(), ElementsAre(testing::HasSubstr(
                              "is not added: A, which is made of this file too, has it already in DIR/")));
  std::filesystem::remove(folder_.Native("CommonAssemblyInfo.cs"));
  Updater()->UpdateProjects({text::FromAscii(Id('A'))}, nullptr);
  EXPECT_EQ(folder_.Read("AssemblyInfo.cs"), New);
}

TEST_F(SolutionAssemblyUpdater, PassesOverWhatIsNotThere) {
  AddProject('A', "a.csproj", Item);
  AddProject('B', "b.csproj", "<Project>");
  AddProject('C', "c.csproj", Compiling("AssemblyInfo.cs"));
  folder_.Write("AssemblyInfo.cs", Old);
  Updater()->UpdateAllProjects();
  EXPECT_EQ(folder_.Read("AssemblyInfo.cs"), New);
  EXPECT_THAT(Log(),
              testing::Contains(testing::AllOf(
                  testing::StartsWith("2 Warning : DIR/a.csproj names "),
                  testing::EndsWith("/AssemblyInfo.cs, which does not exist: the project is not stamped"))));
  EXPECT_THAT(Log(), testing::Contains(testing::StartsWith("2 Warning : DIR/b.csproj cannot be read")));
}

TEST(ReadProjectSources, ListsWhatIsCompiledAndWhatTheBuildWrites) {
  const auto sdk = [](const std::string& properties) {
    return "<Project Sdk='x'><PropertyGroup>" + properties + "</PropertyGroup></Project>";
  };
  const std::string written =
      "|AssemblyCompany AssemblyConfiguration AssemblyFileVersion AssemblyInformationalVersion "
      "AssemblyProduct AssemblyTitle AssemblyVersion";
  const std::tuple<const char*, std::string, std::string> rows[] = {
      {"p.csproj", sdk(""), "a.cs sub/c.cs sub/x/y.cs" + written},
      {"p.vbproj", sdk("<Copyright>c</Copyright>"), "b.vb" + written + " AssemblyCopyright"},
      {"p.fsproj", sdk("<GenerateAssemblyInfo>False</GenerateAssemblyInfo>"), "|"},
      {"p.csproj", sdk("<EnableDefaultItems>false</EnableDefaultItems>"), written},
      {"p.csproj",
       sdk("<EnableDefaultCompileItems>false</EnableDefaultCompileItems><GenerateAssemblyTitleAttribute>"
           "false</GenerateAssemblyTitleAttribute>"),
       text::ToUtf8(text::ReplaceAll(text::FromUtf8(written), u" AssemblyTitle", u""))},
      {"p.csproj", "<Project>", "|"},
      {"p.csproj", Compiling("*.cs;?.vb"), "a.cs b.vb|"},
      {"p.csproj", "<Compile Include='**\\*.cs' Exclude='bin/**;o*\\*;sub\\x\\*'/>", "a.cs sub/c.cs|"},
      {"p.csproj", Compiling("s?b\\*;*\\x\\*.c*"), "sub/c.cs sub/x/y.cs|"},
      {"p.csproj", Compiling("a.cs;A.cs; ;$(No)b.vb;x$(D.cs"), "a.cs b.vb x$(D.cs|"},
      {"p.csproj", Compiling("%61.cs;%6z.cs;%z1.cs;100%2"), "a.cs %6z.cs %z1.cs 100%2|"},
      {"p.csproj",
       "<Project><PropertyGroup><D>sub</D><D Condition='x'>no</D><E Condition='x'>c</E></PropertyGroup>" +
           Compiling("$(D)\\$(e).cs;$(MSBuildProjectDirectory)/a.cs;$(ProjectDir)b.vb;$(SolutionDir)s.cs") +
           "</Project>",
       "sub/c.cs a.cs b.vb s/s.cs|"},
      {"p.csproj",
       "<Project><Import Project='bad.targets'/><Import Project='$(No)'/>" + Compiling("a.cs") + "</Project>",
       "a.cs|"},
      {"p.csproj", Compiling("a.cs;b.vb", "<Compile Remove='A.*'/>"), "b.vb|"},
  };
  const tests::TTemporaryFolder folder;
  for (const auto* name : {"a.cs", "b.vb", "sub/c.cs", "sub/x/y.cs", "bin/d.cs", "obj/e.cs"})
    folder.Write(name);
  folder.Write("bad.targets", "<Project>");
  for (const auto& [file, project, expected] : rows) {
    const auto unit = ReadProjectSources(u"P", folder.Write(file, project), folder.Path("s"));
    std::string found =
        folder.Plain(text::ToUtf8(text::Join(unit.Sources, u" ") + u"|" + text::Join(unit.Generated, u" ")));
    for (auto at = found.find("DIR/"); at != found.npos; at = found.find("DIR/"))
      found.erase(at, 4);
    EXPECT_EQ(found, expected) << project;
    std::filesystem::remove(folder.Native(file));
  }
}

TEST(FindAssemblyInfoName, SeesItemsOneByOne) {
  const std::pair<const char*, std::u16string_view> cases[] = {
      {R"(<Compile Include="Properties\assemblyinfo.CS"/>)", u"Properties\\assemblyinfo.CS"},
      {R"(<P><Compile Include="A b.cs"/><Compile Include="P\AssemblyInfo.cs"/></P>)", u"P\\AssemblyInfo.cs"},
      {R"(<P><!-- <Compile Include="Old\AssemblyInfo.cs"/> --><Compile Include="AssemblyInfo.vb"/></P>)",
       u"AssemblyInfo.vb"},
      {R"(<Compile Include="R&amp;D\My%20Own\AssemblyInfo.cs"/>)", u"R&D\\My Own\\AssemblyInfo.cs"},
      {R"(<P><Compile Include='..\GlobalAssemblyInfo.cs'/><Compile Include='P/AssemblyInfo.cs'/></P>)",
       u"P/AssemblyInfo.cs"},
      {R"(<P><Compile Include="TestAssemblyInfo.x|y.cs"/><Compile Include="AssemblyInfo"/></P>)",
       u"TestAssemblyInfo.x|y.cs"},
      {R"(<P><None Include="T\AssemblyInfo.cs"/><Compile Include="P\AssemblyInfo.cs"/></P>)",
       u"P\\AssemblyInfo.cs"},
      {R"(<P><Content Include="T\AssemblyInfo.cs"/></P>)", u"T\\AssemblyInfo.cs"},
      {R"(<File RelPath="AssemblyInfo.cs" Link="..\AssemblyInfo.cs"/>)", u"..\\AssemblyInfo.cs"},
      {R"(<File RelativePath=".\AssemblyInfo.cpp"/>)", u".\\AssemblyInfo.cpp"},
      {"\"SourcePath\" = \"8:AssemblyInfo.cs\"", u""},
      {R"(<Project><Import Project="all.targets"/></Project>)", u""},
      {"", u""},
  };
  const tests::TTemporaryFolder folder;
  folder.Write("all.targets", Compiling("AssemblyInfo.cs"));
  for (const auto& [project, expected] : cases)
    EXPECT_EQ(FindAssemblyInfoName(folder.Write("a.csproj", project), folder.Path()), expected) << project;
}

} // namespace
} // namespace kx
