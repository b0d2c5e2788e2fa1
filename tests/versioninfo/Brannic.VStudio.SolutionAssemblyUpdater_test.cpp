#include "versioninfo/Brannic.VStudio.SolutionAssemblyUpdater.h"

#include "host/RegEx.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <random>

namespace kx {
namespace {

using testing::ElementsAre;

class TStampAction : public TCustomKxAction, public IAssemblyInfoCallback {
public:
  const TKxPropertyTable& PublishedProperties() const override {
    static const TKxPropertyTable none;
    return none;
  }
  std::u16string GetActionName() const override { return u"Stamp"; }
  bool Execute() override { return true; }
  void OnProcessFile(std::u16string_view fileName, IAssemblyInfoAttributes& updater) override {
    SendMessage(u"File " + std::u16string(fileName));
    updater.SetAttribute(u"AssemblyVersion", u"1.2.3.4");
  }
  void AssemblyInfoProcessEntry(std::u16string_view /*name*/, std::u16string_view /*value*/) override {}
  void AssemblyInfoProcessMessage(std::u16string_view /*text*/) override {}
};

std::string Id(char letter) {
  return "{" + std::string(36, letter) + "}";
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
  std::shared_ptr<IKxAssemblyInfoUpdater> Updater(const TKxWebProjectSettings& web = {}) {
    const std::u16string path = folder_.Write("App.sln", solution_ + "Global\nEndGlobal\n");
    return GetAssemblyInfoUpdater(OpenSolution(path, true), action_, action_, web);
  }
  // The log with the test's folder as "@".
  std::vector<std::string> Log() const {
    std::vector<std::string> log = host_.Log();
    const std::string folder = text::ToUtf8(folder_.Path());
    for (std::string& line : log)
      if (const auto at = line.find(folder); at != std::string::npos)
        line = tests::Generic(line.replace(at, folder.size(), "@"));
    return log;
  }
  std::string Read(std::string_view name) const { return *platform::ReadFile(folder_.Path(name)); }

  tests::TTemporaryFolder folder_;
  tests::TRecordingHost host_;
  TStampAction action_;
  std::string solution_ = "Microsoft Visual Studio Solution File, Format Version 10.00\n";
};

constexpr const char* Old = "[assembly: AssemblyVersion(\"1.0\")]";
constexpr const char* New = "[assembly: AssemblyVersion(\"1.2.3.4\")]";
constexpr const char* Item = "<Compile Include=\"Properties\\AssemblyInfo.cs\" />";

TEST_F(SolutionAssemblyUpdater, StampsWhatEachProjectNames) {
  AddProject('A', "a\\a.csproj");
  AddProject('B', "b.vbproj");
  folder_.Write("a/a.csproj", Item);
  folder_.Write("a/Properties/AssemblyInfo.cs", Old);
  folder_.Write("b.vbproj", "<Compile Include=\"Main.vb\" />");
  Updater()->UpdateAllProjects();
  EXPECT_THAT(Log(),
              ElementsAre("0 2 projects to process.", "0 Processing Project File : @/a/a.csproj",
                          "0 File @/a/Properties/AssemblyInfo.cs", "0 Processing Project File : @/b.vbproj"));
  EXPECT_EQ(Read("a/Properties/AssemblyInfo.cs"), New);
}

TEST_F(SolutionAssemblyUpdater, FiltersIdentifiersInTheirOrder) {
  AddProject('A', "a.csproj");
  folder_.Write("a.csproj");
  const text::TStringList none;
  const std::u16string a = text::FromAscii(Id('A'));
  const text::TStringList some{a, u"{X}"};
  const auto updater = Updater();
  updater->UpdateProjects({u"{X}", a, u"{B}"}, &some);
  updater->UpdateProjects({a}, &none);
  EXPECT_THAT(Log(), ElementsAre("0 2 projects to process.", "0 ProjectID : {X} - not found in solution",
                                 "0 Processing Project File : @/a.csproj", "0 0 projects to process."));
}

TEST_F(SolutionAssemblyUpdater, AMissingProjectFileEndsTheRun) {
  AddProject('A', "missing.csproj");
  AddProject('B', "b.csproj");
  folder_.Write("b.csproj");
  try {
    Updater()->UpdateAllProjects();
    FAIL() << "went on";
  } catch (const EKxException& error) {
    EXPECT_EQ(error.what(), "ERROR : Unable to find : " + text::ToUtf8(folder_.Path("missing.csproj")));
  }
  EXPECT_THAT(Log(), ElementsAre("0 2 projects to process."));
}

TEST_F(SolutionAssemblyUpdater, WebProjectsAreFoundAsTheActionSays) {
  const TDirectory directory(folder_.Path());
  AddProject('A', "HTTP://localhost/App/a.csproj");
  folder_.Write("a.csproj", Item);
  folder_.Write("Properties/AssemblyInfo.cs", Old);
  TKxWebProjectSettings web;
  Updater(web)->UpdateAllProjects();
  EXPECT_EQ(Read("Properties/AssemblyInfo.cs"), New);

  web.ProjLocDetectMethod = TProjLocDetectMethod::useShare;
  web.SharePath = u"no-such-share$";
  try {
    Updater(web)->UpdateAllProjects();
    FAIL() << "the share is not there";
  } catch (const EKxException& error) {
    EXPECT_STREQ(error.what(), "ERROR : Unable to find : \\\\localhost\\no-such-share$\\App\\a.csproj");
  }
}

// The expressions as they are meant, which take time in proportion to the square of a line's length.
std::u16string_view Simple(std::u16string_view text) {
  const auto first = RegEx::Match(text, u"\"((.*\\\\)?AssemblyInfo\\.\\w+)\"", TRegExOptions::IgnoreCase);
  if (first) return first.GetItem(1);
  return RegEx::Match(text, u"\"(.*AssemblyInfo[\\w|\\.]+)\"", TRegExOptions::IgnoreCase).GetItem(1);
}

TEST(FindAssemblyInfoName, FindsWhatTheExpressionsMean) {
  constexpr std::u16string_view pieces[] = {
      u"\"",   u"\\", u"AssemblyInfo", u"assemblyinfo.", u"AssemblyInfo.cs\"", u"\\AssemblyInfo.vb\"", u"|",
      u"x y.", u"\n", u"\r\n",         u"\u00E9",        u"\"AssemblyInfo.c"};
  std::minstd_rand random(20050101);
  for (int round = 0; round < 4000; ++round) {
    std::u16string text;
    for (auto count = random() % 12; count > 0; --count)
      text += pieces[random() % std::size(pieces)];
    ASSERT_EQ(FindAssemblyInfoName(text), Simple(text)) << text::ToUtf8(text);
  }
}

TEST(FindAssemblyInfoName, TakesLongLines) {
  std::u16string text;
  while (text.size() < 2'000'000)
    text += u"<Compile Include=\"F\\AssemblyInfoReader.cs\" />AssemblyInfo.";
  EXPECT_TRUE(FindAssemblyInfoName(text).ends_with(u"\\AssemblyInfoReader.cs"));
}

} // namespace
} // namespace kx
