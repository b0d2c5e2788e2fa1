#include "program/report/SuiteSpool.h"

#include "foundation/text/Encoding.h"

namespace kx {

void TSuiteSpool::Append(std::u16string_view suite) {
  // First: without an end, for want of memory, it would spoil the next suite.
  ends_.push_back(xml_.Size());
  xml_.Append(text::ToUtf8(suite));
  ends_.back() = xml_.Size();
}

platform::Status TSuiteSpool::ForEach(const std::function<void(const TReportedSuite&)>& visit) const {
  if (!xml_.State()) return xml_.State();
  std::uint64_t begin = 0;
  for (const std::uint64_t end : ends_) {
    std::string xml;
    auto read = xml_.CopyTo(
        [&xml](std::string_view bytes) -> platform::Status {
          xml += bytes;
          return platform::Done{};
        },
        begin, end);
    if (!read) return read;
    if (const auto suite = ReadTestSuite(text::FromUtf8(xml))) visit(*suite);
    begin = end;
  }
  return platform::Done{};
}

} // namespace kx
