#include "package/assemblyinfo/AssemblyInfoText.h"
#include "foundation/platform/TextFiles.h"

namespace kx {

namespace {

constexpr bool IsHigh(char16_t c) {
  return c >= 0xD800 && c < 0xDC00;
}
constexpr bool IsLow(char16_t c) {
  return c >= 0xDC00 && c < 0xE000;
}

// A byte that belongs to no character is kept as a lone surrogate, which no well-formed text holds.
constexpr char16_t StrayByte(char byte) {
  return static_cast<char16_t>(0xDC00U + static_cast<unsigned char>(byte));
}

bool IsWellFormed(std::u16string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (IsLow(text[i])) return false;
    if (IsHigh(text[i]) && (++i == text.size() || !IsLow(text[i]))) return false;
  }
  return true;
}

} // namespace

TSourceText::TSourceText(std::string_view bytes) : bytes_(bytes) {
  const text::ByteOrderMark mark = text::DetectByteOrderMark(bytes);
  markLength_ = text::LengthOf(mark);
  const std::string_view body = bytes.substr(markLength_);
  const std::string_view units = body.substr(0, body.size() / 2 * 2); // an odd last byte is in no unit
  if (mark == text::ByteOrderMark::Utf16LE) {
    encoding_ = TEncoding::Utf16LE;
    text_ = text::FromUtf16LE(units);
  } else if (mark == text::ByteOrderMark::Utf16BE) {
    encoding_ = TEncoding::Utf16BE;
    text_ = text::FromUtf16BE(units);
  } else if (mark == text::ByteOrderMark::Utf8 || text::IsValidUtf8(body)) {
    DecodeUtf8(body);
  } else {
    encoding_ = TEncoding::Ansi;
    text_ = platform::FromAnsi(body);
  }
}

void TSourceText::DecodeUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::size_t valid = text::ValidUtf8Prefix(bytes);
    text_ += text::FromUtf8(bytes.substr(0, valid));
    bytes.remove_prefix(valid);
    if (bytes.empty()) return;
    text_ += StrayByte(bytes.front());
    bytes.remove_prefix(1);
  }
}

bool TSourceText::IsText() const {
  return text_.find(u'\0') == std::u16string::npos;
}

std::u16string_view TSourceText::EncodingName() const {
  switch (encoding_) {
  case TEncoding::Utf8:
    return u"UTF-8";
  case TEncoding::Ansi:
    return u"the ANSI code page";
  case TEncoding::Utf16LE:
  case TEncoding::Utf16BE:
    break;
  }
  return u"UTF-16";
}

// The size of a range of the text in the file.
std::size_t TSourceText::BytesOf(std::size_t begin, std::size_t end) const {
  const std::u16string_view part = std::u16string_view(text_).substr(begin, end - begin);
  if (encoding_ == TEncoding::Ansi) {
    if (text_.size() == bytes_.size() - markLength_) return part.size();
    const std::optional<std::string> bytes = platform::ToAnsi(part);
    return bytes ? bytes->size() : part.size();
  }
  if (encoding_ != TEncoding::Utf8) return part.size() * 2;
  std::size_t size = 0;
  for (std::size_t i = 0; i < part.size(); ++i) {
    const char16_t c = part[i];
    if (IsHigh(c)) {
      size += 4;
      ++i;
    } else {
      size += IsLow(c) || c < 0x80 ? 1 : c < 0x800 ? 2 : 3;
    }
  }
  return size;
}

std::optional<std::string> TSourceText::Encode(std::u16string_view text) const {
  if (!IsWellFormed(text)) return std::nullopt;
  switch (encoding_) {
  case TEncoding::Utf8:
    return text::ToUtf8(text);
  case TEncoding::Ansi:
    return platform::ToAnsi(text);
  case TEncoding::Utf16LE:
    return text::ToUtf16LE(text);
  case TEncoding::Utf16BE:
    break;
  }
  std::string bytes = text::ToUtf16LE(text);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
    std::swap(bytes[i], bytes[i + 1]);
  return bytes;
}

std::optional<std::string> TSourceText::Apply(const std::vector<TSourceEdit>& edits) const {
  std::string out(bytes_.substr(0, markLength_));
  std::size_t at = 0;             // in the text
  std::size_t byte = markLength_; // the same place in the file
  for (const TSourceEdit& edit : edits) {
    const std::optional<std::string> bytes = Encode(edit.Text);
    if (!bytes) return std::nullopt;
    const std::size_t kept = BytesOf(at, edit.Range.Begin);
    out.append(bytes_.substr(byte, kept)).append(*bytes);
    byte += kept + BytesOf(edit.Range.Begin, edit.Range.End);
    at = edit.Range.End;
  }
  return out.append(bytes_.substr(byte));
}

} // namespace kx
