#include "package/mstest/TestResultsFile.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

namespace kx::tests {
namespace {

// One line a result.
std::string Shown(const TKxArrayOfMSTestResult& results) {
  std::string text;
  for (const auto& result : results) {
    if (!result.Executed) text += "not run: ";
    text +=
        (result.Passed ? "+" : "-") + text::ToUtf8(result.TestName) + " " + std::to_string(result.Duration);
    if (result.StartTime) text += " from " + text::ToUtf8(DateTimeText(*result.StartTime));
    if (result.EndTime) text += " to " + text::ToUtf8(DateTimeText(*result.EndTime));
    if (!result.ClassName.empty()) text += " of " + text::ToUtf8(result.ClassName);
    text += " [" + text::ToUtf8(result.ErrorMessage) + "][" + text::ToUtf8(result.StackTrace) + "]\n";
  }
  return text;
}

// <R> is a result, <O> its output, <E> the error in it, <M> and <S> that one's message and stack trace.
std::string InFull(std::string xml) {
  const std::pair<const char*, const char*> names[] = {
      {"R", "UnitTestResult"}, {"O", "Output"}, {"E", "ErrorInfo"}, {"M", "Message"}, {"S", "StackTrace"}};
  for (const auto& [letter, name] : names)
    xml = std::regex_replace(xml, std::regex(std::string("(</?(p:)?)") + letter + "\\b"),
                             std::string("$1") + name);
  return xml;
}

TEST(TestResultsFile, GivesEveryResultOfADocumentAndNoneOfADamagedOne) {
  const std::tuple<const char*, std::string, std::string> cases[] = {
      {"all attributes",
       "<TestRun xmlns='u'><Results><R testName='&lt;A&amp;B&gt;&#10;c' outcome='Passed' "
       "duration='00:01:02.5' "
       "startTime='2010-04-01T10:20:30.1234567+10:00' "
       "endTime='2010-04-01T10:20:31.1-05:00'/></Results></TestRun>",
       "+<A&B>\nc 62005 from 2010-04-01T10:20:30.123 [][]\n"},
      {"the class of the definition, before the results or behind them",
       "<r xmlns='u'><UnitTest id='{A}'><TestMethod className='N.C, Lib, Version=1.0'/></UnitTest>"
       "<R testId='{a}' testName='a'/><R testId='{b}' testName='b'/><R testId='{c}' testName='c'/>"
       "<UnitTest id='{b}'><TestMethod className='N.D`1[[System.Int32, mscorlib]], Lib'/></UnitTest></r>",
       "-a 0 of N.C [][]\n-b 0 of N.D`1[[System.Int32, mscorlib]] [][]\n-c 0 [][]\n"},
      {"no attributes", "<r xmlns='u'><R/></r>", "- 0 [][]\n"},
      {"only the exact word is a success",
       "<r><R outcome='passed'/><R outcome='Passed '/><R outcome='PassedButRunAborted'/></r>",
       "- 0 [][]\n- 0 [][]\n- 0 [][]\n"},
      {"attributes of a namespace are others",
       "<r xmlns='u' xmlns:p='v'><R p:testName='x' testName='y'/></r>", "-y 0 [][]\n"},
      {"message and stack trace", "<r xmlns='u'><R><O><E><M>m&amp;&#xE9;</M><S>s</S></E></O></R></r>",
       "- 0 [m&é][s]\n"},
      {"of a success they do not count", "<r><R outcome='Passed'><O><E><M>m</M></E></O></R></r>",
       "+ 0 [][]\n"},
      {"the text of all that is inside",
       "<R><O><E><M>a<b>b<![CDATA[<c>]]></b><!-- no -->\r\n <?no no?>d</M></E></O></R>",
       "- 0 [ab<c>\n d][]\n"},
      {"the first counts, were it empty",
       "<R><O><E><M/><M>2</M></E><E><S>1</S></E></O><O><E><S>2</S></E></O></R>", "- 0 [][1]\n"},
      {"only at that very place",
       "<R><E><M>1</M></E><O><M>2</M><x><E><M>3</M></E></x><E><O><E><M>4</M></E></O></E></O>"
       "<x><O><E><M>5</M></E></O></x></R>",
       "- 0 [][]\n"},
      {"only of that namespace",
       "<r xmlns='u'><R><O><E xmlns='v'><M xmlns='u'>1</M></E></O><O xmlns='v'><E xmlns='u'><M>2</M></E></O>"
       "<R xmlns=''/></R></r>",
       "- 0 [][]\n"},
      {"rows of a data-driven test, the outer first",
       "<r><R testName='outer'><InnerResults><R testName='1'><O><E><M>m1</M></E></O></R></InnerResults>"
       "<O><E><M>m</M></E></O></R><R testName='2'/></r>",
       "-outer 0 [m][]\n-1 0 [m1][]\n-2 0 [][]\n"},
      {"within a message", "<R><O><E><M>a<R testName='i'><O><E><M>b</M></E></O></R>c</M></E></O></R>",
       "- 0 [abc][]\n-i 0 [b][]\n"},
      {"a namespace by its prefix", "<p:r xmlns:p='u'><p:R testName='t'/><R/></p:r>", "-t 0 [][]\n"},
      {"a document without one", "<r><R testName='t'/><R xmlns='u'/></r>", "-t 0 [][]\n"},
      {"the namespace is the document element's", "<r xmlns='u'><R xmlns='v'/></r>", ""},
      {"other results", "<r><WebTestResult testName='w'/><unitTestResult/></r>", ""},
      {"an unbound prefix", "<r><R/><q:a/></r>", ""},
      {"a forbidden character by number", "<r><R/>&#1;</r>", ""},
      {"a bomb of entities", "<!DOCTYPE r [<!ENTITY a 'aaaaaaaa'><!ENTITY b '&a;&a;'>]><r><R/>&b;</r>", ""},
      {"no XML", "Passed  A\r\nFailed  B\r\n", ""},
  };
  for (const auto& [what, xml, results] : cases)
    EXPECT_EQ(Shown(InterpretMSTestBytes(InFull(xml))), results) << what;
  EXPECT_TRUE(InterpretMSTestOutput(u"/no/such/file.trx").empty());
  EXPECT_TRUE(InterpretMSTestOutput(TTemporaryFolder().Path()).empty()) << "a folder";
}

// Half of the results would be a wrong verdict. The text is long enough that it is read in pieces; the second
// bytes of some Japanese letters look like ASCII.
TEST(TestResultsFile, IsReadWholeOrNotAtAll) {
  std::string letters;
  std::u16string expected;
  for (int i = 0; i < 40'000; ++i) {
    letters += "\x95\x5C\x83\x5C";
    expected += u"表ソ";
  }
  const std::string begin = InFull("<r><R><O><E><M>"), end = InFull("</M></E></O></R></r>");
  const TTemporaryFolder folder;
  const std::pair<const char*, std::string> cases[] = {
      {"Shift_JIS", "<?xml version='1.0' encoding='Shift_JIS'?>" + begin + letters + end},
      {"UTF-8", "\xEF\xBB\xBF" + begin + text::ToUtf8(expected) + end},
      {"UTF-16", text::ToUtf16LE(u"\uFEFF" + text::FromUtf8(begin) + expected + text::FromUtf8(end))},
  };
  for (const auto& [encoding, bytes] : cases) {
    const auto results = InterpretMSTestOutput(folder.Write("a.trx", bytes));
    ASSERT_EQ(results.size(), 1U) << encoding;
    EXPECT_TRUE(results[0].ErrorMessage == expected) << encoding;
    for (const std::size_t missing : {1U, 3U, 60U, 100'000U})
      EXPECT_TRUE(InterpretMSTestBytes(bytes.substr(0, bytes.size() - missing)).empty())
          << encoding << missing;
  }
}

TEST(TestResultsFile, ParsesTimes) {
  const std::pair<const char16_t*, const char*> cases[] = {
      {u"2010-04-01T10:20:30.1234567+10:00", "2010-04-01T10:20:30.123"},
      {u"2010-04-01T10:20:30.5+1:0", "2010-04-01T10:20:30.005"},
      {u"x12010-04-01T10:20:30.5+00:00y", "2010-04-01T10:20:30.005"},
      {u"2010-04-01T10:20:30.5 2011-04-01T10:20:30.5+00:00", "2011-04-01T10:20:30.005"},
      {u"0001-01-01T00:00:00.0000000+00:00", "0001-01-01T00:00:00.000"},
      {u"2012-02-29T23:59:59.999+00:00", "2012-02-29T23:59:59.999"},
  };
  for (const auto& [text, time] : cases)
    EXPECT_EQ(text::ToUtf8(DateTimeText(ParseUTCDateTime(text).value())), time) << text::ToUtf8(text);
  for (const auto* none :
       {u"2011-02-29T23:59:59.999+00:00", u"2010-13-01T10:20:30.1+00:00", u"2010-04-01T24:20:30.1+00:00",
        u"2010-04-01T10:60:30.1+00:00", u"2010-04-01T10:20:60.1+00:00", u"0000-04-01T10:20:30.1+00:00",
        u"2010-04-01T10:20:30.1234567-05:00", u"2010-04-01T10:20:30.1234567Z", u"2010-04-01T10:20:30+10:00",
        u"2010-04-01T10:20:30.1+10", u"2010-04-01T10:20:30.1+:00", u"2010-04-01 10:20:30.1+10:00", u""})
    EXPECT_FALSE(ParseUTCDateTime(none)) << text::ToUtf8(none);
}

} // namespace
} // namespace kx::tests
