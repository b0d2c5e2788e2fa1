#include "program/editor/EditorRuns.h"

#include "contract/UnitTests.h"
#include "tests/editor/SessionWorld.h"

#include <gtest/gtest.h>

#include <regex>

namespace kx::editor {
namespace {

using tests::TStepAction;

class EditorRuns : public testing::Test {
protected:
  EditorRuns() {
    TStepAction::Deeds()[u"say"] = [](TStepAction& a) {
      a.StartConfiguration(u"Debug|x86");
      a.SendMetricInt(u"Compiler", u"Errors", 0);
      a.SendMetricString(u"Text", u"no", u"number");
      a.EndConfiguration(TKxOutcome::koSucceeded);
      a.SendMetricInt(u"C", u"N", 4);
      a.StartMessageGroup(u"group");
      a.SendMessage(u"sub/a.cs(3,4): error CS1: bad", TStatusTag::stError);
      a.SendMessage(u"b.cs(5): warning CS2: unused", TStatusTag::stWarning);
      a.SendMessage(u"b.cs(6): plain");
      a.SendMessage(u"warning CS3: nowhere", TStatusTag::stWarning);
      a.SendMessage(u"b.cs : warning CS4: no line", TStatusTag::stWarning);
      TKxUnitTestRun tests({{.Executed = true, .TestName = u"T", .StackTrace = u" at A() in c.cs:line 7"}});
      a.SendMetricString(UnitTestCategory, TestResultsMetric, tests.AsXmlString());
      return a.ExpandExpression(u"%P%") != u"y";
    };
  }
  ~EditorRuns() override { TStepAction::Deeds().clear(); }

  static std::string Text(const std::string& number) {
    return "<BuildProject><Actions><Action Type='LOOP' Name='L'><Values>y</Values><LoopVariable>P"
           "</LoopVariable><Actions><Action Type='STEP' Name='S'><Text>say</Text><Number>" +
           number + "</Number></Action></Actions></Action></Actions></BuildProject>";
  }
  // What takes its time is told in zeros, an event a line.
  std::string Plain(const std::string& json) const {
    static const std::regex times(R"re("(time|elapsedMs|beganMs|began|machine|system)":("[^"]*"|\d+))re");
    static const std::regex prints(R"re("fingerprint":"[0-9a-f]+")re");
    static const std::regex suites(R"re(<testsuite.*?</testsuite>\\n)re");
    static const std::regex ends(R"re(\},\{)re");
    std::string plain = std::regex_replace(json, times, "\"$1\":0");
    plain = std::regex_replace(plain, prints, "\"fingerprint\":0");
    plain = std::regex_replace(plain, suites, "XML");
    return world_.Folder.Plain(std::regex_replace(plain, ends, "},\n{"));
  }
  std::string EventsToTheEnd(std::size_t from = 0) {
    runs_.End(std::chrono::minutes(1));
    return Plain(runs_.Events(0, from, std::chrono::seconds(0), stop_));
  }
  void Run(bool dryRun = false) {
    runs_.Start(Text("7"), world_.Folder.Path("p.kxproj"), std::nullopt, dryRun);
    while (runs_.IsRunning())
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }

