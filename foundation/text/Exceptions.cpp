#include "foundation/text/Exceptions.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

#include <new>
#include <system_error>

namespace kx {

EKxException::EKxException(std::u16string message)
    : message_(std::move(message)), utf8_(text::ToUtf8(message_)) {}

EKxParseError::EKxParseError(std::u16string message, std::u16string file, int line)
    : EKxException(std::move(message)), file_(std::move(file)), line_(line) {}

std::u16string PlaceOf(const std::exception& error) {
  const auto* parsing = dynamic_cast<const EKxParseError*>(&error);
  if (parsing == nullptr || parsing->File().empty() || parsing->Line() == 0) return {};
  return parsing->File() + u", line " + text::FromInteger(parsing->Line());
}

std::u16string MessageOf(const std::exception& error) {
  if (const auto* own = dynamic_cast<const EKxException*>(&error)) return own->Message();
  if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) return u"Out of memory";
  const auto* refused = dynamic_cast<const std::system_error*>(&error);
  if (refused != nullptr && refused->code() == std::errc::resource_unavailable_try_again)
    return u"A thread could not be started. " + text::FromUtf8(error.what()); // nothing else is refused so
  return text::FromUtf8(error.what());
}

} // namespace kx
