#include "platform/TextFiles.h"

#include "platform/Files.h"
#include "text/Encoding.h"

namespace kx::platform {

std::u16string DecodeTextFile(std::string_view bytes) {
  const text::ByteOrderMark mark = text::DetectByteOrderMark(bytes);
  bytes.remove_prefix(text::LengthOf(mark));
  switch (mark) {
  case text::ByteOrderMark::Utf8:
    return text::FromUtf8(bytes);
  case text::ByteOrderMark::Utf16LE:
    return text::FromUtf16LE(bytes);
  case text::ByteOrderMark::Utf16BE:
    return text::FromUtf16BE(bytes);
  case text::ByteOrderMark::None:
    break;
  }
  return FromAnsi(bytes);
}

Result<std::u16string> ReadTextFile(std::u16string_view path) {
  const Result<std::string> bytes = ReadFile(path);
  if (!bytes) return Failure{bytes.Message()};
  return DecodeTextFile(*bytes);
}

} // namespace kx::platform
