#include "program/runner/TestSuites.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

#include <gtest/gtest.h>

namespace kx::tests {
namespace {

TEST(TestSuites, AreReadAsTheyAreReported) {
  const std::tuple<const char*, std::u16string, std::string> rows[] = {
      // the suite, then each test; empty: none
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
  const auto spaced = [](const std::u16string& text) { return text.empty() ? text : u" " + text; };
  for (const auto& [name, xml, expected] : rows) {
    std::u16string read;
    if (const auto suite = ReadTestSuite(xml)) {
      const auto counts = suite->Counts();
      read = suite->Name + spaced(suite->Seconds) + u" " + text::FromInteger(counts.Passed) + u"/" +
             text::FromInteger(counts.Failed) + u"/" + text::FromInteger(suite->Skipped);
      for (const auto& test : suite->Tests)
        read += u"|" + test.Name + spaced(test.Seconds) + (test.Skipped ? u" skipped" : u"") +
                (test.Failed ? u" failed " + test.Message + u": " + test.StackTrace : u"");
    }
    EXPECT_EQ(text::ToUtf8(read), expected) << name;
  }
}

TEST(TestSuites, HaveNamesOfTheirOwn) {
  TSuiteNames names;
  const auto start = [&names](std::u16string pass) {
    names.On({{}, 0, TActionStarted{.Name = u"Tests", .Pass = std::move(pass)}});
  };
  // The names that one more run of the tests S, with a case that bears its name and one that does not, gets.
  const auto rename = [&names] {
    const std::u16string from =
        u"<testsuite name=\"S\"><testcase classname=\"S\"/><testcase classname=\"T\"/>";
    std::u16string to = names.Rename(from + u"</testsuite>");
    for (const std::u16string_view word :
         {u"\"", u"<testsuite name=", u"<testcase classname=", u"</testsuite>"})
      to = text::ReplaceAll(to, word, u"");
    return text::ToUtf8(to);
  };
  start(u"");
  EXPECT_EQ(rename(), "S>S/>T/>");
  EXPECT_EQ(rename(), "S (2)>S (2)/>T/>");
  start(u"a<b");
  start(u"c");
  EXPECT_EQ(rename(), "S (a&lt;b, c)>S (a&lt;b, c)/>T/>");
  EXPECT_EQ(rename(), "S (a&lt;b, c) (2)>S (a&lt;b, c) (2)/>T/>");
  for (int i = 0; i < 2; ++i)
    names.On({{}, 0, TActionEnded{}});
  EXPECT_EQ(rename(), "S (3)>S (3)/>T/>");
  names.On({{}, 0, TMetricSent{{}, u"", TMetricSource{u"Tests", {u"", u"x"}}}});
  EXPECT_EQ(rename(), "S (x)>S (x)/>T/>") << "of an action that has ended";
  EXPECT_EQ(names.Rename(u"<other/>"), u"<other/>");
}

} // namespace
} // namespace kx::tests
