#include "package/iterator/KxVSDotNetSolutionIterator.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "tests/support/Properties.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace kx::tests {
namespace {

std::string Project(const std::string& name, const std::string& file, const std::string& needs = "") {
  const std::string section = "ProjectSection(ProjectDependencies)\nx = " + needs + "\nEndProjectSection\n";
  return "Project(\"{FAE04EC0-301F-11D3-BF4B-00C04F79EFBC}\") = " + name + ", \"" + file + "\", {" + name +
         "}\n" + (needs.empty() ? "" : section) + "EndProject\n";
}

std::string Solution(const std::string& projects) {
  return "\nMicrosoft Visual Studio Solution File, Format Version 10.00\n" + projects + "Global\nEndGlobal\n";
}

// A loop over a solution whose App needs Lib and is named before it, and whose project Gone is not on disk.
class TSolutionIteratorTest : public testing::Test {
protected:
  TSolutionIteratorTest() {
    folder_.Write("App/App.sln",
                  Solution(Project("App", "App.csproj", "{Lib}") + Project("Lib", "..\\Lib\\Lib.csproj") +
                           Project("Web", "http://h/Web") + Project("Gone", "Gone.csproj")));
    folder_.Write("App/App.csproj");
    folder_.Write("Lib/Lib.csproj");
    folder_.Write("none.sln", Solution(""));
    folder_.Write("gone.sln", Solution(Project("A", "A.csproj") + Project("B", "B.csproj")));
    folder_.Write("mutual.sln", Solution(Project("A", "http://a", "{B}") + Project("B", "http://b", "{A}")));
    host_.Variables[u"Root"] = host_.Variables[u"ProjectDir"] = folder_.Path();
    loop_.Attach(host_);
    loop_.SetLoopVariable(u"P");
    loop_.Solution = u"%Root%\\App\\App.sln";
  }