  tests::TSessionWorld world_;
  TKxEvent stop_;
  TEditorRuns runs_{world_.Services, {{}, world_.Folder.Path("keys")}};
};

TEST_F(EditorRuns, TellEverythingOfARun) {
  EXPECT_EQ(
      Plain(runs_.Events(0, 0, std::chrono::seconds(0), stop_)),
      R"({"run":0,"running":false,"errors":0,"warnings":0,"from":0,"next":0,"events":[],"findings":[]})");
  EXPECT_TRUE(runs_.Timeline().empty());
  Run();
  EXPECT_EQ(
      EventsToTheEnd(),
      R"~({"run":1,"running":false,"errors":2,"warnings":3,"from":0,"next":17,"events":[{"time":0,"depth":0,"event":"action","name":"L","type":"LOOP","description":"L","pass":"","nesting":0},
{"time":0,"depth":1,"event":"action","name":"S","type":"STEP","description":"S","pass":"y","nesting":1,"iteration":1,"iterations":1,"unit":"pass"},
{"time":0,"depth":2,"event":"metric","category":"Compiler","name":"Errors","configuration":"Debug|x86","value":0},
{"time":0,"depth":2,"event":"metric","category":"Text","name":"no","configuration":"Debug|x86","value":"number"},
{"time":0,"depth":2,"event":"metric","category":"C","name":"N","configuration":"","value":4},
{"time":0,"depth":2,"event":"group","status":0,"title":"group"},
{"time":0,"depth":3,"event":"message","status":3,"text":"sub/a.cs(3,4): error CS1: bad","file":"DIR/sub/a.cs","line":3,"column":4},
{"time":0,"depth":3,"event":"message","status":2,"text":"b.cs(5): warning CS2: unused","file":"DIR/b.cs","line":5,"column":0},
{"time":0,"depth":3,"event":"message","status":0,"text":"b.cs(6): plain"},
{"time":0,"depth":3,"event":"message","status":2,"text":"warning CS3: nowhere"},
{"time":0,"depth":3,"event":"message","status":2,"text":"b.cs : warning CS4: no line"},
{"time":0,"depth":3,"event":"metric","category":"Unit_Tests","name":"Test_Results","configuration":"","value":"XML"},
{"time":0,"depth":3,"event":"message","status":3,"text":"Test failed : T : The test did not pass."},
{"time":0,"depth":2,"event":"groupEnd","status":3,"title":"group","elapsedMs":0},
{"time":0,"depth":1,"event":"actionEnd","name":"S","type":"STEP","pass":"y","nesting":1,"isLoop":false,"succeeded":false,"result":"failed","reason":"","errors":2,"warnings":3,"elapsedMs":0,"beganMs":0,"tests":{"passed":0,"failed":1,"notRun":0},"configurations":[{"configuration":"Debug|x86","succeeded":true,"result":"succeeded","reason":"","errors":0,"warnings":0,"elapsedMs":0,"beganMs":0,"projects":[]}]},
{"time":0,"depth":0,"event":"actionEnd","name":"L","type":"LOOP","pass":"","nesting":0,"isLoop":true,"succeeded":false,"result":"failed","reason":"","errors":2,"warnings":3,"elapsedMs":0,"beganMs":0,"tests":{"passed":0,"failed":1,"notRun":0},"configurations":[]},
{"time":0,"depth":0,"event":"runEnd","succeeded":false,"result":"failed","totals":"1 succeeded, 1 failed; 2 errors, 3 warnings; 1 test, 1 failed","errors":2,"warnings":3,"elapsedMs":0,"tests":{"passed":0,"failed":1,"notRun":0},"partial":true,"file":"DIR/p.kxproj","root":"DIR","machine":0,"system":0,"began":0}],"findings":[{"rule":"action-warning","severity":"warning","message":"b.cs(5): warning CS2: unused","file":"","line":null,"column":null,"code":"","project":"","configuration":"","action":"S (y)","occurrences":1,"fingerprint":"","advice":"","said":2,"place":0},
{"rule":"action-warning","severity":"warning","message":"warning CS3: nowhere","file":"","line":null,"column":null,"code":"","project":"","configuration":"","action":"S (y)","occurrences":1,"fingerprint":"","advice":"","said":4,"place":1},
{"rule":"action-warning","severity":"warning","message":"b.cs : warning CS4: no line","file":"","line":null,"column":null,"code":"","project":"","configuration":"","action":"S (y)","occurrences":1,"fingerprint":"","advice":"","said":5,"place":2},
{"rule":"test-failed","severity":"error","message":"T: The test did not pass.","file":"DIR/c.cs","line":7,"column":null,"code":"","project":"","configuration":"","action":"S (y)","occurrences":1,"fingerprint":"","advice":"","said":6,"place":3}]})~");
  EXPECT_EQ(
      Plain(runs_.Summaries().dump()),
      R"~([{"dryRun":false,"elapsedMs":0,"error":"","errors":2,"file":"DIR/p.kxproj","historyTrouble":"","machine":0,"metrics":[{"action":"S (y)","category":"Compiler","configuration":"Debug|x86","name":"Errors","value":0},
{"action":"S (y)","category":"C","configuration":"","name":"N","value":4}],"partial":true,"result":"failed","root":"DIR","rows":[{"action":"L","configuration":"","elapsedMs":0,"errors":2,"nesting":0,"result":"failed","status":3,"warnings":3},
{"action":"S (y)","configuration":"Debug|x86","elapsedMs":0,"errors":0,"nesting":1,"result":"succeeded","status":1,"warnings":0},
{"action":"S (y)","configuration":"(the rest)","elapsedMs":0,"errors":2,"nesting":1,"result":"failed","status":3,"warnings":3}],"run":1,"stopped":false,"succeeded":false,"system":0,"tests":{"failed":1,"notRun":0,"passed":0},"totals":"1 succeeded, 1 failed; 2 errors, 3 warnings; 1 test, 1 failed","warnings":3}])~");
}

} // namespace
} // namespace kx::editor
