#include "program/report/JUnitSink.h"

#include "foundation/text/Encoding.h"

namespace kx {

void TJUnitSink::On(const TRunEvent& event) {
  names_.On(event);
  const auto* sent = std::get_if<TMetricSent>(&event.What);
  const std::u16string* xml = sent != nullptr ? TestSuiteXml(sent->Metric) : nullptr;
  if (xml == nullptr) return;
  const auto suite = ReadTestSuite(*xml);
  if (!suite) return;
  suites_.Append(text::ToUtf8(names_.Rename(*xml)));
  tests_ += static_cast<std::int64_t>(suite->Tests.size());
  failures_ += suite->Failed;
  skipped_ += suite->Skipped;
}

platform::Status TJUnitSink::Write(const TRunReport& /*report*/, const platform::PutBytes& put) {
  auto done = put("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites tests=\"" +
                  std::to_string(tests_) + "\" failures=\"" + std::to_string(failures_) +
                  "\" errors=\"0\" skipped=\"" + std::to_string(skipped_) + "\">\n");
  if (done) done = suites_.CopyTo(put);
  return done ? put("</testsuites>\n") : done;
}

} // namespace kx
