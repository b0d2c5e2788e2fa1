#include "foundation/platform/TextFiles.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"

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

std::u16string DecodeUtf8OrAnsi(std::string_view bytes) {
  const bool utf8 = text::DetectByteOrderMark(bytes) == text::ByteOrderMark::None && text::IsValidUtf8(bytes);
  return utf8 ? text::FromUtf8(bytes) : DecodeTextFile(bytes);
}

Result<std::u16string> ReadTextFile(std::u16string_view path) {
  const Result<std::string> bytes = ReadFile(path);
  if (!bytes) return Failure{bytes.Message()};
  return DecodeTextFile(*bytes);
}

LossyText ToAnsiLossy(std::u16string_view text) {
  if (auto all = ToAnsi(text)) return {*std::move(all), 0};
  LossyText result;
  while (!text.empty()) {
    const bool pair = text.size() > 1 && (text[0] & 0xFC00) == 0xD800 && (text[1] & 0xFC00) == 0xDC00;
    const std::u16string_view character = text.substr(0, pair ? 2 : 1);
    const auto bytes = ToAnsi(character);
    if (!bytes) ++result.Lost;
    result.Bytes += bytes.value_or("?");
    text.remove_prefix(character.size());
  }
  return result;
}

} // namespace kx::platform
