#include "package/buildaction/MSBuildLogger.h"

#include "foundation/text/CommandLine.h"
#include "foundation/text/Encoding.h"
#include "tests/support/BareAction.h"
#include "tests/support/RecordingHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kx {
namespace {

using testing::ElementsAre;

class TBuilder : public tests::TBareAction<TCustomKxAction> {
public:
  bool Execute() override { return true; }
};

class MSBuildLogger : public testing::Test {
protected:
  MSBuildLogger() { action_.Attach(host_); }

  void Feed(std::initializer_list<std::u16string_view> lines, bool structured = true) {
    helper_.Start(u"/src/App.sln", structured);
    for (const auto line : lines)
      helper_.ProcessLine(line);
    helper_.EndRun();
  }

  tests::TRecordingHost host_;
  TBuilder action_;
  TKxMSBuildStructuredOutputHelper helper_{action_};
};

TEST_F(MSBuildLogger, CountsAndShowsErrorsAndWarningsWithTheirPlace) {
  Feed({u"TandemorLogger|error|file=/src/Lib/A.cs|line=3|column=7|code=CS0103|project=/src/Lib/"
        u"Lib.csproj|text=no %7Cx%7C%0D%0Ahere",
        u"TandemorLogger|warning|file=/other/B.cs|line=9|column=0|code=CS0219|project=|text=unused 100%25",
        u"TandemorLogger|warning|file=|line=0|column=0|code=|project=|text=general",
        u"TandemorLogger|error|file=MSBUILD|line=0|column=0|code=MSB1|project=|text=bad"});
  EXPECT_THAT(host_.Log(), ElementsAre("3 /src/Lib/A.cs(3,7): error CS0103: no |x|\r\nhere [Lib/Lib.csproj]",
                                       "2 /other/B.cs(9): warning CS0219: unused 100%", "2 warning: general",
                                       "3 MSBUILD: error MSB1: bad"));
  EXPECT_EQ(std::pair(helper_.ErrorCount(), helper_.WarningCount()), std::pair(2, 2));
  helper_.ResetCounts();
  EXPECT_EQ(helper_.ErrorCount() + helper_.WarningCount(), 0);
}

TEST_F(MSBuildLogger, CountsTheProjectsThatWereBuiltWithoutTheSolutionAndItsWrappers) {
  const std::pair<std::u16string_view, std::int64_t> cases[] = {
      {u"/src/App.sln", 0},          {u"/src/App.sln.proj", 0},
      {u"/src/App.SLN.metaproj", 0}, {u"/src/Nat.vcproj.metaproj", 0},
      {u"/src/Site/.metaproj", 1},   {u"/src/App.csproj", 1}};
  for (const auto& [file, count] : cases) {
    helper_.BeginRun();
    Feed({u"TandemorLogger|projectFinished|project=" + std::u16string(file) + u"|succeeded=true"});
    EXPECT_EQ(helper_.BuiltProjects(), count) << text::ToUtf8(file);
  }
  helper_.BeginRun();
  Feed({u"TandemorLogger|buildFinished|succeeded=true"});
  EXPECT_EQ(helper_.BuiltProjects(), std::nullopt);
}

TEST_F(MSBuildLogger, PassesOnWhatNoLoggerWrote) {
  const std::tuple<std::u16string, bool, std::string> cases[] = {
      {u"plain text with error in it", true, "0 plain text with error in it"},
      {u"TandemorLogger|message|importance", true, "0 TandemorLogger|message|importance"},
      {u" TandemorLogger|error|text=x", true, "0  TandemorLogger|error|text=x"},
      {u"TandemorLogger|message|text=50% %z4 %4z %4", true, "0 50% %z4 %4z %4"},
      {u"TandemorLogger|targetStarted|project=p|target=Build", true, "0 Target Build:"},
      {u"TandemorLogger|error|text=x", false, "0 TandemorLogger|error|text=x"},
  };
  for (const auto& [line, structured, message] : cases) {
    host_.ClearLog();
    Feed({line}, structured);
    EXPECT_THAT(host_.Log(), ElementsAre(message));
  }
  EXPECT_EQ(helper_.ErrorCount(), 0);
}

TEST_F(MSBuildLogger, NestsTheGroupsOfProjectsThatOverlap) {
  Feed({u"TandemorLogger|projectStarted|project=/src/A.csproj|targets=Build",
        u"TandemorLogger|projectStarted|project=/src/B.csproj|targets=",
        u"TandemorLogger|projectFinished|project=/src/A.csproj|succeeded=true",
        u"TandemorLogger|projectFinished|project=/src/B.csproj|succeeded=false",
        u"TandemorLogger|projectFinished|project=/src/C.csproj|succeeded=true",
        u"TandemorLogger|projectStarted|project=/src/D.csproj|targets="});
  EXPECT_THAT(host_.Log(), ElementsAre("> Project A.csproj (Build)", "> Project B.csproj", "< 3", "< 1",
                                       "> Project D.csproj", "< 3"));
  EXPECT_THAT(host_.Projects,
              ElementsAre("> A.csproj", "> B.csproj", "< A.csproj", "! B.csproj", "< C.csproj", "> D.csproj"))
      << "at once, whatever the groups wait for";
}

TEST(QuoteMSBuildArg, ArrivesAsOneValueWhoeverReadsTheLine) {
  const std::tuple<std::u16string, std::u16string, std::u16string> cases[] = {
      {u"Debug", u"Debug", u"Debug"},
      {u"", u"", u""},
      {u"Any CPU", u"\"Any CPU\"", u"\"Any CPU\""},
      {u"A;B", u"\"A;B\"", u"A%3BB"},
      {u"C:\\out dir\\", u"\"C:\\out dir\\\\\"", u"\"C:\\out dir\\\\\""},
      {u"C:\\out\\", u"C:\\out\\", u"C:\\out\\"},
      {u"a\"b", u"\"a\\\"b\"", u"\"a\\\"b\""},
  };
  for (const auto& [value, forMSBuild, forOthers] : cases) {
    EXPECT_EQ(QuoteMSBuildArg(value, TCommandLineReader::MSBuildItself), forMSBuild);
    EXPECT_EQ(QuoteMSBuildArg(value, TCommandLineReader::SplitArguments), forOthers);
    EXPECT_THAT(text::SplitCommandLine(u"/p:X=" + forMSBuild + u" /m"), ElementsAre(u"/p:X=" + value, u"/m"));
  }
}

} // namespace
} // namespace kx