  // Runs the loop; the log with the folder of the test as DIR.
  std::vector<std::string> Run(bool expected) {
    host_.ClearLog();
    EXPECT_EQ(loop_.Execute(), expected);
    std::vector<std::string> log;
    for (const auto& line : host_.Log())
      log.push_back(folder_.Plain(line));
    return log;
  }
  TTemporaryFolder folder_;
  TRecordingHost host_;
  TKxVSSolutionIterator loop_;
};

TEST_F(TSolutionIteratorTest, TheWholeLogOfALoopInDependencyOrder) {
  EXPECT_THAT(Run(true),
              testing::ElementsAre("0 Loading solution file : DIR/App/App.sln", "0 Found 3 projects:",
                                   "0 Sorting in dependency order...", "0 Lib - ..\\Lib\\Lib.csproj - {Lib}",
                                   "0 App - App.csproj - {App}", "0 Web - http://h/Web - {Web}",
                                   "= P DIR/Lib/Lib.csproj", "= P DIR/App/App.csproj", "= P http://h/Web"));
  host_.Children = [this](TKxBaseIterator&) {
    host_.StopRequest.Raise();
    return true;
  };
  EXPECT_EQ(Run(false).back(), "= P DIR/App/App.csproj") << "set, its children do not start";
}

// C needs B, which is not on disk and needs A; D needs A and C.
TEST_F(TSolutionIteratorTest, TellsItsPassesAndWhichOfThemComeFirst) {
  folder_.Write("App/Chain.sln",
                Solution(Project("D", "http://d", "{a}\n{x} = {C}") + Project("C", "http://c", "{B}") +
                         Project("B", "B.csproj", "{A}") + Project("A", "http://a")));
  const std::tuple<std::u16string, bool, std::string> cases[] = {
      {u"App/App.sln", true, "Lib: App:0 Web: "},
      {u"App/Chain.sln", true, "C: A:0 D:0,1 "},  // sorted without regard to what is not on disk
      {u"App/Chain.sln", false, "D: C:0 A:0,1 "}, // whichever the loop visits first
      {u"none.sln", true, ""},
      {u"mutual.sln", true, "nothing"},
      {u"no.sln", true, "nothing"},
      {u"%Loop%", true, "nothing"},
  };
  TPropertyTexts(loop_).Set(u"IterateValue=svName");
  for (const auto& [solution, sorted, expected] : cases) {
    loop_.Solution = solution;
    loop_.SortByDependency = sorted;
    const auto passes = loop_.Passes();
    std::string text = passes ? "" : "nothing";
    for (const auto& pass : passes.value_or(std::vector<TKxPass>())) {
      text += text::ToUtf8(pass.Value) + ":";
      for (const std::size_t need : pass.Needs)
        text += (need == pass.Needs.front() ? "" : ",") + std::to_string(need);
      text += " ";
    }
    EXPECT_EQ(text, expected) << text::ToUtf8(solution);
  }
  text::TStringList files;
  for (const auto* solution : {u"%Loop%", u"", u"App/App.sln"}) {
    loop_.Solution = solution;
    loop_.GetFilesToRead(files);
  }
  EXPECT_EQ(files, text::TStringList{folder_.Path("App/App.sln")});
  EXPECT_EQ(loop_.GetFormattedDescription(), u"VS.NET Solution Iterator [ App/App.sln ]");
  EXPECT_TRUE(host_.Log().empty());
}

TEST_F(TSolutionIteratorTest, WhatFailsIsSaidAndNothingRuns) {
  const std::pair<const char16_t*, std::string> cases[] = {
      {u"", "3 Solution Path : a value is required."},
      {u"%Root%/no.sln", "3 Solution not found : DIR/no.sln"},
      {u"mutual.sln",
       "3 Failed to load solution file : Solution has invalid circular dependancies between : B and A"},
      {u"torn.sln", "2 Warning : reading stopped in DIR/torn.sln, line 3."},
  };
  folder_.Write("torn.sln", Solution("Project(\"x\") = \"A\"\n"));
  host_.Children = [](TKxBaseIterator&) -> bool { throw std::logic_error("a child ran"); };
  for (const auto& [solution, last] : cases) {
    loop_.Solution = solution;
    EXPECT_EQ(Run(false).back(), last);
  }
}

TEST_F(TSolutionIteratorTest, LooksAheadForWhatARunWouldMiss) {
  const std::string gone =
      "The loop has no pass: the solution DIR/gone.sln names 2 projects, and none is on disk. "
      "With IncludeProjectsNotFound they are visited all the same.";
  const std::tuple<std::u16string, std::u16string, std::string> cases[] = {
      {u"App/App.sln", u"P", ""},
      {u"%Loop%", u"P", ""},
      {u"%Loop%", u"a b", "Loop Variable: No text can refer to \"a b\""},
      {u"", u"P", "Solution: A value is required."},
      {u"no.sln", u"P", "Solution: Solution not found : DIR/no.sln"},
      {u"none.sln", u"P", "Solution: The loop has no pass: the solution DIR/none.sln has no projects."},
      {u"gone.sln", u"P", "Solution: " + gone},
      {u"mutual.sln", u"P", "Solution: Failed to load solution file : "},
  };
  for (const auto& [solution, variable, message] : cases) {
    loop_.Solution = solution;
    loop_.SetLoopVariable(variable);
    TRecordingValidation errors;
    loop_.LookAhead(errors);
    ASSERT_EQ(errors.Entries.size(), message.empty() ? 0U : 1U) << text::ToUtf8(solution);
    for (const auto& entry : errors.Entries)
      EXPECT_THAT(folder_.Plain(entry), testing::StartsWith(message));
  }
  EXPECT_TRUE(host_.Log().empty());
  loop_.Solution = u"gone.sln";
  EXPECT_EQ(Run(true).back(), "! empty-loop " + gone);
  loop_.IncludeProjectsNotFound = true;
  EXPECT_EQ(Run(true).back(), "= P DIR/B.csproj");
}

TEST(IteratorProperties, AreEachTheirOwn) {
  EXPECT_EQ(tests::SideEffects<TKxVSSolutionIterator>(), "");
}

TEST_F(TSolutionIteratorTest, TheLoopVariableHoldsTheChosenValueInEitherOrder) {
  const std::tuple<bool, std::u16string, std::string> cases[] = {
      {true, u"svName", "Lib|App|Web|"},
      {false, u"svName", "App|Lib|Web|Gone|"},
      {false, u"svRelativePath", "App.csproj|..\\Lib\\Lib.csproj|http://h/Web|Gone.csproj|"},
      {false, u"svProjectId", "{App}|{Lib}|{Web}|{Gone}|"},
  };
  for (const auto& [sorted, value, expected] : cases) {
    loop_.SortByDependency = sorted;
    loop_.IncludeProjectsNotFound = !sorted;
    TPropertyTexts(loop_).Set(u"IterateValue=" + value);
    std::string values;
    for (const auto& line : Run(true))
      if (line.starts_with("= P ")) values += line.substr(4) + "|";
    EXPECT_EQ(values, expected);
  }
}

} // namespace
} // namespace kx::tests
