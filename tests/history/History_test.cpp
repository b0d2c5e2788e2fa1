#include "program/history/HistoryFile.h"
#include "program/history/HistoryJson.h"
#include "program/history/Questions.h"
#include "program/history/RunRecorder.h"

#include "contract/UnitTests.h"
#include "tests/support/Findings.h"
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
    std::vector<std::pair<std::u16string, TResultKind>> Actions = {};
    bool IsPartial = false;
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
    report.IsPartial = given.IsPartial;
    for (const auto& [name, result] : given.Actions)
      report.Actions.push_back({.Name = name, .Result = result});
    for (const auto& fingerprint : given.Findings)
      report.Findings.push_back({.Rule = u"CS1",
                                 .Message = u"m " + fingerprint,
                                 .Action = u"of " + fingerprint,
                                 .Fingerprint = fingerprint});
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

TEST_F(HistoryTest, CallsFixedOnlyWhatWasLookedFor) {
  using enum TResultKind;
  Run({{u"a", u"b", u"c"}});
  const std::tuple<const char*, std::vector<std::pair<std::u16string, TResultKind>>, bool, const char*>
      cases[] = {
          {"of some actions", {{u"of b", Succeeded}}, true, "b"},
          {"an action passed over",
           {{u"of a", Skipped}, {u"of b", Failed}, {u"of c", Succeeded}},
           false,
           "bc"},
          {"one of two of one name", {{u"of a", Succeeded}, {u"of a", Skipped}}, false, ""},
          {"of all actions that there are", {{u"of b", Succeeded}}, false, "abc"},
      };
  for (const auto& [name, actions, isPartial, fixed] : cases) {
    EXPECT_EQ(FixedOf(Run({.Actions = actions, .IsPartial = isPartial})), fixed) << name;
    const auto report = Run({{u"a", u"b", u"c"}});
    EXPECT_EQ(KnownOf(report).size() / 2 + std::string_view(fixed).size(), 3U) << name; // the rest was there
  }
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

// The numbers of one run, each another; so no column can stand for another one.
TRunReport Numbered(TResultKind result) {
  using std::chrono::hours;
  TRunReport report{.Result = result, .Counts = {11, 12}, .Tests = {13, 14, 15}, .Elapsed = milliseconds(16)};
  report.Began = Noon + hours(24 * 366) + milliseconds(1'234);
  report.Surroundings = {u"box", u"Debian", u"abc", u"main", u"kxhost run", {u"xbuild 14.0", u"mstest"}};
  report.Findings = {tests::FullFinding({u"a.cs", 17, 18})};
  if (result == TResultKind::Failed) {
    report.Findings.push_back({.Fingerprint = u"gone"});
  } else {
    for (const auto* fingerprint : {u"new", u"newer"})
      report.Findings.push_back({.Fingerprint = fingerprint});
  }
  report.Actions = {{.Name = u"L"}, {.Name = u"B", .Pass = u"p", .Nesting = 1}};
  for (auto& action : report.Actions) {
    action.Result = result;
    action.Counts = {19, 20};
    action.Began = milliseconds(21);
    action.Elapsed = milliseconds(22);
  }
  report.Actions[1].Configurations = {{.Configuration = u"Debug", .Result = TResultKind::Failed}};
  report.Actions[1].Configurations[0].Projects = {{.Project = u"App", .Result = result}};
  return report;
}

TEST_F(HistoryTest, AnswersInJsonWithAllThatItWasTold) {
  for (const TResultKind result : {TResultKind::Failed, TResultKind::Succeeded}) {
    TRunRecorder recorder({.File = file_}, u"any.kxproj");
    const auto sent = [&](std::int64_t value) {
      recorder.On({Noon, 0, TMetricSent{{u"Category", u"Name", value}, u"Debug"}});
    };
    sent(31);
    recorder.On({Noon, 0, TActionStarted{.Name = u"B", .Pass = u"p"}});
    sent(32);
    recorder.On({Noon, 0, TActionEnded{}});
    sent(33);
    recorder.On(
        {Noon, 0,
         TMetricSent{
             {std::u16string(UnitTestCategory), std::u16string(TestResultsMetric),
              std::u16string(u"<testsuite name=\"S\"><testcase name=\"T\" time=\"1\"><failure/></testcase>"
                             u"<testcase name=\"T\" time=\"2\"/><testcase name=\"N\"><skipped/>"
                             u"</testcase></testsuite>")}}});
    TRunReport report = Numbered(result);
    ASSERT_EQ(recorder.Finish(report), u"");
  }
  std::string text;
  TJsonWriter json([&text](std::string_view utf8) { text += utf8; });
  THistory history(file_);
  json.Array([&] {
    for (const auto& details : {*history.Details(2)})
      json.Object([&] { WriteDetails(details, json); });
    for (const auto& test : history.Tests(2))
      json.Object([&] { WriteTest(test, json); });
    for (const auto& finding : history.Findings())
      json.Object([&] { WriteFinding(finding, json); });
    for (const auto& time : history.Times(2))
      json.Object([&] { WriteTime(time, json); });
  });
  json.Flush();
  for (std::size_t at = 0; (at = text.find(",{", at)) != std::string::npos;)
    text.insert(++at, "\n");
  EXPECT_EQ(
      text,
      R"json([{"run":2,"began":"2025-10-05T00:00:01.234Z","result":"succeeded","elapsedMs":16,"errors":11,"warnings":12,"tests":{"passed":13,"failed":14,"notRun":15},"newFindings":2,"fixedFindings":1,"commit":"abc","branch":"main","machine":"box","system":"Debian","commandLine":"kxhost run","tools":["xbuild 14.0","mstest"],"parts":[{"action":"L","configuration":"","project":"","nesting":0,"result":"succeeded","errors":19,"warnings":20,"beganMs":21,"elapsedMs":22},
{"action":"B (p)","configuration":"","project":"","nesting":1,"result":"succeeded","errors":19,"warnings":20,"beganMs":21,"elapsedMs":22},
{"action":"B (p)","configuration":"Debug","project":"","nesting":1,"result":"failed","errors":0,"warnings":0,"beganMs":0,"elapsedMs":0},
{"action":"B (p)","configuration":"Debug","project":"App","nesting":1,"result":"succeeded","errors":0,"warnings":0,"beganMs":0,"elapsedMs":0}],"metrics":[{"action":"","configuration":"Debug","name":"Category.Name","value":31},
{"action":"B (p)","configuration":"Debug","name":"Category.Name","value":32},
{"action":"","configuration":"Debug","name":"Category.Name","value":33}],"findings":[{"rule":"C1","severity":"error","message":"m","file":"a.cs","line":17,"column":18,"code":"c","project":"App","configuration":"Debug","action":"Build","occurrences":1,"fingerprint":"f","advice":"mend it"},
{"rule":"","severity":"warning","message":"","file":"","line":null,"column":null,"code":"","project":"","configuration":"","action":"","occurrences":1,"fingerprint":"new","advice":""},
{"rule":"","severity":"warning","message":"","file":"","line":null,"column":null,"code":"","project":"","configuration":"","action":"","occurrences":1,"fingerprint":"newer","advice":""}],"failedTests":["S/T"]},
{"name":"S/T","runs":2,"failures":2,"changes":0,"flaky":false,"lastFailure":2,"usualMs":3000,"strip":"ff"},
{"name":"S/N","runs":0,"failures":0,"changes":0,"flaky":false,"lastFailure":null,"usualMs":0,"strip":"nn"},
{"sinceRun":1,"since":"2025-10-05T00:00:01.234Z","rule":"C1","severity":"error","message":"m","file":"a.cs","line":17,"column":18,"code":"c","project":"App","configuration":"Debug","action":"Build","occurrences":1,"fingerprint":"f","advice":"mend it"},
{"sinceRun":2,"since":"2025-10-05T00:00:01.234Z","rule":"","severity":"warning","message":"","file":"","line":null,"column":null,"code":"","project":"","configuration":"","action":"","occurrences":1,"fingerprint":"new","advice":""},
{"sinceRun":2,"since":"2025-10-05T00:00:01.234Z","rule":"","severity":"warning","message":"","file":"","line":null,"column":null,"code":"","project":"","configuration":"","action":"","occurrences":1,"fingerprint":"newer","advice":""},
{"action":"","configuration":"","project":"","runs":1,"medianMs":16,"lowMs":16,"highMs":16,"lastMs":16,"trendPercent":0},
{"action":"L","configuration":"","project":"","runs":1,"medianMs":22,"lowMs":22,"highMs":22,"lastMs":22,"trendPercent":0},
{"action":"B (p)","configuration":"","project":"","runs":1,"medianMs":22,"lowMs":22,"highMs":22,"lastMs":22,"trendPercent":0},
{"action":"B (p)","configuration":"Debug","project":"App","runs":1,"medianMs":0,"lowMs":0,"highMs":0,"lastMs":0,"trendPercent":0}])json");
  const TUsualTimes usual = ReadUsualTimes(file_);
  EXPECT_EQ(usual.Run, milliseconds(16));
  EXPECT_EQ(usual.Actions,
            (std::map<std::u16string, milliseconds>{{u"L", milliseconds(22)}, {u"B (p)", milliseconds(22)}}));
}

