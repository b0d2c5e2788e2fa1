#include "iterator/KxVSDotNetSolutionIterator.h"

#include "tests/support/RecordingHost.h"
#include "tests/support/TemporaryFolder.h"
#include "text/Text.h"

#include <gmock/gmock.h>

namespace kx::tests {
namespace {

using testing::Contains;
using testing::ElementsAre;

std::string Project(const std::string& name, const std::string& file, const std::string& id,
                    const std::string& needs = "") {
  const std::string section = "\tProjectSection(ProjectDependencies) = postProject\n\t\t" + needs + " = " +
                              needs + "\n\tEndProjectSection\n";
  return "Project(\"{FAE04EC0-301F-11D3-BF4B-00C04F79EFBC}\") = \"" + name + "\", \"" + file + "\", \"" + id +
         "\"\n" + (needs.empty() ? "" : section) + "EndProject\n";
}

std::string Solution(const std::string& projects) {
  return "\nMicrosoft Visual Studio Solution File, Format Version 10.00\n" + projects + "Global\nEndGlobal\n";
}

const std::string AppId = "{11111111-1111-1111-1111-111111111111}";
const std::string LibId = "{22222222-2222-2222-2222-222222222222}";
const std::string WebId = "{33333333-3333-3333-3333-333333333333}";
const std::string GoneId = "{44444444-4444-4444-4444-444444444444}";

// A loop over a solution whose App needs Lib and is named before it, and whose project Gone is not on disk.
class TSolutionIteratorTest : public testing::Test {
protected:
  TSolutionIteratorTest() {
    folder_.Write("App/App.sln", Solution(Project("App", "App.csproj", AppId, LibId) +
                                          Project("Lib", "..\\Lib\\Lib.csproj", LibId) +
                                          Project("Web", "http://localhost/Web/Web.csproj", WebId) +
                                          Project("Gone", "Gone.csproj", GoneId)));
    folder_.Write("App/App.csproj", "");
    folder_.Write("Lib/Lib.csproj", "");
    host_.Variables[u"Root"] = folder_.Path();
    host_.Variables[u"ProjectDir"] = folder_.Path();
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
      log.push_back(text::ToUtf8(text::ReplaceAll(text::FromUtf8(line), folder_.Path(), u"DIR")));
    return log;
  }
  // The values of the passes.
  std::vector<std::string> Values() {
    std::vector<std::string> values;
    for (const auto& line : Run(true))
      if (line.starts_with("= P ")) values.push_back(line.substr(4));
    return values;
  }

