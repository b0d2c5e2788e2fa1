#include "program/report/JsonLinesReader.h"

#include "program/report/JsonLinesSink.h"
#include "program/report/RunMerge.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

using std::chrono::milliseconds;

const std::chrono::system_clock::time_point Start{std::chrono::seconds(1'270'117'230)};

TActionResult Result(TResultKind kind, int seed) {
  TActionResult result{.Name = u"A" + text::FromInteger(seed), .Type = u"STEP", .Pass = u"p", .IsLoop = true};
  result.Result = kind;
  result.Reason = u"r";
  result.Counts = {seed, seed + 1};
  result.Tests = {seed + 2, seed + 3, seed + 4};
  result.Began = milliseconds(seed + 5);
  result.Elapsed = milliseconds(seed + 6);
  result.Configurations = {{.Configuration = u"Debug", .Result = kind, .Reason = u"s", .Counts = {seed, 0}}};
  result.Configurations[0].Began = milliseconds(seed + 7);
  result.Configurations[0].Projects = {{.Project = u"App", .Configuration = u"D", .Result = kind}};
  result.Configurations[0].Projects[0].Began = milliseconds(seed + 8);
  return result;
}

// The events of a run that begins after `began`; the end is missing where it was killed.
std::vector<TRunEvent> Events(milliseconds began, TResultKind kind, const std::u16string& root,
                              bool isKilled = false) {
  const int seed = static_cast<int>(began.count());
  std::vector<TRunEvent> events;
  const auto add = [&](int depth, decltype(TRunEvent::What) what) {
    events.push_back({Start + began + milliseconds(events.size()), depth, std::move(what)});
  };
  add(0, TActionStarted{u"L", u"LOOP", u"d", u"", 0, {}});
  add(1, TActionStarted{u"A", u"STEP", u"e", u"p", 1, TLoopPosition{u"pass", 2, 3}});
  add(2, TGroupStarted{u"g", TStatusTag::stWarning});
  add(3, TMessageSent{u"m \u00E9", TStatusTag::stError, true});
  add(2, TGroupEnded{u"g", TStatusTag::stError, milliseconds(9)});
  add(2, TGroupEnded{u"h", std::nullopt, {}});
  add(2, TMetricSent{{u"C", u"N", std::int64_t{17}}, u"Debug"});
  add(2, TMetricSent{{u"C", u"N", std::u16string(u"text")}, u""});
  add(1, TActionEnded{Result(kind, seed)});
  add(1, TMessageSent{u"again", TStatusTag::stWarning, false, 9}); // all but what is open
  add(1, TActionStarted{u"A", u"STEP", u"e", u"p", 1, TLoopPosition{u"pass", 2, 3}});
  add(1, TActionEnded{Result(kind, seed)});
  add(1, TMetricSent{{u"C", u"N", std::int64_t{18}}, u"", TMetricSource{u"A (p)", {u"", u"p"}}});
  add(0, TActionEnded{Result(kind, seed + 20)});
  if (isKilled) return events;
  TRunReport report{.Result = kind, .Counts = {seed, 1}, .Tests = {1, 2, 3}, .Elapsed = milliseconds(100)};
  report.Began = Start + began;
  report.MoreFindings = 4;
  report.IsPartial = kind != TResultKind::Failed;
  report.Root = root;
  report.File = u"f";
  report.Surroundings = {u"machine", u"system", u"commit", u"branch", u"line", {u"tool"}};
  report.Findings = {
      {.Rule = u"R", .Message = u"m", .Place = {u"a.c", 3, 4}, .Fingerprint = u"same", .Said = 1},
      {.Rule = u"R", .Message = u"m " + text::FromInteger(seed), .Fingerprint = u"0123456789abcdef"}};
  add(0, TRunEnded{std::move(report)});
  return events;
}

class RunLogs : public testing::Test {
protected:
  std::u16string WriteLog(const std::string& name, const std::vector<TRunEvent>& events) {
    auto sink = TJsonLinesSink::Create(Folder.Path(name));
    EXPECT_TRUE(sink);
    for (const auto& event : events)
      (*sink)->On(event);
    EXPECT_TRUE((*sink)->Close());
    return Folder.Path(name);
  }
  // Fails as the reader does.
  platform::Status Read(const std::u16string& file) {
    auto run =
        ReadRunLog(file, Messages, [this](const TRunEvent& event) { Told.push_back(ToJsonLine(event)); });
    if (!run) return platform::Failure{run.Message()};
    Logs.Add(*std::move(run));
    return platform::Done{};
  }

  tests::TTemporaryFolder Folder;
  TRunMerge Logs;
  std::int64_t Messages = 0;
  std::vector<std::string> Told;
};

TEST_F(RunLogs, GiveBackWhatWasWritten) {
  const auto events = Events(milliseconds(0), TResultKind::FinishedWithFailures, u"/r");
  ASSERT_TRUE(Read(WriteLog("a.jsonl", events)));
  std::vector<std::string> written;
  written.reserve(events.size());
  for (const auto& event : events)
    written.push_back(ToJsonLine(event));
  const std::string end = written.back();
  written.pop_back();
  EXPECT_EQ(Told, written);
  TRunReport report = Logs.Take();
  EXPECT_EQ(ToJsonLine({events.back().Time, 0, TRunEnded{report}}), end);
  EXPECT_EQ(report.Began, Start);
  ASSERT_EQ(std::pair(report.Actions.size(), report.Findings.size()),
            std::pair(std::size_t{2}, std::size_t{2}));
  EXPECT_EQ(report.Actions[0].Name, u"A20") << "the one that began first";
  EXPECT_EQ(report.Findings[0].Place, (TFindingPlace{u"a.c", 3, 4}));
}

TEST_F(RunLogs, HoldALineForEachEventAndWhatACutOneLeavesOpenHasFailed) {
  auto events = Events(milliseconds(0), TResultKind::Failed, u"/r");
  TRunReport& report = std::get<TRunEnded>(events.back().What).Report;
  report.NothingExecuted = true;
  report.Part = TPartOfRun{.Place = 2, .Pass = 3};
  std::string lines;
  for (const auto& event : events)
    lines += ToJsonLine(event) + "\n";
  EXPECT_EQ(
      lines,
      R"~({"time":"2010-04-01T10:20:30.000Z","depth":0,"event":"action","name":"L","type":"LOOP","description":"d","pass":"","nesting":0}
{"time":"2010-04-01T10:20:30.001Z","depth":1,"event":"action","name":"A","type":"STEP","description":"e","pass":"p","nesting":1,"iteration":2,"iterations":3}
{"time":"2010-04-01T10:20:30.002Z","depth":2,"event":"group","status":2,"title":"g"}
{"time":"2010-04-01T10:20:30.003Z","depth":3,"event":"message","status":3,"text":"m é","dryRun":true}
{"time":"2010-04-01T10:20:30.004Z","depth":2,"event":"groupEnd","status":3,"title":"g","elapsedMs":9}
{"time":"2010-04-01T10:20:30.005Z","depth":2,"event":"groupEnd","status":null,"title":"h","elapsedMs":0}
{"time":"2010-04-01T10:20:30.006Z","depth":2,"event":"metric","category":"C","name":"N","configuration":"Debug","value":17}
{"time":"2010-04-01T10:20:30.007Z","depth":2,"event":"metric","category":"C","name":"N","configuration":"","value":"text"}
{"time":"2010-04-01T10:20:30.008Z","depth":1,"event":"actionEnd","name":"A0","type":"STEP","pass":"p","nesting":0,"isLoop":true,"succeeded":false,"result":"failed","reason":"r","errors":0,"warnings":1,"elapsedMs":6,"beganMs":5,"tests":{"passed":2,"failed":3,"notRun":4},"configurations":[{"configuration":"Debug","succeeded":false,"result":"failed","reason":"s","errors":0,"warnings":0,"elapsedMs":0,"beganMs":7,"projects":[{"project":"App","configuration":"D","succeeded":false,"result":"failed","errors":0,"warnings":0,"elapsedMs":0,"beganMs":8}]}]}
{"time":"2010-04-01T10:20:30.009Z","depth":1,"event":"message","status":2,"text":"again","takesBack":9}
{"time":"2010-04-01T10:20:30.010Z","depth":1,"event":"action","name":"A","type":"STEP","description":"e","pass":"p","nesting":1,"iteration":2,"iterations":3}
{"time":"2010-04-01T10:20:30.011Z","depth":1,"event":"actionEnd","name":"A0","type":"STEP","pass":"p","nesting":0,"isLoop":true,"succeeded":false,"result":"failed","reason":"r","errors":0,"warnings":1,"elapsedMs":6,"beganMs":5,"tests":{"passed":2,"failed":3,"notRun":4},"configurations":[{"configuration":"Debug","succeeded":false,"result":"failed","reason":"s","errors":0,"warnings":0,"elapsedMs":0,"beganMs":7,"projects":[{"project":"App","configuration":"D","succeeded":false,"result":"failed","errors":0,"warnings":0,"elapsedMs":0,"beganMs":8}]}]}
{"time":"2010-04-01T10:20:30.012Z","depth":1,"event":"metric","category":"C","name":"N","configuration":"","value":18,"action":"A (p)","passes":["","p"]}
{"time":"2010-04-01T10:20:30.013Z","depth":0,"event":"actionEnd","name":"A20","type":"STEP","pass":"p","nesting":0,"isLoop":true,"succeeded":false,"result":"failed","reason":"r","errors":20,"warnings":21,"elapsedMs":26,"beganMs":25,"tests":{"passed":22,"failed":23,"notRun":24},"configurations":[{"configuration":"Debug","succeeded":false,"result":"failed","reason":"s","errors":20,"warnings":0,"elapsedMs":0,"beganMs":27,"projects":[{"project":"App","configuration":"D","succeeded":false,"result":"failed","errors":0,"warnings":0,"elapsedMs":0,"beganMs":28}]}]}
{"time":"2010-04-01T10:20:30.014Z","depth":0,"event":"runEnd","succeeded":false,"result":"failed","totals":"0 errors, 1 warning; 6 tests, 2 failed, 3 not run","errors":0,"warnings":1,"elapsedMs":100,"tests":{"passed":1,"failed":2,"notRun":3},"moreFindings":4,"nothingExecuted":true,"part":{"place":2,"pass":3},"file":"f","root":"/r","machine":"machine","system":"system","commit":"commit","branch":"branch","commandLine":"line","began":"2010-04-01T10:20:30.000Z"}
)~");
  ASSERT_TRUE(Read(WriteLog("whole.jsonl", events)));
  const TRunReport whole = Logs.Take();
  EXPECT_TRUE(whole.NothingExecuted);
  EXPECT_EQ(Messages, 2);

  Told.clear();
  TRunMerge cut;
  auto run = ReadRunLog(WriteLog("cut.jsonl", {events.begin(), events.begin() + 4}), Messages,
                        [this](const TRunEvent& event) { Told.push_back(ToJsonLine(event)); });
  ASSERT_TRUE(run);
  lines.clear();
  for (std::size_t i = 4; i < Told.size(); ++i)
    lines += Told[i] + "\n";
  EXPECT_EQ(
      Folder.Plain(lines + ToJsonLine({Start, 0, TRunEnded{*run}})),
      R"({"time":"2010-04-01T10:20:30.003Z","depth":2,"event":"groupEnd","status":3,"title":"g","elapsedMs":0}
{"time":"2010-04-01T10:20:30.003Z","depth":1,"event":"actionEnd","name":"A","type":"STEP","pass":"p","nesting":1,"isLoop":false,"succeeded":false,"result":"failed","reason":"","errors":0,"warnings":0,"elapsedMs":0,"beganMs":0,"tests":{"passed":0,"failed":0,"notRun":0},"configurations":[]}
{"time":"2010-04-01T10:20:30.003Z","depth":0,"event":"actionEnd","name":"L","type":"LOOP","pass":"","nesting":0,"isLoop":false,"succeeded":false,"result":"failed","reason":"","errors":0,"warnings":0,"elapsedMs":0,"beganMs":0,"tests":{"passed":0,"failed":0,"notRun":0},"configurations":[]}
{"time":"2010-04-01T10:20:30.000Z","depth":0,"event":"runEnd","succeeded":false,"result":"failed","totals":"2 failed; 0 errors, 0 warnings","errors":0,"warnings":0,"elapsedMs":3,"tests":{"passed":0,"failed":0,"notRun":0},"began":"2010-04-01T10:20:30.000Z"})");
  EXPECT_EQ(Messages, 3);
}

TEST_F(RunLogs, BecomeOneRun) {
  ASSERT_TRUE(Read(WriteLog("a.jsonl", Events(milliseconds(70), TResultKind::Succeeded, u"/r"))));
  ASSERT_TRUE(Read(WriteLog("b.jsonl", Events(milliseconds(10), TResultKind::Failed, u"/s"))));
  ASSERT_TRUE(Read(WriteLog("c.jsonl", Events(milliseconds(40), TResultKind::Ignored, u"/r", true))));
  const TRunReport report = Logs.Take();
  EXPECT_EQ(report.Result, TResultKind::Failed);
  EXPECT_TRUE(report.IsPartial) << "as one of them is";
  EXPECT_EQ(report.Began, Start + milliseconds(10));
  EXPECT_EQ(report.Elapsed, milliseconds(160));
  EXPECT_EQ(std::pair(report.Root, report.File), std::pair(std::u16string(), std::u16string()));
  // 40 and 60 of the actions outside of the loop of the log that breaks off
  EXPECT_EQ(
      std::tuple(report.Counts.Errors, report.Counts.Warnings, report.Tests.NotRun, report.MoreFindings),
      std::tuple(70 + 10 + 60 + 40, 1 + 1 + 61 + 41, 3 + 3 + 64 + 44, 8));
  std::string findings, began;
  for (const auto& finding : report.Findings)
    findings += text::ToUtf8(finding.Fingerprint) + "*" + std::to_string(finding.Occurrences) + " " +
                std::to_string(finding.Said) + " ";
  EXPECT_EQ(findings, "same*2 1 0123456789abcdef*1 0 0123456789abcdef-2*1 0 run-interrupted*1 0 ");
  for (const auto& action : report.Actions)
    began += std::to_string(action.Began.count()) + " " +
             std::to_string(action.Configurations[0].Began.count()) + " " +
             std::to_string(action.Configurations[0].Projects[0].Began.count()) + ", ";
  EXPECT_EQ(began, "155 157 158, 135 137 138, 35 37 38, 15 17 18, 95 97 98, 75 77 78, ");
}

TRunReport RunOf(std::optional<TPartOfRun> part, std::chrono::milliseconds began,
                 std::vector<TActionResult> actions, TResultKind result = TResultKind::Succeeded) {
  TRunReport run;
  run.Part = part;
  run.Began = Start + began;
  run.Elapsed = milliseconds(10);
  run.Result = result;
  run.Actions = std::move(actions);
  run.File = u"/p.kxproj";
  return run;
}

TActionResult Row(std::u16string name, int nesting = 0, TResultKind result = TResultKind::Succeeded) {
  return {.Name = std::move(name),
          .Nesting = nesting,
          .IsLoop = nesting == 0,
          .Result = result,
          .Counts = {1, 2},
          .Began = milliseconds(1),
          .Elapsed = milliseconds(5)};
}

TEST(RunMerge, PutsPartsAsTheProjectHasThemAndPassesIntoOneLoop) {
  TRunMerge merge;
  merge.Add(RunOf(TPartOfRun{.Place = 2}, milliseconds(70), {Row(u"Last")}));
  merge.Add(RunOf(std::nullopt, milliseconds(90), {Row(u"Else")}));
  merge.Add(RunOf(TPartOfRun{1, 2}, milliseconds(40), {Row(u"Loop", 0, TResultKind::Failed), Row(u"In b", 1)},
                  TResultKind::Failed));
  merge.Add(RunOf(TPartOfRun{1, 1}, milliseconds(60), {Row(u"Loop"), Row(u"In a", 1)}));
  merge.Add(RunOf(TPartOfRun{.Place = 0}, milliseconds(0), {Row(u"First")}));
  const TRunReport run = merge.Take();
  std::string rows;
  for (const auto& action : run.Actions)
    rows += std::string(action.Name.begin(), action.Name.end()) + " " + WordOf(action.Result) + " " +
            std::to_string(action.Counts.Errors) + " " + std::to_string(action.Began.count()) + "+" +
            std::to_string(action.Elapsed.count()) + "; ";
  EXPECT_EQ(rows, "First succeeded 1 1+5; Loop failed 2 41+25; In a succeeded 1 61+5; In b succeeded 1 41+5; "
                  "Last succeeded 1 71+5; Else succeeded 1 91+5; ");
  EXPECT_EQ(run.Result, TResultKind::Failed);
  EXPECT_EQ(run.Began, Start);
  EXPECT_EQ(run.Elapsed, milliseconds(100));
  EXPECT_EQ(run.File, u"/p.kxproj");
  EXPECT_FALSE(run.Part);
}

TEST(RunMerge, KeepsLoopsOfOneProjectTogetherWhateverTheirPassesHaveTold) {
  const auto rowsOf = [](std::vector<TRunReport> runs) {
    TRunMerge merge;
    for (TRunReport& run : runs)
      merge.Add(std::move(run));
    std::string rows;
    for (const auto& action : merge.Take().Actions)
      rows +=
          text::ToUtf8(action.Name) + " " + WordOf(action.Result) + " " + text::ToUtf8(action.Reason) + "; ";
    return rows;
  };
  const auto pass = [](int number, std::vector<TActionResult> actions) {
    return RunOf(TPartOfRun{0, number}, milliseconds(number), std::move(actions));
  };
  const auto because = [](TResultKind result, std::u16string reason) {
    TActionResult row = Row(u"Loop", 0, result);
    row.Reason = std::move(reason);
    return row;
  };
  EXPECT_EQ(rowsOf({pass(1, {}), pass(2, {Row(u"Loop")}), pass(3, {}), pass(4, {Row(u"Loop")})}),
            "Loop succeeded ; ")
      << "those without an action were stopped before it began";
  EXPECT_EQ(rowsOf({pass(1, {because(TResultKind::Skipped, u"resumed")}),
                    pass(2, {because(TResultKind::Failed, u"")}),
                    pass(3, {because(TResultKind::Skipped, u"needs")})}),
            "Loop failed ; ");
  EXPECT_EQ(rowsOf({pass(1, {because(TResultKind::Failed, u"")}),
                    pass(2, {because(TResultKind::Failed, u"exit")})}),
            "Loop failed exit; ");
  TRunReport other = pass(1, {Row(u"Other loop", 0, TResultKind::Failed)});
  other.File = u"/b/q.kxproj";
  TRunReport elsewhere = pass(2, {Row(u"Loop")});
  elsewhere.File = u"C:\\work\\P.kxproj"; // on another machine
  EXPECT_EQ(rowsOf({other, pass(1, {Row(u"Loop")}), elsewhere}), "Loop succeeded ; Other loop failed ; ");
}

TEST_F(RunLogs, AreToldFromWhatIsNone) {
  const std::string line = ToJsonLine({Start, 0, TMessageSent{u"m"}});
  const std::tuple<const char*, std::string, std::string> rows[] = {
      {"a torn last line", line + "\n" + line.substr(0, 30), ""},
      {"an event of a newer version",
       line + "\n" +
           R"({"time":"2010-04-01T10:20:30.007Z","event":"later"})"
           "\n",
       ""},
      {"a torn line among others", line.substr(0, 30) + "\n" + line + "\n", ":1"},
      {"another file behind", line + "\nx\n", ":2"},
      {"nothing", "", ":1"},
      {"nothing but a torn line", line.substr(0, 30), ":1"},
      {"a time that is none", "{\"time\":\"2010-04-01\",\"event\":\"message\"}\n", ":1"},
      {"a year behind that of the clock", "{\"time\":\"9999-01-01T10:20:30.007Z\"}\n", ":1"},
      {"a month that is none", "{\"time\":\"2010-99-01T10:20:30.007Z\"}\n", ":1"},
  };
  for (const auto& [name, bytes, place] : rows) {
    const std::u16string file = Folder.Write("l.jsonl", bytes);
    const auto read = Read(file);
    EXPECT_EQ(static_cast<bool>(read), place.empty()) << name;
    if (!read) {
      EXPECT_TRUE(text::ToUtf8(read.Message()).starts_with(text::ToUtf8(file) + place + ": This is no log"))
          << name;
    }
  }
  EXPECT_FALSE(Read(Folder.Path("gone.jsonl")));
  const auto folder = TJsonLinesSink::Create(Folder.Path());
  ASSERT_FALSE(folder);
  EXPECT_TRUE(folder.Message().starts_with(u"Cannot write log file " + Folder.Path()))
      << text::ToUtf8(folder.Message());
}

} // namespace
} // namespace kx