// Runs of one action, by their milliseconds.
TEST_F(HistoryTest, TellsHowLongItUsuallyTakes) {
  for (const int elapsed : {100, 300, 200, 400, 600, 500, 100}) {
    TRunRecorder recorder({.File = file_}, u"any.kxproj");
    TRunReport report{.Result = elapsed == 600 ? TResultKind::Failed : TResultKind::Succeeded,
                      .Elapsed = milliseconds(elapsed)};
    report.Actions = {{.Name = u"B", .Result = report.Result, .Elapsed = milliseconds(2 * elapsed)},
                      {.Name = elapsed == 200 ? u"Old" : u"New", .Result = TResultKind::Succeeded}};
    ASSERT_EQ(recorder.Finish(report), u"");
  }
  const auto shown = [&](std::int64_t last) {
    std::string all;
    for (const auto& time : THistory(file_).Times(last))
      all += text::ToUtf8(time.Part.Action) + ":" + std::to_string(time.Runs) + " " +
             std::to_string(time.Median.count()) + " " + std::to_string(time.Low.count()) + "-" +
             std::to_string(time.High.count()) + " " + std::to_string(time.Last.count()) + " " +
             std::to_string(time.Trend) + "%; ";
    return all;
  };
  EXPECT_EQ(shown(100),
            ":6 200 100-400 100 100%; B:6 400 200-800 200 100%; New:6 0 0-0 0 0%; Old:1 0 0-0 0 0%; ");
  EXPECT_EQ(shown(2), ":2 100 100-100 100 0%; B:2 200 200-200 200 0%; New:2 0 0-0 0 0%; ");
}

TEST_F(HistoryTest, TakesRunsThatEndAtOnce) {
  std::vector<std::thread> threads;
  threads.reserve(6);
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