  TTemporaryFolder folder_;
  TRecordingHost host_;
  TKxVSSolutionIterator loop_;
};

TEST_F(TSolutionIteratorTest, TheWholeLogOfALoopInDependencyOrder) {
  EXPECT_THAT(Run(true),
              ElementsAre("0 Loading solution file : DIR\\App\\App.sln",
                          "0 Found 3 projects:", "0 Sorting in dependency order...",
                          "0 Lib - ..\\Lib\\Lib.csproj - " + LibId, "0 App - App.csproj - " + AppId,
                          "0 Web - http://localhost/Web/Web.csproj - " + WebId, "= P DIR/Lib/Lib.csproj",
                          "= P DIR/App/App.csproj", "= P http://localhost/Web/Web.csproj"));
}

TEST_F(TSolutionIteratorTest, TheWholeLogOfALoopInFileOrder) {
  Set({{u"SortByDependency", u"False"}, {u"IterateValue", u"svName"}, {u"IncludeProjectsNotFound", u"True"}});
  EXPECT_THAT(Run(true),
              ElementsAre("0 Loading solution file : DIR\\App\\App.sln", "0 Found 4 projects:",
                          "0 App - App.csproj - " + AppId, "0 Lib - ..\\Lib\\Lib.csproj - " + LibId,
                          "0 Web - http://localhost/Web/Web.csproj - " + WebId,
                          "0 Gone - Gone.csproj - " + GoneId, "= P App", "= P Lib", "= P Web", "= P Gone"));
}

TEST_F(TSolutionIteratorTest, TheLoopVariableHoldsTheChosenValue) {
  const struct {
    const char16_t* Value;
    std::vector<std::string> Expected;
  } cases[] = {
      {u"svName", {"Lib", "App", "Web"}},
      {u"svRelativePath", {"..\\Lib\\Lib.csproj", "App.csproj", "http://localhost/Web/Web.csproj"}},
      {u"svFullPath", {"DIR/Lib/Lib.csproj", "DIR/App/App.csproj", "http://localhost/Web/Web.csproj"}},
      {u"svProjectId", {LibId, AppId, WebId}},
  };
  for (const std::u16string_view solution : {u"%Root%/App/App.sln", u"App\\App.sln"}) {
    Set({{u"Solution", std::u16string(solution)}});
    for (const auto& row : cases) {
      Set({{u"IterateValue", row.Value}});
      EXPECT_EQ(Values(), row.Expected) << text::ToUtf8(row.Value) << " " << text::ToUtf8(solution);
    }
  }
  loop_.IterateValue = static_cast<TVSIterateSolutionValue>(4);
  EXPECT_THAT(Values(), ElementsAre("", "", "")) << "a value of a later version";
}

TEST_F(TSolutionIteratorTest, WhatFailsIsSaidAndNothingRuns) {
  folder_.Write("text.sln", "no solution\n");
  folder_.Write("mutual.sln", Solution(Project("A", "http://h/a", AppId, LibId) +
                                       Project("B", "http://h/b", LibId, AppId)));
  const struct {
    const char16_t* Solution;
    std::vector<std::string> Log;
  } cases[] = {
      {u"", {"3 Solution Path : a value is required."}},
      {u"%Nowhere%\\a.sln", {"3 Solution Path : Unknown name: Nowhere"}},
      {u"%Root%/gone.sln", {"3 Solution not found : DIR/gone.sln"}},
      {u"App", {"3 Solution not found : DIR/App"}},
      {u"text.sln",
       {"0 Loading solution file : DIR/text.sln",
        "3 Failed to load solution file : Invalid Visual Studio Solution Header : no solution"}},
      {u"mutual.sln",
       {"0 Loading solution file : DIR/mutual.sln",
        "3 Failed to load solution file : Solution has invalid circular dependancies between : B and A"}},
  };
  host_.Children = [](TKxBaseIterator&) -> bool { throw std::logic_error("a child ran"); };
  for (const auto& row : cases) {
    Set({{u"Solution", row.Solution}});
    EXPECT_EQ(Run(false), row.Log);
  }
}

TEST_F(TSolutionIteratorTest, AFailingPassAndAStopRequestEndTheLoop) {
  Set({{u"IterateValue", u"svName"}});
  host_.Children = [](TKxBaseIterator& loop) {
    EXPECT_EQ(loop.GetIterationCount(), 3);
    return loop.GetCurrentIteration() < 2;
  };
  auto log = Run(false);
  EXPECT_EQ(log.back(), "= P App") << "the second pass fails, the third never begins";

  host_.Children = [this](TKxBaseIterator&) {
    host_.StopRequest.Raise();
    return true;
  };
  log = Run(false);
  EXPECT_THAT(log, Contains("= P Lib"));
  EXPECT_EQ(std::count_if(log.begin(), log.end(), [](const auto& line) { return line.starts_with("="); }), 2)
      << "the second value is set, its children do not start";
}

TEST_F(TSolutionIteratorTest, EachExecutionReadsTheSolutionAnew) {
  Set({{u"IterateValue", u"svName"}});
  EXPECT_THAT(Values(), ElementsAre("Lib", "App", "Web"));
  folder_.Write("App/App.sln", Solution(""));
  EXPECT_THAT(Run(true), Contains("0 Found 0 projects:"));
  EXPECT_THAT(Values(), ElementsAre());
  folder_.Write("App/App.sln", Solution(Project("Web", "http://localhost/Web.csproj", WebId)));
  EXPECT_THAT(Values(), ElementsAre("Web"));
}

TEST_F(TSolutionIteratorTest, PublishesItsPropertiesInOrder) {
  std::vector<std::string> rows;
  TKxVSSolutionIterator fresh;
  for (const auto& row : fresh.PublishedProperties().Rows())
    rows.push_back(text::ToUtf8(row.Name) + "=" + text::ToUtf8(PropertyToText(row, row.Get(fresh))));
  EXPECT_THAT(rows, ElementsAre("Solution=", "IterateValue=svFullPath", "SortByDependency=True",
                                "IncludeProjectsNotFound=False"));
  EXPECT_EQ(loop_.GetFormattedDescription(), u"VS.NET Solution Iterator [ %Root%\\App\\App.sln ]");
  EXPECT_EQ(loop_.GetActionKeywords(), u"Visual Studio VisualStudio Project");
}

} // namespace
} // namespace kx::tests
