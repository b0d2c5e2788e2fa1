#include "package/buildaction/BuildLog.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kx {
namespace {

// All that an analysis sends: "3 text|", "# Errors 2|", "~ text|" for the structured-output helper.
class TRecordingSink : public IBuildOutputSink {
public:
  std::string Sent;

  void Count(TBuildCount what, std::int32_t number) override {
    Sent += (what == TBuildCount::Errors ? "# Errors " : "# Warnings ") + std::to_string(number) + "|";
  }
  void Line(std::u16string_view line, TStatusTag status) override {
    Sent += std::to_string(static_cast<int>(status)) + " " + text::ToUtf8(line) + "|";
  }
  void StructuredLine(std::u16string_view line) override { Sent += "~ " + text::ToUtf8(line) + "|"; }
};

const TBuildOutputOptions DevEnv{false, true, TVSDotNetVersion::vs2008};
const TBuildOutputOptions MSBuild{true, false, TVSDotNetVersion::vs2008};

TEST(BuildOutputAnalysis, CountsWhatTheToolsSumUp) {
  const std::tuple<TBuildOutputOptions, std::u16string, std::string> cases[] = {
      {DevEnv, u"complete -- 0 errors, 2", "# Errors 0|# Warnings 2|0 complete -- 0 errors, 2|"},
      {DevEnv, u"    2 Error(s)", "0     2 Error(s)|"},
      {MSBuild, u"complete -- 1 errors, 2", "0 complete -- 1 errors, 2|"},
      {MSBuild, u"2 Error(s)\r\n0 Warning(s)", "# Errors 2|0 2 Error(s)|0 0 Warning(s)|"},
      // A line with both is sent twice, and is no error.
      {MSBuild, u" error 1 Warning(s), 2 Error(s)",
       "# Errors 2|0  error 1 Warning(s), 2 Error(s)|# Warnings 1|0  error 1 Warning(s), 2 Error(s)|"},
      {{true, true, TVSDotNetVersion::vs2010}, u"an error here\n2 Error(s)", "~ an error here|~ 2 Error(s)|"},
      {DevEnv, u"a\r\nb\n\nc\rd\n", "0 a|0 b|0 |0 c|0 d|"},
      {DevEnv, u"", "0 |"},
  };
  for (const auto& [options, chunk, sent] : cases) {
    TRecordingSink sink;
    TBuildOutputAnalysis(options, sink).Feed(chunk);
    EXPECT_EQ(sink.Sent, sent);
  }
}

TEST(BuildOutputAnalysis, IsLinearInWhateverALineHolds) {
  for (const std::u16string_view piece : {u"1", u": 1 succeeded, 0", u" complete -- 1 ", u" error", u"(s)"}) {
    std::u16string line;
    while (line.size() < 2'000'000)
      line += piece;
    for (const auto& options : {TBuildOutputOptions{false, true, TVSDotNetVersion::vs2003}, MSBuild}) {
      TRecordingSink sink;
      TBuildOutputAnalysis(options, sink).Feed(line);
      EXPECT_EQ(sink.Sent.size(), line.size() + 3);
    }
  }
}

TEST(BuildLog, SumsUpAWholeLog) {
  TBuildLog log(true, TVSDotNetVersion::vs2008);
  for (const auto line : {u"a : error 1", u"a : warning 2", u"1 Warning(s)", u"2 Error(s)", u"it succeeded."})
    log.Feed(line);
  const auto verdict = log.Verdict();
  EXPECT_FALSE(verdict.Failed);
  EXPECT_TRUE(verdict.HasMSBuildSummary && !verdict.HasDevEnvSummary);
  EXPECT_THAT(verdict.Statuses, testing::ElementsAre(2, 1, 1, 1));
  EXPECT_THAT(verdict.Metrics,
              testing::ElementsAre(std::pair(TBuildCount::Warnings, 1), std::pair(TBuildCount::Errors, 2)));
  EXPECT_EQ(std::pair(verdict.Errors, verdict.Warnings), std::pair(std::int64_t{2}, std::int64_t{1}));
  TBuildLog other(false, TVSDotNetVersion::vs2003);
  for (const auto line : {u"complete -- 0 errors, 0", u"Build: 0 succeeded, 1 failed, 0 skipped"})
    other.Feed(line);
  const auto failed = other.Verdict();
  EXPECT_TRUE(failed.Failed && failed.HasDevEnvSummary && !failed.HasMSBuildSummary);
}

} // namespace
} // namespace kx
