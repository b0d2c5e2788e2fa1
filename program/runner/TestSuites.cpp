#include "program/runner/TestSuites.h"

#include "contract/UnitTests.h"
#include "foundation/formats/Xml.h"
#include "foundation/formats/XmlStream.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace kx {

namespace {

// The text of a failure repeats its message in front of the stack trace.
std::u16string WithoutMessage(std::u16string text, std::u16string_view message) {
  if (message.empty() || !text.starts_with(message)) return text;
  text.erase(0, message.size());
  if (text.starts_with(u'\n')) text.erase(0, 1);
  return text;
}

class TSuiteReader : public IXmlEvents {
public:
  void StartElement(const IXmlStartTag& tag) override {
    const auto attribute = [&tag](std::string_view name) { return tag.GetAttribute(name).value_or(u""); };
    if (depth_++ == 0) {
      isSuite_ = tag.Name() == "testsuite";
      suite_.Name = attribute("name");
      suite_.Seconds = attribute("time");
    } else if (tag.Name() == "testcase") {
      suite_.Tests.push_back({.Name = attribute("name"), .Seconds = attribute("time")});
    } else if (!suite_.Tests.empty() && tag.Name() == "skipped") {
      suite_.Tests.back().Skipped = true;
      ++suite_.Skipped;
    } else if (!suite_.Tests.empty() && tag.Name() == "failure") {
      suite_.Tests.back().Failed = true;
      suite_.Tests.back().Message = attribute("message");
      ++suite_.Failed;
    }
    text_.clear();
  }
  void EndElement() override {
    --depth_;
    if (!text_.empty() && !suite_.Tests.empty() && suite_.Tests.back().Failed)
      suite_.Tests.back().StackTrace = WithoutMessage(text::FromUtf8(text_), suite_.Tests.back().Message);
    text_.clear();
  }
  void Text(std::string_view utf8) override {
    if (depth_ == FailureDepth) text_ += utf8;
  }

  std::optional<TReportedSuite> Take() { return isSuite_ ? std::optional(std::move(suite_)) : std::nullopt; }

private:
  static constexpr int FailureDepth = 3; // testsuite, testcase, failure

  int depth_ = 0;
  bool isSuite_ = false;
  TReportedSuite suite_;
  std::string text_;
};

} // namespace

std::chrono::milliseconds ElapsedOf(std::u16string_view seconds) {
  const std::string digits = text::ToUtf8(seconds);
  double value = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), value);
  constexpr double longest = 1e9; // what is written there may be anything
  return std::chrono::milliseconds(std::isfinite(value) ? std::llround(std::clamp(value, 0.0, longest) * 1000)
                                                        : 0);
}

TPastTest OutcomeOf(const TReportedTest& test) {
  if (test.Failed) return TPastTest::Failed;
  return test.Skipped ? TPastTest::NotRun : TPastTest::Passed;
}

std::u16string PastNameOf(const TReportedSuite& suite, const TReportedTest& test) {
  return suite.Name + u"/" + test.Name;
}

const std::u16string* TestSuiteXml(const TKxMetric& metric) {
  if (metric.Category != UnitTestCategory || metric.Name != TestResultsMetric) return nullptr;
  return std::get_if<std::u16string>(&metric.Value);
}

void TSuiteNames::On(const TRunEvent& event) {
  if (const auto* started = std::get_if<TActionStarted>(&event.What)) {
    passes_.push_back(started->Pass);
  } else if (std::holds_alternative<TActionEnded>(event.What) && !passes_.empty()) {
    passes_.pop_back();
  }
  const auto* sent = std::get_if<TMetricSent>(&event.What);
  told_ = sent != nullptr && sent->Source ? sent->Source->Passes : passes_;
}

std::u16string TSuiteNames::Rename(std::u16string_view xml) {
  constexpr std::u16string_view opening = u"<testsuite name=\"";
  const std::size_t tag = xml.find(opening);
  if (tag == std::u16string_view::npos) return std::u16string(xml);
  const std::size_t end = xml.find(u'"', tag + opening.size());
  std::u16string passes;
  for (const auto& pass : told_)
    if (!pass.empty()) passes += (passes.empty() ? u"" : u", ") + XmlEscape(pass);
  const std::u16string old(xml.substr(tag + opening.size(), end - tag - opening.size()));
  std::u16string name = old;
  if (!passes.empty()) name += u" (" + passes + u")";
  if (const int count = ++seen_[name]; count > 1) name += u" (" + text::FromInteger(count) + u")";
  const auto inClass = [](const std::u16string& suite) { return u" classname=\"" + suite + u'"'; };
  return std::u16string(xml.substr(0, tag + opening.size())) + name +
         text::ReplaceAll(xml.substr(end), inClass(old), inClass(name));
}

std::optional<TReportedSuite> ReadTestSuite(std::u16string_view xml) {
  TSuiteReader reader;
  TXmlStream stream(reader);
  return stream.LoadBytes(text::ToUtf8(xml)) ? reader.Take() : std::nullopt;
}

} // namespace kx
