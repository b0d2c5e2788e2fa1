#include "contract/UnitTests.h"

#include "foundation/formats/Xml.h"
#include "foundation/text/Encoding.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

using namespace std::chrono;

TEST(UnitTestRun, IsWrittenAsJUnitHasItWithTheCountsOfWhatWasExecuted) {
  constexpr TKxDateTime ten = sys_days(2010y / April / 1) + hours(10) + milliseconds(45);
  TKxUnitTestResult b{.Executed = true, .TestName = u"B", .Duration = 5, .StartTime = ten};
  b.ErrorMessage = u"a<b\r\n\"c\"";
  b.StackTrace = u"at B\r\n\tat C";
  b.ClassName = u"Ns.List`1[A, B]";
  TKxUnitTestRun run(
      {{.Passed = true, .Executed = true, .TestName = u"A", .Duration = 1234, .StartTime = ten + hours(1)},
       b,
       {.Executed = true, .Outcome = u"Timeout"},
       {.TestName = u"D", .Duration = 7}});
  EXPECT_EQ(std::tuple(run.TotalCount(), run.PassedCount(), run.FailedCount(), run.NotRunCount()),
            std::tuple(4, 1, 2, 1));
  EXPECT_EQ(run.TotalTime(), 1239) << "without the test that was not run";
  run.SetName(u"Tests & more");
  EXPECT_EQ(
      text::ToUtf8(run.AsXmlString()),
      R"(<testsuite name="Tests &amp; more" tests="4" failures="2" errors="0" skipped="1" time="1.239" timestamp="2010-04-01T10:00:00">
  <testcase name="A" classname="Tests &amp; more" time="1.234"/>
  <testcase name="B" classname="Ns.List`1[A, B]" time="0.005">
    <failure message="a&lt;b&#13;&#10;&quot;c&quot;">a&lt;b&#13;
&quot;c&quot;
at B&#13;
	at C</failure>
  </testcase>
  <testcase name="without a name" classname="Tests &amp; more" time="0.000">
    <failure message="Timeout">Timeout</failure>
  </testcase>
  <testcase name="D" classname="Tests &amp; more" time="0.007">
    <skipped/>
  </testcase>
</testsuite>
)");
  EXPECT_EQ(text::ToUtf8(TKxUnitTestRun({}).AsXmlString()),
            "<testsuite name=\"\" tests=\"0\" failures=\"0\" errors=\"0\" skipped=\"0\" time=\"0.000\">\n"
            "</testsuite>\n");
}

TEST(UnitTestRun, TextsComeBackButForForbiddenCharacters) {
  const std::u16string hostile = u"\x01<&>\"'\t\r\n]]>\xFFFF\xD800 \xD83D\xDE00";
  const std::u16string allowed = u"<&>\"'\t\r\n]]> \xD83D\xDE00";
  TKxUnitTestRun run(
      {{.Executed = true, .TestName = hostile, .ErrorMessage = hostile, .StackTrace = hostile}});
  run.SetName(hostile);
  TXmlDocument document;
  ASSERT_TRUE(document.LoadBytes(text::ToUtf8(run.AsXmlString()))) << text::ToUtf8(document.ParseError());
  const auto test = document.SelectSingleNode(u"/testsuite/testcase");
  const auto failure = document.SelectSingleNode(u"/testsuite/testcase/failure");
  ASSERT_TRUE(test && failure);
  EXPECT_EQ(document.DocumentElement()->GetAttribute(u"name"), allowed);
  EXPECT_EQ(test->GetAttribute(u"name"), allowed);
  EXPECT_EQ(failure->GetAttribute(u"message"), allowed);
  EXPECT_EQ(failure->Text(), allowed + u"\n" + allowed);
}

} // namespace
} // namespace kx
