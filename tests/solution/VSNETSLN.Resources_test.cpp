#include "tests/solution/SolutionFolder.h"

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
    const std::string root = Generic(text::ToUtf8(Path()) + "/");
    for (std::string& script : scripts) {
      script = Generic(script);
      if (const std::size_t at = script.find(root); at != std::string::npos) script.erase(at, root.size());
    }
    return scripts;
  }

  static std::string Vcxproj(const std::string& items) {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<Project "
           "xmlns=\"http://schemas.microsoft.com/developer/msbuild/2003\"><ItemGroup>" +
           items + "</ItemGroup></Project>";
  }
};

TEST_F(Resources, AreTheScriptsThatTheProjectFileCompiles) {
  const std::tuple<const char*, std::string, std::string, Strings> cases[] = {
      {"items of one kind, in order and twice",
       "p/a.vcxproj",
       Vcxproj("<ResourceCompile Include=\"res\\b.rc\"/><ResourceCompile Include=\"..\\a.RC\"/>"
               "<ResourceCompile Include=\"res/b.rc\"/><ResourceCompile Include=\"a.rc2\"/>"
               "<ResourceCompile Include=\"\"/><ResourceCompile/><ClCompile Include=\"b.rc\"/>"),
       {"p/res/b.rc", "a.RC", "p/res/b.rc"}},
      {"files in filters, nested too",
       "p/A.VcProj",
       "<?xml version=\"1.0\" encoding=\"Windows-1252\"?>\n<VisualStudioProject><Files>"
       "<Filter><Filter><File RelativePath=\".\\n\xE9.rc\"/></Filter><File RelativePath=\"b.rc\"/></Filter>"
       "<Filter><File RelativePath=\"c.Rc\"/></Filter><File "
       "RelativePath=\"a.rc\"/></Files></VisualStudioProject>",
       {"p/n\xC3\xA9.rc", "p/b.rc", "p/c.Rc"}},
      {"another kind of project", "p/a.csproj", "not XML", {}},
  };
  for (const auto& [what, name, content, expected] : cases) {
    Write(name, content);
    EXPECT_EQ(ScriptsOf(name), expected) << what;
  }
  EXPECT_EQ(ScriptsOf("missing.vcxproj"), Strings{}) << "a project that is not there";
}

TEST_F(Resources, HaveOneScriptThatMentionsAVersionResource) {
  const std::string keyword = "VERSIONINFO";
  const std::string wide = text::ToUtf16LE(u"VERSIONINFO");
  const std::tuple<const char*, std::string, bool> cases[] = {
      {"in other letters", "VersionInfo", false},
      {"UTF-16, behind one that is cut through", "\xFF\xFEx" + wide + "y" + wide, true},
      {"UTF-16, big end first", "\xFE\xFF" + std::string(1, '\0') + wide.substr(0, wide.size() - 1), true},
      {"UTF-16, but cut through", "\xFF\xFE" + std::string(1, 'x') + wide, false},
  };
  Write("a.vcxproj", Vcxproj("<ResourceCompile Include=\"1.rc\"/><ResourceCompile Include=\"2.rc\"/>"));
  Write("2.rc", keyword);
  for (const auto& [what, first, found] : cases) {
    Write("1.rc", first);
    EXPECT_EQ(ScriptsOf("a.vcxproj"), (Strings{"1.rc", "2.rc", found ? "*1.rc" : "*2.rc"})) << what;
  }
  // Wherever the border of two pieces cuts it.
  constexpr std::size_t piece = std::size_t{64} << 10;
  for (std::size_t held = 0; held <= keyword.size(); ++held)
    for (const std::string& script :
         {std::string(piece - held, 'x') + keyword,
          "\xFF\xFE" + text::ToUtf16LE(std::u16string(piece / 2 - 1 - held, u'x')) + wide}) {
      Write("1.rc", script);
      EXPECT_EQ(ScriptsOf("a.vcxproj").back(), "*1.rc") << held << " of " << script.size();
    }
}

TEST_F(Resources, MayBeAnythingWithoutHarm) {
  Write("folder.rc/x");
  // NUL is a device on Windows, whatever its extension.
  Write("a.vcxproj", Vcxproj("<ResourceCompile Include=\"folder.rc\"/><ResourceCompile Include=\"NUL.rc\"/>"
                             "<ResourceCompile Include=\"missing.rc\"/>"));
  EXPECT_EQ(ScriptsOf("a.vcxproj"), (Strings{"folder.rc", "NUL.rc", "missing.rc"}));
  Write("a.vcxproj", "<Project>");
  EXPECT_EQ(
      Plain(FailureOf([&] { ScriptsOf("a.vcxproj"); })),
      "Error parsing project file : Premature end of data in tag Project line 1 (line 1) in DIR/a.vcxproj");
}

} // namespace

} // namespace kx::tests
