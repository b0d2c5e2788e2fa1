#include "build/BuildLog.h"

#include "text/Encoding.h"
#include "text/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kx {
namespace {

using testing::ElementsAre;

// All that an analysis sends, a line each: "3 text", "# Errors 2", "~ text" for the structured-output helper.
class TRecordingSink : public IBuildOutputSink {
public:
  std::vector<std::string> Sent;

  void Count(TBuildCount what, std::int32_t number) override {
    Sent.push_back((what == TBuildCount::Errors ? "# Errors " : "# Warnings ") + std::to_string(number));
  }
  void Line(std::u16string_view line, TStatusTag status) override {
    Sent.push_back(std::to_string(static_cast<int>(status)) + " " + text::ToUtf8(line));
  }
  void StructuredLine(std::u16string_view line) override { Sent.push_back("~ " + text::ToUtf8(line)); }
};

const TBuildOutputOptions DevEnv{false, true, TVSDotNetVersion::vs2008};
const TBuildOutputOptions OldDevEnv{false, true, TVSDotNetVersion::vs2003};
const TBuildOutputOptions MSBuild{true, false, TVSDotNetVersion::vs2008};

TEST(BuildOutputAnalysis, GivesEachLineItsStatus) {
  struct TCase {
    const char16_t* Line;
    TStatusTag Status;
  };
  using enum TStatusTag;
  const TCase cases[] = {
      {u"a.cpp(3) : error C2065: x", stError},
      {u"a.cpp(3) : ERROR C2065: x", stError},
      {u"NMAKE : fatal erreur U1077", stError},
      {u"error at the beginning of a line", stNormal},
      {u"at the end of a line an error", stNormal},
      {u"an errors count", stNormal},
      {u"fatal|error=1;warning, here", stError},
      {u"1 project failed to load", stError},
      {u"le projet a échoué.", stError},
      {u"le projet a ÉCHOUÉ.", stError},
      {u"x 0 failed, 1 warning here", stWarning},
      {u"x 0 a échoué, un avertissement ici", stWarning},
      {u"x 10 failed, 1 warning here", stError},
      {u"a.cpp(3) : warning C4996: x", stWarning},
      {u"build succeeded.", stSuccess},
      {u"la génération a réussi.", stSuccess},
      {u"x 0 succeeded, y", stNormal},
      {u"x 0 a réussi, y", stNormal},
      {u"========== Build: 1 succeeded, 0 failed, 0 skipped ==========", stSuccess},
      {u"========== Build: 1 succeeded, 1 failed, 0 skipped ==========", stError},
      {u"========== Build: 0 succeeded, 0 failed, 2 up-to-date, 0 skipped ==========", stNormal},
      {u"========== Génération : 0 a réussi, 1 a échoué, 0 mis à jour, 0 a été ignoré ==========", stError},
      {u"========== Génération : 2 a réussi, 0 a échoué, 0 mis à jour, 0 a été ignoré ==========", stSuccess},
      {u"", stNormal},
  };
  for (const auto& row : cases)
    for (const auto& options : {DevEnv, MSBuild}) {
      TRecordingSink sink;
      TBuildOutputAnalysis(options, sink).Feed(row.Line);
      EXPECT_THAT(sink.Sent,
                  ElementsAre(std::to_string(static_cast<int>(row.Status)) + " " + text::ToUtf8(row.Line)));
    }
}

TEST(BuildOutputAnalysis, CountsWhatTheToolsSumUp) {
  struct TCase {
    const char* What;
    TBuildOutputOptions Options;
    std::u16string Chunk;
    std::vector<std::string> Sent;
  };
  const TCase cases[] = {
      {"devenv sends both counts and goes on with the line",
       DevEnv,
       u"Build complete -- 0 errors, 2 warnings",
       {"# Errors 0", "# Warnings 2", "0 Build complete -- 0 errors, 2 warnings"}},
      {"the same in French",
       DevEnv,
       u"Génération terminée -- 3 erreurs, 1 avertissements",
       {"# Errors 3", "# Warnings 1", "0 Génération terminée -- 3 erreurs, 1 avertissements"}},
      {"a number too large to be held",
       DevEnv,
       u"complete -- 99999999999 errors, 1",
       {"# Errors 0", "# Warnings 1", "0 complete -- 99999999999 errors, 1"}},
      {"devenv does not know MSBuild's counts", DevEnv, u"    2 Error(s)", {"0     2 Error(s)"}},
      {"MSBuild's counts are sent plainly",
       MSBuild,
       u"    2 Error(s)\r\n    0 Warning(s)",
       {"# Errors 2", "0     2 Error(s)", "0     0 Warning(s)"}},
      {"the same in French",
       MSBuild,
       u"    1 Erreur(s)\n    4 Avertissement(s)\n",
       {"# Errors 1", "0     1 Erreur(s)", "# Warnings 4", "0     4 Avertissement(s)"}},
      {"a line with both counts is sent twice, and is no error",
       MSBuild,
       u" error 1 Warning(s), 2 Error(s)",
       {"# Errors 2", "0  error 1 Warning(s), 2 Error(s)", "# Warnings 1",
        "0  error 1 Warning(s), 2 Error(s)"}},
      {"letter case counts in summaries",
       MSBuild,
       u"x - 3 error(s), 0 warning(s)",
       {"0 x - 3 error(s), 0 warning(s)"}},
      {"MSBuild does not know devenv's counts",
       MSBuild,
       u"complete -- 1 errors, 2",
       {"0 complete -- 1 errors, 2"}},
      {"structured lines are left alone",
       {true, true, TVSDotNetVersion::vs2010},
       u"an error here\n2 Error(s)",
       {"~ an error here", "~ 2 Error(s)"}},
      {"lines end at CR LF, LF and CR", DevEnv, u"a\r\nb\n\nc\rd\n", {"0 a", "0 b", "0 ", "0 c", "0 d"}},
  };
  for (const auto& row : cases) {
    TRecordingSink sink;
    TBuildOutputAnalysis(row.Options, sink).Feed(row.Chunk);
    EXPECT_EQ(sink.Sent, row.Sent) << row.What;
  }
}

TEST(BuildOutputAnalysis, SeesFailuresThatAnOldExitCodeHides) {
  const std::u16string failure = u"    Build: 2 succeeded, 1 failed, 0 skipped";
  TRecordingSink sink;
  TBuildOutputAnalysis old(OldDevEnv, sink);
  TBuildOutputAnalysis recent(DevEnv, sink);
  for (const std::u16string_view line :
       {u"Build: 2 succeeded, 0 failed, 0 skipped", u"2 succeeded, 1 failed"}) {
    old.Feed(line);
    EXPECT_FALSE(old.HasFailed()) << text::ToUtf8(line);
  }
  old.Feed(u"x\n" + failure + u"\ny");
  old.Feed(u"Build: 3 succeeded, 0 failed, 0 skipped");
  recent.Feed(failure);
  EXPECT_TRUE(old.HasFailed()) << "a later summary does not take it back";
  EXPECT_FALSE(recent.HasFailed());
  old.BeginRun();
  EXPECT_FALSE(old.HasFailed());
}

TEST(BuildOutputAnalysis, IsLinearInWhateverALineHolds) {
  const std::size_t size = 2'000'000;
  for (const std::u16string_view piece :
       {u"1", u": 1 succeeded, 0", u" complete -- 1 ", u" error", u"(s)", u"--"}) {
    std::u16string line;
    while (line.size() < size)
      line += piece;
    for (const auto& options : {OldDevEnv, MSBuild}) {
      TRecordingSink sink;
      TBuildOutputAnalysis(options, sink).Feed(line + u" Error(s)");
      EXPECT_EQ(sink.Sent.back().size(), line.size() + 2 + 9);
    }
  }
}

TEST(BuildLog, SumsUpAWholeLog) {
  std::string lines;
  TBuildLog log(true, TVSDotNetVersion::vs2008, [&lines](TStatusTag status, std::u16string_view line) {
    lines += std::to_string(static_cast<int>(status)) + "\t" + text::ToUtf8(line) + "\n";
  });
  for (const auto line :
       {u"a : error 1", u"a : warning 2", u"    1 Warning(s)", u"    2 Error(s)", u"", u"it succeeded."})
    log.Feed(line);
  const auto verdict = log.Verdict();
  EXPECT_EQ(verdict.Errors, 2);
  EXPECT_EQ(verdict.Warnings, 1);
  EXPECT_FALSE(verdict.Failed);
  EXPECT_THAT(verdict.Statuses, ElementsAre(3, 1, 1, 1));
  EXPECT_THAT(verdict.Metrics,
              ElementsAre(std::pair(TBuildCount::Warnings, 1), std::pair(TBuildCount::Errors, 2)));
  EXPECT_EQ(
      lines,
      "3\ta : error 1\n2\ta : warning 2\n0\t    1 Warning(s)\n0\t    2 Error(s)\n0\t\n1\tit succeeded.\n");
}

} // namespace
} // namespace kx
