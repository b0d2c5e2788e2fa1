#include "program/history/HistoryFile.h"
#include "program/history/Questions.h"
#include "program/history/RunRecorder.h"

#include "contract/UnitTests.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace kx::history {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::HasSubstr;

const auto Noon = std::chrono::system_clock::time_point(std::chrono::hours(24) * 20'000);

class HistoryTest : public testing::Test {
protected:
  struct TGiven {
    std::vector<std::u16string> Findings = {}; // their fingerprints
    std::string Tests = {};                    // a letter each: "p" passed, "f" failed
    std::u16string Commit = {};
    TResultKind Result = TResultKind::Succeeded;
    std::chrono::hours At{0};
  };

  // What is said of it is in `Said`.
  TRunReport Run(const TGiven& given, const TLimits& limits = {}) {
    TRunRecorder recorder({.File = file_}, u"any.kxproj", limits);
    std::u16string suite = u"<testsuite name=\"S\" tests=\"1\" failures=\"0\" skipped=\"0\" time=\"0\">";
    for (std::size_t i = 0; i < given.Tests.size(); ++i)
      suite += u"<testcase name=\"T" + text::FromInteger(static_cast<int>(i)) + u"\" time=\"" +
               text::FromInteger(static_cast<int>(i)) + u".5\">" +
               (given.Tests[i] == 'f' ? u"<failure message=\"\"/>" : u"") + u"</testcase>";
    recorder.On({Noon, 0,
                 TMetricSent{{std::u16string(UnitTestCategory), std::u16string(TestResultsMetric),
                              suite + u"</testsuite>"}}});
    TRunReport report{.Result = given.Result, .Elapsed = milliseconds(100)};
    report.Began = Noon + given.At;
    report.Surroundings.Commit = given.Commit;
    for (const auto& fingerprint : given.Findings)
      report.Findings.push_back({.Rule = u"CS1", .Message = u"m " + fingerprint, .Fingerprint = fingerprint});
    Said = text::ToUtf8(recorder.Finish(report));
    return report;
  }

  static std::string FixedOf(const TRunReport& report) {
    std::string fixed;
    for (const auto& finding : report.Past->Fixed)
      fixed += text::ToUtf8(finding.Fingerprint);
    return fixed;
  }
  static std::string KnownOf(const TRunReport& report) {
    std::map<std::u16string, std::size_t> sorted(report.Past->KnownSince.begin(),
                                                 report.Past->KnownSince.end());
    std::string known;
    for (const auto& [fingerprint, since] : sorted)
      known += text::ToUtf8(fingerprint) + std::to_string(since);
    return known;
  }

  std::string Said;
  tests::TTemporaryFolder folder_;
  std::u16string file_ = folder_.Path("h.sqlite");
};

TEST_F(HistoryTest, TellsWhatIsNewKnownAndFixed) {
  TRunReport report = Run({{u"a", u"b"}});
  EXPECT_TRUE(report.Past->Runs.empty());
  report = Run({{u"a", u"c"}});
  EXPECT_EQ(KnownOf(report), "a0");
  EXPECT_EQ(FixedOf(report), "b");
  report = Run({{u"a"}, "", u"", TResultKind::Stopped}); // what it did not get to is not fixed
  EXPECT_EQ(FixedOf(report), "");
  report = Run({{u"a", u"b", u"c"}});
  EXPECT_EQ(KnownOf(report), "a0c1"); // b has been away
  EXPECT_EQ(report.Past->Runs.size(), 3U);
  EXPECT_EQ(THistory(file_).Findings().back().SinceRun, 4);
  EXPECT_EQ(THistory(file_).Runs(2).front().Number, 3);
  EXPECT_EQ(THistory(file_).Details(2)->Findings.size(), 2U);
}

TEST_F(HistoryTest, KeepsNoMoreRunsAndNoOlderOnesThanItMay) {
  const TLimits limits{.Runs = 3, .Age = std::chrono::days(10)};
  Run({{u"old"}, "p"}, limits);
  for (int i = 0; i < 4; ++i)
    Run({{u"new"}}, limits);
  EXPECT_EQ(THistory(file_).Runs(100).front().Number, 3);
  Run({.At = std::chrono::hours(24 * 20)}, limits);
  EXPECT_EQ(THistory(file_).Runs(100).size(), 1U);
  TDatabase database = OpenToAsk(file_);
  EXPECT_EQ(
      database.Integer("SELECT (SELECT count(*) FROM findings) * 100 + (SELECT count(*) FROM tests) * 10 + "
                       "(SELECT count(*) FROM outcomes)"),
      1); // what no run is left of is gone
}

TEST_F(HistoryTest, FindsFlakyAndSlowTests) {
  for (const auto& [outcomes, commit] : std::initializer_list<std::pair<const char*, const char16_t*>>{
           {"ppfp", u"1"}, {"pffp", u"1"}, {"pfpp", u"2"}, {"ppfp", u"3"}})
    Run({{}, outcomes, commit});
  const TRunReport report = Run({{}, "pppp", u"4"});
  EXPECT_THAT(report.Past->Tests.at(u"S/T1"),
              ElementsAre(TPastTest::Passed, TPastTest::Failed, TPastTest::Failed, TPastTest::Passed));
  std::vector<std::string> tests;
  for (const auto& test : THistory(file_).Tests(100))
    tests.push_back(text::ToUtf8(test.Name) + (test.IsFlaky ? " flaky " : " ") +
                    std::to_string(test.Changes) + " " + std::to_string(test.LastFailure) + " " +
                    std::to_string(test.Usual.count()));
  EXPECT_THAT(tests,
              ElementsAre("S/T2 flaky 3 4 2500", "S/T1 flaky 2 3 1500", "S/T3 0 0 3500", "S/T0 0 0 500"));
}

TEST_F(HistoryTest, TakesRunsThatEndAtOnce) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 6; ++i)
    threads.emplace_back([this] {
      TRunRecorder recorder({.File = file_}, u"any.kxproj");
      TRunReport report;
      EXPECT_EQ(text::ToUtf8(recorder.Finish(report)), "");
    });
  for (auto& thread : threads)
    thread.join();
  EXPECT_EQ(THistory(file_).LastRun(), 6);
}

