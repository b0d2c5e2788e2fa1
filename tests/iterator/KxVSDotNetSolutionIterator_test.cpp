#include "package/iterator/KxVSDotNetSolutionIterator.h"

#include "foundation/text/Text.h"
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
    folder_.Write("App/App.csproj", "");
    folder_.Write("Lib/Lib.csproj", "");
    host_.Variables[u"Root"] = host_.Variables[u"ProjectDir"] = folder_.Path();
    loop_.Attach(host_);
    loop_.SetLoopVariable(u"P");
    Set({{u"Solution", u"%Root%\\App\\App.sln"}});
  }

  void Set(const std::vector<std::pair<std::u16string, std::u16string>>& settings) {
    for (const auto& [name, value] : settings) {
      const auto* row = loop_.PublishedProperties().Find(name);
      ASSERT_NE(row, nullptr) << text::ToUtf8(name);
      row->Set(loop_, PropertyFromText(*row, value));
    }
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
}

TEST_F(TSolutionIteratorTest, TheLoopVariableHoldsTheChosenValueInEitherOrder) {
  const std::tuple<std::u16string, std::u16string, std::u16string, std::string> cases[] = {
      {u"True", u"False", u"svName", "Lib|App|Web|"},
      {u"False", u"True", u"svName", "App|Lib|Web|Gone|"},
      {u"False", u"True", u"svRelativePath", "App.csproj|..\\Lib\\Lib.csproj|http://h/Web|Gone.csproj|"},
      {u"False", u"True", u"svProjectId", "{App}|{Lib}|{Web}|{Gone}|"},
  };
  for (const auto& [sorted, missing, value, expected] : cases) {
    Set({{u"IterateValue", value}, {u"SortByDependency", sorted}, {u"IncludeProjectsNotFound", missing}});
    std::string values;
    for (const auto& line : Run(true))
      if (line.starts_with("= P ")) values += line.substr(4) + "|";
    EXPECT_EQ(values, expected) << text::ToUtf8(value) << " sorted: " << text::ToUtf8(sorted);
  }
}

TEST_F(TSolutionIteratorTest, WhatFailsIsSaidAndNothingRuns) {
  folder_.Write("mutual.sln", Solution(Project("A", "http://a", "{B}") + Project("B", "http://b", "{A}")));
  const std::pair<const char16_t*, std::vector<std::string>> cases[] = {
      {u"", {"3 Solution Path : a value is required."}},
      {u"%Root%/gone.sln", {"3 Solution not found : DIR/gone.sln"}},
      {u"mutual.sln",
       {"0 Loading solution file : DIR/mutual.sln",
        "3 Failed to load solution file : Solution has invalid circular dependancies between : B and A"}},
  };
  host_.Children = [](TKxBaseIterator&) -> bool { throw std::logic_error("a child ran"); };
  for (const auto& [solution, log] : cases) {
    Set({{u"Solution", solution}});
    EXPECT_EQ(Run(false), log);
  }
}

TEST_F(TSolutionIteratorTest, LooksAheadForWhatARunWouldMiss) {
  folder_.Write("none.sln", Solution(""));
  folder_.Write("gone.sln", Solution(Project("A", "A.csproj") + Project("B", "B.csproj")));
  folder_.Write("mutual.sln", Solution(Project("A", "http://a", "{B}") + Project("B", "http://b", "{A}")));
  const std::string gone =
      "The loop has no pass: the solution DIR/gone.sln names 2 projects, and none is on disk. "
      "With IncludeProjectsNotFound they are visited all the same.";
  const std::pair<const char16_t*, std::string> cases[] = {
      {u"App/App.sln", ""},
      {u"%Loop%", ""},
      {u"", "A value is required."},
      {u"no.sln", "Solution not found : DIR/no.sln"},
      {u"none.sln", "The loop has no pass: the solution DIR/none.sln has no projects."},
      {u"gone.sln", gone},
      {u"mutual.sln", "Failed to load solution file : "},
  };
  for (const auto& [solution, message] : cases) {
    Set({{u"Solution", solution}});
    TRecordingValidation errors;
    loop_.LookAhead(errors);
    ASSERT_EQ(errors.Entries.size(), message.empty() ? 0U : 1U) << text::ToUtf8(solution);
    for (const auto& entry : errors.Entries)
      EXPECT_THAT(folder_.Plain(entry), testing::StartsWith("Solution: " + message));
  }
  EXPECT_TRUE(host_.Log().empty());
  Set({{u"Solution", u"gone.sln"}});
  EXPECT_EQ(Run(true).back(), "! empty-loop " + gone);
  Set({{u"IncludeProjectsNotFound", u"True"}});
  EXPECT_EQ(Run(true).back(), "= P DIR/B.csproj");
}

TEST_F(TSolutionIteratorTest, AStopRequestEndsTheLoop) {
  host_.Children = [this](TKxBaseIterator&) {
    host_.StopRequest.Raise();
    return true;
  };
  EXPECT_EQ(Run(false).back(), "= P DIR/App/App.csproj") << "set, its children do not start";
}

} // namespace
} // namespace kx::tests
