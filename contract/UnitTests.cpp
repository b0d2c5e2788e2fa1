#include "contract/UnitTests.h"

#include "foundation/formats/Xml.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace kx {

namespace {

std::u16string Number(std::int64_t number) {
  return text::FromInteger(number);
}

// Seconds, as JUnit reports have them.
std::u16string Seconds(std::int64_t milliseconds) {
  std::u16string fraction = Number(milliseconds % 1000);
  fraction.insert(0, 3 - fraction.size(), u'0');
  return Number(milliseconds / 1000) + u"." + fraction;
}

// A reader of XML turns a bare carriage return into a line feed, and each line end of an attribute into a
// blank.
std::u16string TextContent(std::u16string_view text) {
  return text::ReplaceAll(XmlEscape(text), u"\r", u"&#13;");
}
std::u16string AttributeValue(std::u16string_view text) {
  return text::ReplaceAll(text::ReplaceAll(TextContent(text), u"\n", u"&#10;"), u"\t", u"&#9;");
}

void AppendAttribute(std::u16string& xml, std::u16string_view name, std::u16string_view value) {
  xml.append(u" ").append(name).append(u"=\"").append(AttributeValue(value)).append(u"\"");
}

std::u16string FailureMessage(const TKxUnitTestResult& result) {
  if (!result.ErrorMessage.empty()) return result.ErrorMessage;
  return result.Outcome.empty() ? u"The test did not pass." : result.Outcome;
}

void AppendOutcome(std::u16string& xml, const TKxUnitTestResult& result) {
  if (!result.Executed) {
    xml += u"    <skipped/>\n";
    return;
  }
  const std::u16string message = FailureMessage(result);
  xml += u"    <failure";
  AppendAttribute(xml, u"message", message);
  xml.append(u">").append(TextContent(message));
  if (!result.StackTrace.empty()) xml.append(u"\n").append(TextContent(result.StackTrace));
  xml.append(u"</failure>\n");
}

void AppendTest(std::u16string& xml, const TKxUnitTestResult& result, std::u16string_view runName) {
  xml += u"  <testcase";
  AppendAttribute(xml, u"name", result.TestName.empty() ? u"without a name" : result.TestName);
  AppendAttribute(xml, u"classname", result.ClassName.empty() ? runName : result.ClassName);
  AppendAttribute(xml, u"time", Seconds(result.Duration));
  if (result.Executed && result.Passed) {
    xml += u"/>\n";
    return;
  }
  xml += u">\n";
  AppendOutcome(xml, result);
  xml += u"  </testcase>\n";
}

std::optional<TKxDateTime> FirstStart(const std::vector<TKxUnitTestResult>& results) {
  std::optional<TKxDateTime> first;
  for (const auto& result : results)
    if (result.StartTime && (!first || *result.StartTime < *first)) first = result.StartTime;
  return first;
}

} // namespace

TKxUnitTestRun::TKxUnitTestRun(std::vector<TKxUnitTestResult> results) : results_(std::move(results)) {
  for (const auto& result : results_) {
    if (!result.Executed) {
      ++notRun_;
      continue;
    }
    totalTime_ += result.Duration;
    ++(result.Passed ? passed_ : failed_);
  }
}

std::u16string TKxUnitTestRun::AsXmlString() const {
  std::u16string xml = u"<testsuite";
  AppendAttribute(xml, u"name", name_);
  AppendAttribute(xml, u"tests", Number(TotalCount()));
  AppendAttribute(xml, u"failures", Number(failed_));
  AppendAttribute(xml, u"errors", u"0");
  AppendAttribute(xml, u"skipped", Number(notRun_));
  AppendAttribute(xml, u"time", Seconds(totalTime_));
  // Without the fraction: some readers refuse one.
  if (const auto start = FirstStart(results_))
    AppendAttribute(xml, u"timestamp", DateTimeText(*start).substr(0, 19));
  xml += u">\n";
  for (const auto& result : results_)
    AppendTest(xml, result, name_);
  xml += u"</testsuite>\n";
  return xml;
}

std::u16string DateTimeText(TKxDateTime time) {
  using namespace std::chrono;
  const auto day = floor<days>(time);
  const year_month_day date(day);
  const hh_mm_ss clock(time - day);
  std::array<char, 40> text{};
  const int length = std::snprintf(
      text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03d", static_cast<int>(date.year()),
      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
      static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
      static_cast<int>(clock.seconds().count()), static_cast<int>(clock.subseconds().count()));
  return text::FromAscii({text.data(), static_cast<std::size_t>(length)});
}

} // namespace kx
