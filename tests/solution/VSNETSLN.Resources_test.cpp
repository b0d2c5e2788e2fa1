#include "tests/solution/SolutionFolder.h"

#include <sys/stat.h>

namespace kx::tests {

namespace {

class Resources : public SolutionFolder {
protected:
  // Scripts below the folder of the test, and the one with a version behind a "*".
  Strings ScriptsOf(const std::string& projectPath) const {
    const auto solution =
        OpenText("Microsoft Visual Studio Solution File, Format Version 11.00\nProject(\"" +
                 std::string(38, 'x') + "\") = A, \"" + projectPath + "\", {1}\nGlobal\nEndGlobal\n");
    const auto project = solution->GetProjects()->GetItem(0);
    Strings scripts = Lines(project->GetRCFiles());
    if (!project->GetRCWithVersionInfo().empty())
      scripts.push_back("*" + text::ToUtf8(project->GetRCWithVersionInfo()));
    for (std::string& script : scripts) {
      const std::string root = Native("").string();
      if (const std::size_t at = script.find(root); at != std::string::npos) script.erase(at, root.size());
    }
    return scripts;
  }

  static std::string Vcxproj(const std::string& items) {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<Project "
           "xmlns=\"http://schemas.microsoft.com/developer/msbuild/2003\"><ItemGroup>" +
           items + "</ItemGroup></Project>";
  }
  static std::string Vcproj(const std::string& files) {
    return "<?xml version=\"1.0\" encoding=\"Windows-1252\"?>\n<VisualStudioProject><Files>" + files +
           "</Files></VisualStudioProject>";
  }
};

TEST_F(Resources, AreTheScriptsThatTheProjectFileCompiles) {
  const struct {
    const char* What;
    std::string Name;
    std::string Content;
    Strings Expected;
  } cases[] = {
      {"two items, in order and twice",
       "p/a.vcxproj",
       Vcxproj("<ResourceCompile Include=\"res\\b.rc\"/><ResourceCompile Include=\"..\\a.RC\"/>"
               "<ResourceCompile Include=\"res/b.rc\"/>"),
       {"p/res/b.rc", "a.RC", "p/res/b.rc"}},
      {"another extension, none, no attribute",
       "p/a.vcxproj",
       Vcxproj("<ResourceCompile Include=\"a.rc2\"/><ResourceCompile Include=\"\"/><ResourceCompile/>"
               "<ClCompile Include=\"b.rc\"/>"),
       {}},
      {"without the namespace",
       "p/a.vcxproj",
       "<Project><ItemGroup><ResourceCompile Include=\"a.rc\"/></ItemGroup></Project>",
       {}},
      {"filters, nested too",
       "p/A.VcProj",
       Vcproj("<Filter><Filter><File RelativePath=\".\\n\xE9.rc\"/></Filter><File "
              "RelativePath=\"b.rc\"/></Filter>"
              "<Filter><File RelativePath=\"c.Rc\"/></Filter>"),
       {"p/n\xC3\xA9.rc", "p/b.rc", "p/c.Rc"}},
      {"outside any filter", "p/a.vcproj", Vcproj("<File RelativePath=\"a.rc\"/>"), {}},
      {"another root",
       "p/a.vcproj",
       "<Project><Files><Filter><File RelativePath=\"a.rc\"/></Filter></Files></Project>",
       {}},
      {"another kind of project", "p/a.csproj", "not XML", {}},
  };
  for (const auto& row : cases) {
    Write(row.Name, row.Content);
    EXPECT_EQ(ScriptsOf(row.Name), row.Expected) << row.What;
  }
  EXPECT_EQ(ScriptsOf("missing.vcxproj"), Strings{}) << "a project that is not there";
}

TEST_F(Resources, HaveOneScriptThatMentionsAVersionResource) {
  const std::string keyword = "VERSIONINFO";
  const std::string wide = text::ToUtf16LE(u"VERSIONINFO");
  const struct {
    const char* What;
    std::string First;
    bool Found;
  } cases[] = {
      {"in a comment", "// VERSIONINFO", true},
      {"in other letters", "VersionInfo", false},
      {"across two pieces", std::string(65'530, 'x') + keyword, true},
      {"far behind", std::string(300'000, 'x') + keyword, true},
      {"cut off", keyword.substr(0, 10), false},
      {"UTF-16", "\xFF\xFE" + wide, true},
      {"UTF-16, across two pieces", "\xFF\xFE" + text::ToUtf16LE(std::u16string(32'760, u'x')) + wide, true},
      {"UTF-16, big end first", "\xFE\xFF" + std::string(1, '\0') + wide.substr(0, wide.size() - 1), true},
      {"UTF-16, but cut through", "\xFF\xFE" + std::string(1, 'x') + wide, false},
      {"UTF-16 without a mark", wide, false},
      {"nothing", "", false},
  };
  Write("a.vcxproj", Vcxproj("<ResourceCompile Include=\"1.rc\"/><ResourceCompile Include=\"2.rc\"/>"));
  Write("2.rc", keyword);
  for (const auto& row : cases) {
    Write("1.rc", row.First);
    EXPECT_EQ(ScriptsOf("a.vcxproj"), (Strings{"1.rc", "2.rc", row.Found ? "*1.rc" : "*2.rc"})) << row.What;
  }
}

TEST_F(Resources, MayBeAnythingWithoutHarm) {
  Write("folder.rc/x");
  ASSERT_EQ(mkfifo(Native("pipe.rc").c_str(), 0600), 0);
  Write("a.vcxproj",
        Vcxproj("<ResourceCompile Include=\"folder.rc\"/><ResourceCompile Include=\"pipe.rc\"/>"
                "<ResourceCompile Include=\"missing.rc\"/><ResourceCompile Include=\"/dev/zero/x.rc\"/>"));
  EXPECT_EQ(ScriptsOf("a.vcxproj"), (Strings{"folder.rc", "pipe.rc", "missing.rc", "/dev/zero/x.rc"}));
}

TEST_F(Resources, RefuseTheSolutionWhenAProjectFileIsMalformed) {
  Write("a.vcxproj", "<Project>");
  EXPECT_THAT(Raised([&] { ScriptsOf("a.vcxproj"); }), testing::StartsWith("Error parsing project file : "));
}

} // namespace

} // namespace kx::tests
