#include "foundation/platform/TextFiles.h"

#include "foundation/text/Encoding.h"

#include <algorithm>
#include <array>
#include <bit>
#include <iconv.h>
#include <string>

namespace kx::platform {

namespace {

struct CodePage {
  unsigned Number;
  const char* Name;
  bool SingleByte;
};

// Every one of these keeps ASCII as it is.
constexpr std::array<CodePage, 19> kCodePages{{
    {437, "CP437", true},   {852, "CP852", true},   {855, "CP855", true},        {857, "CP857", true},
    {866, "CP866", true},   {874, "CP874", true},   {932, "CP932", false},       {936, "CP936", false},
    {949, "CP949", false},  {950, "CP950", false},  {1250, "CP1250", true},      {1251, "CP1251", true},
    {1253, "CP1253", true}, {1254, "CP1254", true}, {1255, "CP1255", true},      {1256, "CP1256", true},
    {1257, "CP1257", true}, {1258, "CP1258", true}, {28591, "ISO-8859-1", true},
}};

class Converter {
public:
  explicit Converter(const char* page)
      : handle_(iconv_open(std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE", page)) {}
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;
  ~Converter() {
    if (IsOpen()) iconv_close(handle_);
  }

  bool IsOpen() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

  // Nothing when the bytes are malformed or end in the middle of a character.
  std::optional<std::u16string> Convert(std::string_view bytes) {
    iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    std::u16string text(bytes.size() * 2 + 2, u'\0'); // a byte gives two units at most
    char* in = const_cast<char*>(bytes.data());
    std::size_t inLeft = bytes.size();
    char* out = reinterpret_cast<char*>(text.data());
    std::size_t outLeft = text.size() * sizeof(char16_t);
    constexpr auto failed = static_cast<std::size_t>(-1);
    if (iconv(handle_, &in, &inLeft, &out, &outLeft) == failed) return std::nullopt;
    if (iconv(handle_, nullptr, nullptr, &out, &outLeft) == failed) return std::nullopt;
    text.resize(text.size() - outLeft / sizeof(char16_t));
    return text;
  }

private:
  iconv_t handle_;
};

// Byte by byte: some of these pages are composed by the system's converter, and what they leave undefined
// from 0x80 to 0x9F Windows reads as control characters.
std::optional<std::u16string> FromSingleByteTable(std::string_view bytes, Converter& converter) {
  std::array<std::optional<char16_t>, 256> table;
  std::u16string text;
  text.reserve(bytes.size());
  for (const char byte : bytes) {
    const auto number = static_cast<std::uint8_t>(byte);
    std::optional<char16_t>& unit = table[number];
    if (!unit) {
      const auto decoded = converter.Convert({&byte, 1});
      if (decoded && decoded->size() == 1) unit = decoded->front();
      if (!unit && number >= 0x80 && number <= 0x9F) unit = number;
      if (!unit) return std::nullopt;
    }
    text.push_back(*unit);
  }
  return text;
}

} // namespace

std::u16string FromAnsi(std::string_view bytes) {
  return text::FromSingleByte(bytes, text::SingleBytePage::Windows1252);
}

std::optional<std::string> ToAnsi(std::u16string_view text) {
  return text::ToSingleByte(text, text::SingleBytePage::Windows1252);
}

std::optional<std::u16string> FromCodePage(std::string_view bytes, unsigned page) {
  if (page == 1252) return FromAnsi(bytes);
  if (page == 850) return text::FromSingleByte(bytes, text::SingleBytePage::Dos850);
  if (page == 65001) return text::IsValidUtf8(bytes) ? std::optional(text::FromUtf8(bytes)) : std::nullopt;
  const auto known = std::ranges::find(kCodePages, page, &CodePage::Number);
  if (known == kCodePages.end()) return std::nullopt;
  // Settled here, since converters disagree on the backslash and the tilde of page 932.
  if (std::ranges::none_of(bytes, [](char byte) { return (byte & 0x80) != 0; }))
    return text::FromAscii(bytes);
  Converter converter(known->Name);
  if (!converter.IsOpen()) return std::nullopt;
  return known->SingleByte ? FromSingleByteTable(bytes, converter) : converter.Convert(bytes);
}

} // namespace kx::platform
