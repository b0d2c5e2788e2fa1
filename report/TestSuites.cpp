#include "report/TestSuites.h"

#include "host/UnitTests.h"
#include "host/XmlStream.h"
#include "text/Encoding.h"

namespace kx {

namespace {

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
      suite_.Tests.back().StackTrace = text::FromUtf8(text_);
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

const std::u16string* TestSuiteXml(const TKxMetric& metric) {
  if (metric.Category != UnitTestCategory || metric.Name != TestResultsMetric) return nullptr;
  return std::get_if<std::u16string>(&metric.Value);
}

std::optional<TReportedSuite> ReadTestSuite(std::u16string_view xml) {
  TSuiteReader reader;
  TXmlStream stream(reader);
  return stream.LoadBytes(text::ToUtf8(xml)) ? reader.Take() : std::nullopt;
}

} // namespace kx
