#include "package/mstest/TestResultsFile.h"

#include "foundation/formats/Xml.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kx::tests {
namespace {

// One line a result.
std::string Shown(const TKxArrayOfMSTestResult& results) {
  std::string text;
  for (const auto& result : results) {
    text +=
        (result.Passed ? "+" : "-") + text::ToUtf8(result.TestName) + " " + std::to_string(result.Duration);
    if (result.StartTime) text += " from " + text::ToUtf8(DateTimeText(*result.StartTime));
    if (result.EndTime) text += " to " + text::ToUtf8(DateTimeText(*result.EndTime));
    if (!result.ClassName.empty()) text += " of " + text::ToUtf8(result.ClassName);
    text += " [" + text::ToUtf8(result.ErrorMessage) + "][" + text::ToUtf8(result.StackTrace) + "]\n";
  }
  return text;
}

std::string Failed(const std::string& children) {
  return "<r xmlns='u'><UnitTestResult testName='t'>" + children + "</UnitTestResult></r>";
}
std::string Error(const std::string& children) {
  return Failed("<Output><ErrorInfo>" + children + "</ErrorInfo></Output>");
}

struct TCase {
  const char* What;
  std::string Xml;
  std::string Results;
};

TEST(TestResultsFile, ReadsResults) {
  const TCase cases[] = {
      {"all attributes",
       "<TestRun xmlns='u'><Results><UnitTestResult testName='&lt;A&amp;B&gt;&#10;c' outcome='Passed' "
       "duration='00:01:02.5' startTime='2010-04-01T10:20:30.1234567+10:00' "
       "endTime='2010-04-01T10:20:31.1-05:00'/></Results></TestRun>",
       "+<A&B>\nc 62005 from 2010-04-01T10:20:30.123 [][]\n"},
      {"the class of the definition, before the results or behind them",
       "<r xmlns='u'><UnitTest id='{A}'><TestMethod className='N.C, Lib, Version=1.0'/></UnitTest>"
       "<UnitTestResult testId='{a}' testName='a'/><UnitTestResult testId='{b}' testName='b'/>"
       "<UnitTestResult testId='{c}' testName='c'/><UnitTest id='{b}'>"
       "<TestMethod className='N.D`1[[System.Int32, mscorlib]], Lib'/></UnitTest></r>",
       "-a 0 of N.C [][]\n-b 0 of N.D`1[[System.Int32, mscorlib]] [][]\n-c 0 [][]\n"},
      {"no attributes", "<r xmlns='u'><UnitTestResult/></r>", "- 0 [][]\n"},
      {"only the exact word is a success",
       "<r><UnitTestResult testName='a' outcome='passed'/><UnitTestResult testName='b' outcome='Passed '/>"
       "<UnitTestResult testName='c' outcome='PassedButRunAborted'/></r>",
       "-a 0 [][]\n-b 0 [][]\n-c 0 [][]\n"},
      {"attributes of a namespace are others",
       "<r xmlns='u' xmlns:p='v'><UnitTestResult p:testName='x' testName='y'/></r>", "-y 0 [][]\n"},
      {"message and stack trace", Error("<Message>m&amp;&#xE9;</Message><StackTrace>s</StackTrace>"),
       "-t 0 [m&é][s]\n"},
      {"of a success they do not count",
       "<r xmlns='u'><UnitTestResult outcome='Passed'><Output><ErrorInfo><Message>m</Message></ErrorInfo>"
       "</Output></UnitTestResult></r>",
       "+ 0 [][]\n"},
      {"the text of all that is inside",
       Error("<Message>a<b>b<![CDATA[<c>]]></b><!-- no -->\r\n <?no no?>d</Message>"),
       "-t 0 [ab<c>\n d][]\n"},
      {"the first counts, were it empty",
       Failed("<Output><ErrorInfo><Message/><Message>2</Message></ErrorInfo><ErrorInfo><StackTrace>1"
              "</StackTrace></ErrorInfo></Output><Output><ErrorInfo><StackTrace>2</StackTrace></ErrorInfo>"
              "</Output>"),
       "-t 0 [][1]\n"},
      {"only at that very place",
       Failed(
           "<ErrorInfo><Message>1</Message></ErrorInfo><Output><Message>2</Message><x><ErrorInfo><Message>3"
           "</Message></ErrorInfo></x><ErrorInfo><Output><ErrorInfo><Message>4</Message></ErrorInfo>"
           "</Output></ErrorInfo></Output><x><Output><ErrorInfo><Message>5</Message></ErrorInfo></Output>"
           "</x>"),
       "-t 0 [][]\n"},
      {"only of that namespace",
       Failed("<Output><ErrorInfo xmlns='v'><Message xmlns='u'>1</Message></ErrorInfo></Output>"
              "<Output xmlns='v'><ErrorInfo xmlns='u'><Message>2</Message></ErrorInfo></Output>"
              "<UnitTestResult xmlns=''/>"),
       "-t 0 [][]\n"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(Shown(InterpretMSTestBytes(row.Xml)), row.Results) << row.What;
}

TEST(TestResultsFile, FindsResultsAtAnyDepth) {
  const TCase cases[] = {
      {"rows of a data-driven test, the outer first",
       "<r xmlns='u'><UnitTestResult testName='outer'><InnerResults><UnitTestResult testName='1'><Output>"
       "<ErrorInfo><Message>m1</Message></ErrorInfo></Output></UnitTestResult></"
       "InnerResults><Output><ErrorInfo>"
       "<Message>m</Message></ErrorInfo></Output></UnitTestResult><UnitTestResult testName='2'/></r>",
       "-outer 0 [m][]\n-1 0 [m1][]\n-2 0 [][]\n"},
      {"within a message",
       Error("<Message>a<UnitTestResult testName='i'><Output><ErrorInfo><Message>b</Message>"
             "</ErrorInfo></Output></UnitTestResult>c</Message>"),
       "-t 0 [abc][]\n-i 0 [b][]\n"},
      {"the document itself", "<UnitTestResult testName='t'/>", "-t 0 [][]\n"},
      {"a namespace by its prefix",
       "<p:r xmlns:p='u'><p:UnitTestResult testName='t'/><UnitTestResult/></p:r>", "-t 0 [][]\n"},
      {"a document without one", "<r><UnitTestResult testName='t'/><UnitTestResult xmlns='u'/></r>",
       "-t 0 [][]\n"},
      {"the namespace is the document element's", "<r xmlns='u'><UnitTestResult xmlns='v'/></r>", ""},
      {"other results", "<r><WebTestResult testName='w'/><unitTestResult/></r>", ""},
  };
  for (const auto& row : cases)
    EXPECT_EQ(Shown(InterpretMSTestBytes(row.Xml)), row.Results) << row.What;
}

TEST(TestResultsFile, RefusesWhollyWhatIsWrongAnywhere) {
  const std::string result = "<UnitTestResult testName='t'/>";
  const TCase cases[] = {
      {"an unbound prefix", "<r>" + result + "<p:a/></r>", ""},
      {"a forbidden character by number", "<r>" + result + "&#1;</r>", ""},
      {"bytes that are no UTF-8", "<r>" + result + "\xE9</r>", ""},
      {"bytes outside the declared page",
       "<?xml version='1.0' encoding='Shift_JIS'?><r>" + result + "\x81</r>", ""},
      {"a bomb of entities",
       "<!DOCTYPE r [<!ENTITY a 'aaaaaaaa'><!ENTITY b '&a;&a;&a;&a;'>]><r>" + result + "&b;</r>", ""},
      {"a document type alone", "<!DOCTYPE r><r>" + result + "</r>", ""},
      {"a file of the machine", "<!DOCTYPE r [<!ENTITY a SYSTEM 'file:///etc/passwd'>]><r>" + result + "</r>",
       ""},
      {"no XML", "Passed  A\r\nFailed  B\r\n", ""},
  };
  for (const auto& row : cases)
    EXPECT_EQ(Shown(InterpretMSTestBytes(row.Xml)), row.Results) << row.What;
  EXPECT_TRUE(InterpretMSTestOutput(u"/no/such/file.trx").empty());
  EXPECT_TRUE(InterpretMSTestOutput(TTemporaryFolder().Path()).empty()) << "a folder";
}

// What the tree of the document gives, by expressions instead of places.
TKxArrayOfMSTestResult ReadByTree(const std::string& xml) {
  TKxArrayOfMSTestResult results;
  TXmlDocument document;
  if (!document.LoadBytes(xml)) return results;
  const std::u16string space = GetNamespacesFromDocumentRootNode(document);
  const std::u16string x = space.empty() ? u"" : u"x:";
  document.SetSelectionNamespace(u"x", space);
  for (const auto& node : document.SelectNodes(u"//" + x + u"UnitTestResult")) {
    const auto attribute = [&node](std::u16string_view name) {
      return node.GetAttribute(name).value_or(u"");
    };
    const auto error = [&](std::u16string_view name) {
      const auto found = node.SelectNodes(x + u"Output/" + x + u"ErrorInfo/" + x + std::u16string(name));
      return found.empty() ? std::u16string() : found.front().Text();
    };
    TKxUnitTestResult result;
    result.TestName = attribute(u"testName");
    result.Passed = attribute(u"outcome") == u"Passed";
    result.StartTime = ParseUTCDateTime(attribute(u"startTime"));
    result.EndTime = ParseUTCDateTime(attribute(u"endTime"));
    result.Duration = ParseUTCTime(attribute(u"duration"));
    if (!result.Passed) result.ErrorMessage = error(u"Message");
    if (!result.Passed) result.StackTrace = error(u"StackTrace");
    results.push_back(std::move(result));
  }
  return results;
}

std::string SomeResults() {
  std::string xml = "<!-- c --><?p i?><TestRun xmlns='u'><Results>";
  for (int i = 0; i < 40; ++i) {
    xml.append("<UnitTestResult testName='&quot;").append(std::to_string(i)).append("&quot; \t' outcome='");
    xml.append(i % 3 == 0 ? "Passed" : "Failed").append("' duration='00:00:0").append(std::to_string(i % 10));
    xml +=
        ".1234' startTime='2015-07-23T12:26:53.3455070+02:00'><Output><StdOut>x &gt; y</StdOut><ErrorInfo>"
        "<Message>m <![CDATA[&]]>\r\n<i>&#xD;</i></Message><StackTrace>at \xC3\xA9</StackTrace></ErrorInfo>"
        "</Output></UnitTestResult>";
  }
  return xml + "</Results></TestRun>";
}

TEST(TestResultsFile, ADamagedFileGivesWhatItsTreeGives) {
  const std::string whole = SomeResults();
  EXPECT_EQ(InterpretMSTestBytes(whole).size(), 40U);
  EXPECT_EQ(Shown(InterpretMSTestBytes(whole)), Shown(ReadByTree(whole)));
  for (std::size_t at = 0; at < whole.size(); at += 11) {
    EXPECT_TRUE(InterpretMSTestBytes(whole.substr(0, at)).empty()) << "cut off at " << at;
    for (const char damage : {'<', '&', '\'', 'x', '\0'}) {
      std::string damaged = whole;
      damaged[at] = damage;
      ASSERT_EQ(Shown(InterpretMSTestBytes(damaged)), Shown(ReadByTree(damaged))) << damage << " at " << at;
    }
  }
}

TEST(TestResultsFile, ReadsEveryEncodingOfAFile) {
  // Long enough that pieces are cut inside; the second bytes of some Japanese letters look like ASCII.
  std::string japanese = "<?xml version='1.0' encoding='Shift_JIS'?><r>";
  std::u16string utf16 = u"\uFEFF<?xml version='1.0' encoding='utf-16'?><r>";
  std::u16string expected;
  for (int i = 0; i < 40'000; ++i)
    expected += u"表ソ";
  for (int i = 0; i < 40'000; ++i)
    japanese += i == 0 ? "<UnitTestResult><Output><ErrorInfo><Message>\x95\x5C\x83\x5C" : "\x95\x5C\x83\x5C";
  utf16 += u"<UnitTestResult><Output><ErrorInfo><Message>" + expected;
  japanese += "</Message></ErrorInfo></Output></UnitTestResult></r>";
  utf16 += u"</Message></ErrorInfo></Output></UnitTestResult></r>";
  const std::string utf8 =
      "\xEF\xBB\xBF" + text::ToUtf8(text::ReplaceAll(utf16.substr(1), u"utf-16", u"utf-8"));
  const TTemporaryFolder folder;
  for (const auto& bytes : {japanese, text::ToUtf16LE(utf16), utf8}) {
    const auto results = InterpretMSTestOutput(folder.Write("a.trx", bytes));
    ASSERT_EQ(results.size(), 1U) << bytes.substr(0, 40);
    EXPECT_TRUE(results[0].ErrorMessage == expected) << bytes.substr(0, 40);
  }
}

TEST(TestResultsFile, ParsesDurations) {
  const std::pair<const char16_t*, std::int64_t> cases[] = {
      {u"00:00:01.2345678", 1234},
      {u"00:01:02.5", 62005},
      {u"00:00:00.05", 5},
      {u"99:99:99.999", 362439999},
      {u"1:02:03.000", 0},
      {u"11:02:03", 0},
      {u"00:00:01.", 0},
      {u"", 0},
      {u"1.10:00:00.5 days", 36000005},
      {u"x00:00:00:01.7y", 1007},
      {u"-00:00:02.250", 2250},
      {u"٠٠:00:02.250", 0},
  };
  for (const auto& [text, milliseconds] : cases)
    EXPECT_EQ(ParseUTCTime(text), milliseconds) << text::ToUtf8(text);
}

TEST(TestResultsFile, ParsesTimes) {
  const std::pair<const char16_t*, const char*> cases[] = {
      {u"2010-04-01T10:20:30.1234567+10:00", "2010-04-01T10:20:30.123"},
      {u"2010-04-01T10:20:30.5+1:0", "2010-04-01T10:20:30.005"},
      {u"x12010-04-01T10:20:30.5+00:00y", "2010-04-01T10:20:30.005"},
      {u"2010-04-01T10:20:30.5 2011-04-01T10:20:30.5+00:00", "2011-04-01T10:20:30.005"},
      {u"0001-01-01T00:00:00.0000000+00:00", "0001-01-01T00:00:00.000"},
      {u"2012-02-29T23:59:59.999+00:00", "2012-02-29T23:59:59.999"},
      {u"2011-02-29T23:59:59.999+00:00", ""},
      {u"2010-13-01T10:20:30.1+00:00", ""},
      {u"2010-04-01T24:20:30.1+00:00", ""},
      {u"2010-04-01T10:60:30.1+00:00", ""},
      {u"2010-04-01T10:20:60.1+00:00", ""},
      {u"0000-04-01T10:20:30.1+00:00", ""},
      {u"2010-04-01T10:20:30.1234567-05:00", ""},
      {u"2010-04-01T10:20:30.1234567Z", ""},
      {u"2010-04-01T10:20:30+10:00", ""},
      {u"2010-04-01T10:20:30.1+10", ""},
      {u"2010-04-01T10:20:30.1+:00", ""},
      {u"2010-04-01 10:20:30.1+10:00", ""},
      {u"", ""},
  };
  for (const auto& [text, time] : cases) {
    const auto parsed = ParseUTCDateTime(text);
    EXPECT_EQ(parsed ? text::ToUtf8(DateTimeText(*parsed)) : "", time) << text::ToUtf8(text);
  }
}

} // namespace
} // namespace kx::tests