// No run fails, and nothing is lost that is somebody else's.
TEST_F(HistoryTest, LivesWithAnyFile) {
  Run({{u"a"}});
  const std::string whole = *platform::ReadFile(file_);
  std::string newer = whole;
  newer[63] = 99; // user_version
  std::string foreign = whole;
  foreign[68] = 'x'; // application_id
  struct TCase {
    std::string Bytes;
    std::string Said;
    bool IsSetAside = false;
  };
  const TCase cases[] = {
      {"my own notes, of which there is no copy anywhere", "is not in the history"},
      {newer, "newer version"},
      {foreign, "another program"},
      {whole.substr(0, 200) + std::string(whole.size() - 200, 'x'), "a new one begins", true},
      {whole.substr(0, whole.size() / 2), "a new one begins", true},
      {"", ""},
  };
  for (const TCase& c : cases) {
    ASSERT_TRUE(platform::SaveFile(file_, c.Bytes));
    Run({{u"a"}});
    EXPECT_THAT(Said, HasSubstr(c.Said));
    const bool isNew = c.IsSetAside || c.Bytes.empty();
    EXPECT_EQ(*platform::ReadFile(c.IsSetAside ? file_ + u".damaged" : file_) == c.Bytes, !c.Bytes.empty());
    if (isNew) {
      EXPECT_EQ(THistory(file_).LastRun(), 1) << c.Said;
    }
  }
  file_ = folder_.Path(); // cannot be a file
  EXPECT_EQ(Run({{u"a"}}).Past, nullptr);
  EXPECT_THAT(Said, HasSubstr("is not in the history"));
}

TEST(Place, IsOneForEachProjectUnderItsRealName) {
  const tests::TTemporaryFolder folder;
  const std::u16string file = TPlace{}.FileFor(folder.Path("Nightly build.kxproj"));
  EXPECT_THAT(text::ToUtf8(file), AllOf(HasSubstr("Nightly_build-"), testing::EndsWith(".sqlite")));
  EXPECT_EQ(file, TPlace{}.FileFor(folder.Path("x/../Nightly build.kxproj")));
  EXPECT_NE(file, TPlace{}.FileFor(folder.Path("x/Nightly build.kxproj")));
  EXPECT_EQ(TPlace{.Off = true}.FileFor(u"a.kxproj"), u"");
  EXPECT_EQ(TPlace{}.FileFor(u""), u"");
}

} // namespace
} // namespace kx::history
