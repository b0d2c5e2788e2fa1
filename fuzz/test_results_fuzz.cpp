// A results file of MSTest: where the reader's blocks are cut does not matter, and the counts of the report
// agree with the results.
#include "foundation/formats/Xml.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "fuzz/FuzzTarget.h"
#include "package/mstest/TestResultsFile.h"

#include <algorithm>

namespace kx::fuzz {
namespace {

std::u16string Describe(const TKxArrayOfMSTestResult& results) {
  std::u16string text;
  for (const auto& result : results) {
    for (const auto& part :
         {result.TestName, result.ErrorMessage, result.StackTrace, result.ClassName, result.Outcome})
      text += part + u"|";
    text += text::FromInteger(result.Duration) + (result.Passed ? u" passed" : u"") +
            (result.Executed ? u" executed" : u"");
    for (const auto& time : {result.StartTime, result.EndTime})
      text += u" " + (time ? DateTimeText(*time) : std::u16string(u"-"));
    text += u"\n";
  }
  return text;
}

void CheckReport(const TKxArrayOfMSTestResult& results) {
  const TKxUnitTestRun run(results);
  const auto total = static_cast<std::int64_t>(results.size());
  Require(run.TotalCount() == total, "every result is counted once");
  TXmlDocument report;
  Require(report.LoadBytes(text::ToUtf8(run.AsXmlString())), "the report is XML");
  const TXmlElement suite = report.DocumentElement().value();
  Require(suite.GetAttribute(u"tests") == text::FromInteger(total), "the report says how many there are");
  Require(suite.GetElementsByTagName(u"testcase").size() == results.size(), "the report holds every test");
  Require(static_cast<std::int64_t>(suite.GetElementsByTagName(u"failure").size()) == run.FailedCount(),
          "the report holds every failure");
}

void Check(std::string_view bytes) {
  TInput input(bytes);
  const unsigned distance = input.Below(256) * 37;
  const std::string_view file = input.Rest();
  const auto results = InterpretMSTestBytes(file);
  CheckReport(results);
  // A declaration, or a mark, must come first.
  if (results.empty() || file.front() != '<' || file.starts_with("<?xml")) return;
  const std::string moved = "<!--" + std::string(distance, ' ') + "-->" + std::string(file);
  Require(Describe(InterpretMSTestBytes(moved)) == Describe(results), "where blocks are cut does not matter");
}

const TRegistration registration({"test_results", Check});

} // namespace
} // namespace kx::fuzz
