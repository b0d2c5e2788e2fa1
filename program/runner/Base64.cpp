#include "program/runner/Base64.h"

#include <cstdint>

namespace kx {

namespace {

constexpr std::u16string_view Digits = u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::uint32_t ByteAt(std::string_view bytes, std::size_t index) {
  return index < bytes.size() ? static_cast<unsigned char>(bytes[index]) : 0;
}

} // namespace

std::u16string ToBase64(std::string_view bytes) {
  std::u16string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::uint32_t group = ByteAt(bytes, i) << 16U | ByteAt(bytes, i + 1) << 8U | ByteAt(bytes, i + 2);
    const std::size_t digits = bytes.size() - i >= 3 ? 4 : bytes.size() - i + 1;
    for (std::size_t digit = 0; digit < 4; ++digit)
      text += digit < digits ? Digits[group >> (18U - 6U * digit) & 63U] : u'=';
  }
  return text;
}

std::optional<std::string> FromBase64(std::u16string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  const std::size_t padding = text.ends_with(u"==") ? 2 : text.ends_with(u'=') ? 1 : 0;
  std::string bytes;
  std::uint32_t group = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::size_t digit = i < text.size() - padding ? Digits.find(text[i]) : 0;
    if (digit == std::u16string_view::npos) return std::nullopt;
    group = group << 6U | static_cast<std::uint32_t>(digit);
    if (i % 4 != 3) continue;
    for (unsigned shift = 24; shift > 0; shift -= 8)
      bytes += static_cast<char>(group >> (shift - 8U) & 255U);
    group = 0;
  }
  bytes.resize(bytes.size() - padding);
  // Digits before the padding may hold bits that stand for nothing.
  return ToBase64(bytes) == text ? std::optional(std::move(bytes)) : std::nullopt;
}

} // namespace kx
