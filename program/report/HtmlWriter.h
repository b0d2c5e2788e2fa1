// The text of a page as it is written.
#pragma once

#include "foundation/platform/Spool.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kx {

// Escaped for elements and attributes; control characters made visible.
std::string HtmlText(std::u16string_view text);

std::string Grouped(std::int64_t number);                           // "12,345"
std::u16string CountOf(std::int64_t count, std::u16string_view of); // "1 error", "1,200 errors"
std::string Fixed(double number);                                   // with two digits: "12.50"

// UTF-8 is markup and goes out as it is; UTF-16 is text from outside and is escaped. Numbers are for people.
class THtmlWriter {
public:
  explicit THtmlWriter(const platform::PutBytes& put) : put_(put) {}

  THtmlWriter& operator<<(std::string_view markup);
  THtmlWriter& operator<<(std::u16string_view text) { return *this << HtmlText(text); }
  THtmlWriter& operator<<(std::int64_t number) { return *this << Grouped(number); }

  void Copy(const platform::Spool& markup, std::uint64_t begin, std::uint64_t end);
  void Fail(const platform::Status& why); // the first failure stays
  // What was not put yet; the failure, if there was one.
  platform::Status Finish();
  // Put so far and waiting.
  std::uint64_t Size() const { return flushed_ + buffer_.size(); }

private:
  void Flush();

  const platform::PutBytes& put_;
  platform::Status status_ = platform::Done{};
  std::string buffer_;
  std::uint64_t flushed_ = 0;
};

} // namespace kx
