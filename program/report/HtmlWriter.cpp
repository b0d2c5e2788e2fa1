#include "program/report/HtmlWriter.h"

#include "foundation/formats/Xml.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

#include <array>
#include <charconv>

namespace kx {

namespace {

constexpr std::size_t BufferSize = std::size_t{64} * 1024;

} // namespace

std::string HtmlText(std::u16string_view text) {
  return text::ToUtf8(XmlEscape(text::VisibleControls(text)));
}

std::string Grouped(std::int64_t number) {
  std::string text = std::to_string(number);
  const std::size_t first = number < 0 ? 1 : 0;
  for (std::size_t i = text.size(); i > first + 3;)
    text.insert(i -= 3, ",");
  return text;
}

std::u16string CountOf(std::int64_t count, std::u16string_view of) {
  return text::FromUtf8(Grouped(count)) + u" " + std::u16string(of) + (count == 1 ? u"" : u"s");
}

std::string Fixed(double number) {
  std::array<char, 32> digits{};
  const auto end =
      std::to_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::fixed, 2);
  return {digits.data(), end.ptr};
}

THtmlWriter& THtmlWriter::operator<<(std::string_view markup) {
  buffer_ += markup;
  if (buffer_.size() >= BufferSize) Flush();
  return *this;
}

void THtmlWriter::Copy(const platform::Spool& markup, std::uint64_t begin, std::uint64_t end) {
  Flush();
  if (status_) status_ = markup.CopyTo(put_, begin, end);
}

void THtmlWriter::Fail(const platform::Status& why) {
  if (status_) status_ = why;
}

void THtmlWriter::Flush() {
  if (status_ && !buffer_.empty()) status_ = put_(buffer_);
  flushed_ += buffer_.size();
  buffer_.clear();
}

platform::Status THtmlWriter::Finish() {
  Flush();
  return status_;
}

} // namespace kx
