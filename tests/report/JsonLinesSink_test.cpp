#include "program/report/JsonLinesSink.h"

#include <gtest/gtest.h>

namespace kx::tests {
namespace {

TEST(JsonLinesSink, WritesEachEventAsOneLine) {
  using namespace std::chrono_literals;
  const std::chrono::system_clock::time_point time{1270117230s + 7ms}; // 2010-04-01 10:20:30.007
  const std::string start = R"({"time":"2010-04-01T10:20:30.007Z","depth":2,"event":)";
  TActionResult result;
  result.Name = u"Build";
  result.Type = u"DEVENV";
  result.Reason = u"errors-counted";
  result.Counts = {3, 0};
  result.Tests.Failed = 2;
  result.Began = 7ms;
  result.Elapsed = 1500ms;
  result.Configurations = {{u"Debug|x86",
                            TResultKind::NothingToDo,
                            u"",
                            {3, 0},
                            9ms,
                            20ms,
                            {{u"App", u"Debug", TResultKind::Failed, {3, 1}, 11ms, 5ms}}}};
  const std::pair<decltype(TRunEvent::What), const char*> cases[] = {
      {TActionStarted{u"Build", u"DEVENV", u"", u"", 1, TLoopPosition{u"project", 2, 3}},
       R"("action","name":"Build","type":"DEVENV","description":"","pass":"","nesting":1,"iteration":2,"iterations":3})"},
      {TActionEnded{result},
       R"("actionEnd","name":"Build","type":"DEVENV","pass":"","nesting":0,"isLoop":false,"succeeded":false,)"
       R"("result":"failed","reason":"errors-counted","errors":3,"warnings":0,"elapsedMs":1500,"beganMs":7,)"
       R"("tests":{"passed":0,"failed":2,"notRun":0},"configurations":[{"configuration":"Debug|x86",)"
       R"("succeeded":true,"result":"nothing to do","reason":"","errors":3,"warnings":0,"elapsedMs":20,"beganMs":9,"projects":[{"project":"App","configuration":"Debug",)"
       R"("succeeded":false,"result":"failed","errors":3,"warnings":1,"elapsedMs":5,"beganMs":11}]}]})"},
      {TRunEnded{
           {.Result = TResultKind::FinishedWithFailures, .Counts = {1, 2}, .Elapsed = 3ms, .File = u"p"}},
       R"("runEnd","succeeded":false,"result":"finished with failures","totals":"1 error, 2 warnings",)"
       R"("errors":1,"warnings":2,"elapsedMs":3,"tests":{"passed":0,"failed":0,"notRun":0},"file":"p"})"},
      {TMessageSent{u"\u00E9 \"q\"\r\n\xD800", TStatusTag::stError},
       "\"message\",\"status\":3,\"text\":\"\xC3\xA9 \\\"q\\\"\\r\\n\xEF\xBF\xBD\"}"},
  };
  for (const auto& [what, rest] : cases)
    EXPECT_EQ(ToJsonLine({time, 2, what}), start + rest);
}

} // namespace
} // namespace kx::tests
