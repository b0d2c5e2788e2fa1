#include "program/runner/TestSuites.h"

#include "contract/UnitTests.h"
#include "foundation/text/Encoding.h"

#include <gmock/gmock.h>

namespace kx::tests {
namespace {

TEST(TestSuites, AreReadAsTheyAreReported) {
  const struct {
    const char* Case;
    std::u16string Xml;
    std::string Read; // the suite, then each test; empty: none
  } rows[] = {
      {"passed, failed, skipped",
       u"<testsuite name=\"S\" time=\"1.5\"><testcase name=\"a\" time=\"0.5\"/><testcase name=\"b\"><failure "
       u"message=\"m\">m\nat x\nat y</failure></testcase><testcase "
       u"name=\"c\"><skipped/></testcase></testsuite>",
       "S 1.5 1/1/1|a 0.5|b failed m: at x\nat y|c skipped"},
      {"a failure without a message, text elsewhere",
       u"<testsuite name=\"S\">text<testcase name=\"a\">more<failure>trace</failure></testcase></testsuite>",
       "S 0/1/0|a failed : trace"},
      {"a message that its trace does not repeat",
       u"<testsuite><testcase name=\"a\"><failure message=\"m\">at m</failure></testcase></testsuite>",
       " 0/1/0|a failed m: at m"},
      {"no suite", u"<testsuites/>", ""},
      {"no XML", u"<testsuite>", ""},
  };
  for (const auto& row : rows) {
    const auto suite = ReadTestSuite(row.Xml);
    std::u16string read;
    if (suite) {
      const auto counts = suite->Counts();
      read = suite->Name + (suite->Seconds.empty() ? u"" : u" " + suite->Seconds);
      read += text::FromUtf8(" " + std::to_string(counts.Passed) + "/" + std::to_string(counts.Failed) + "/" +
                             std::to_string(suite->Skipped));
      for (const auto& test : suite->Tests)
        read += u"|" + test.Name + (test.Seconds.empty() ? u"" : u" " + test.Seconds) +
                (test.Skipped ? u" skipped" : u"") +
                (test.Failed ? u" failed " + test.Message + u": " + test.StackTrace : u"");
    }
    EXPECT_EQ(text::ToUtf8(read), row.Read) << row.Case;
  }
}

TEST(TestSuites, HaveNamesOfTheirOwn) {
  TSuiteNames names;
  const auto on = [&names](auto what) {
    TRunEvent event;
    event.What = std::move(what);
    names.On(event);
  };
  const auto start = [&on](std::u16string pass) {
    TActionStarted started;
    started.Pass = std::move(pass);
    on(std::move(started));
  };
  const std::u16string xml =
      u"<testsuite name=\"S\"><testcase classname=\"S\"/><testcase classname=\"T\"/></testsuite>";
  const auto renamed = [](const std::string& name) {
    return "<testsuite name=\"" + name + "\"><testcase classname=\"" + name +
           "\"/><testcase classname=\"T\"/></testsuite>";
  };
  const auto rename = [&] { return text::ToUtf8(names.Rename(xml)); };
  start(u"");
  EXPECT_EQ(rename(), renamed("S"));
  EXPECT_EQ(rename(), renamed("S (2)"));
  start(u"a<b");
  start(u"c");
  EXPECT_EQ(rename(), renamed("S (a&lt;b, c)"));
  EXPECT_EQ(rename(), renamed("S (a&lt;b, c) (2)"));
  for (int i = 0; i < 2; ++i)
    on(TActionEnded{});
  EXPECT_EQ(rename(), renamed("S (3)"));
  EXPECT_EQ(names.Rename(u"<other/>"), u"<other/>");
}

TEST(TestSuites, ComeWithOneMetric) {
  const auto isSuite = [](std::u16string category, std::u16string name, auto value) {
    TKxMetric metric;
    metric.Category = std::move(category);
    metric.Name = std::move(name);
    metric.Value = std::move(value);
    return TestSuiteXml(metric) != nullptr;
  };
  const std::u16string category(UnitTestCategory);
  const std::u16string name(TestResultsMetric);
  EXPECT_TRUE(isSuite(category, name, std::u16string(u"x")));
  EXPECT_FALSE(isSuite(u"Other", name, std::u16string(u"x")));
  EXPECT_FALSE(isSuite(category, u"Other", std::u16string(u"x")));
  EXPECT_FALSE(isSuite(category, name, std::int64_t{1}));
}

} // namespace
} // namespace kx::tests
