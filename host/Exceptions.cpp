#include "host/Exceptions.h"

#include "text/Encoding.h"

namespace kx {

EKxException::EKxException(std::u16string message)
    : message_(std::move(message)), utf8_(text::ToUtf8(message_)) {}

EKxParseError::EKxParseError(std::u16string message, std::u16string file, int line)
    : EKxException(std::move(message)), file_(std::move(file)), line_(line) {}

std::u16string MessageOf(const std::exception& error) {
  if (const auto* own = dynamic_cast<const EKxException*>(&error)) return own->Message();
  return text::FromUtf8(error.what());
}

} // namespace kx
