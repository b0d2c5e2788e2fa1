#include "program/runner/Spellings.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace kx {

namespace {

// Reads a text from its start and writes what it means.
class TDecoder {
public:
  explicit TDecoder(std::u16string_view text) : text_(text) {
    decoded_.Text.reserve(text.size());
    decoded_.Ends.reserve(text.size());
  }

  std::u16string_view Rest() const { return text_.substr(at_); }
  // The next `size` characters mean this.
  void Take(std::size_t size, std::u16string_view meaning) {
    at_ += size;
    decoded_.Text += meaning;
    decoded_.Ends.insert(decoded_.Ends.end(), meaning.size(), at_);
  }
  void TakeAsItIs() {
    decoded_.Text.push_back(text_[at_]);
    decoded_.Ends.push_back(++at_);
  }
  TDecodedText Result() && { return std::move(decoded_); }

private:
  std::u16string_view text_;
  std::size_t at_ = 0;
  TDecodedText decoded_;
};

std::optional<char32_t> Number(std::u16string_view digits, unsigned base) {
  char32_t value = 0;
  for (const char16_t c : digits) {
    const char16_t letter = c | 0x20;
    unsigned digit = base;
    if (text::IsDigit(c)) digit = static_cast<unsigned>(c - u'0');
    if (letter >= u'a' && letter <= u'f') digit = static_cast<unsigned>(letter - u'a') + 10;
    if (digit >= base || value > 0x10FFFF) return std::nullopt;
    value = value * base + digit;
  }
  return digits.empty() || value > 0x10FFFF ? std::nullopt : std::optional(value);
}

std::u16string Character(char32_t value) {
  if (value < 0x10000) return {static_cast<char16_t>(value)};
  value -= 0x10000;
  return {static_cast<char16_t>(0xD800 + (value >> 10U)), static_cast<char16_t>(0xDC00 + (value & 0x3FFU))};
}

// "%C3" is a byte.
std::optional<char> EscapedByte(std::u16string_view text) {
  if (text.size() < 3 || text[0] != u'%') return std::nullopt;
  const auto value = Number(text.substr(1, 2), 16);
  return value ? std::optional(static_cast<char>(*value)) : std::nullopt;
}

// One character of UTF-8 by its escaped bytes; bytes that are none mean themselves.
void TakeEscapedBytes(TDecoder& decoder) {
  std::string bytes;
  while (bytes.size() < 4) {
    const auto byte = EscapedByte(decoder.Rest().substr(std::min(decoder.Rest().size(), bytes.size() * 3)));
    if (!byte) break;
    bytes += *byte;
    if (text::IsValidUtf8(bytes)) return decoder.Take(bytes.size() * 3, text::FromUtf8(bytes));
  }
  decoder.Take(3, Character(static_cast<unsigned char>(bytes.front())));
}

TDecodedText DecodeAddress(std::u16string_view text) {
  TDecoder decoder(text);
  while (!decoder.Rest().empty()) {
    if (EscapedByte(decoder.Rest()))
      TakeEscapedBytes(decoder);
    else
      decoder.TakeAsItIs();
  }
  return std::move(decoder).Result();
}

TDecodedText DecodeForm(std::u16string_view text) {
  std::u16string blanks(text);
  std::ranges::replace(blanks, u'+', u' ');
  return DecodeAddress(blanks);
}

std::optional<std::u16string> EntityValue(std::u16string_view name) {
  constexpr auto entities = std::to_array<std::pair<std::u16string_view, char16_t>>(
      {{u"lt", u'<'}, {u"gt", u'>'}, {u"amp", u'&'}, {u"quot", u'"'}, {u"apos", u'\''}});
  if (name.starts_with(u'#')) {
    const bool isHex = name.size() > 1 && (name[1] | 0x20) == u'x';
    const auto value = Number(name.substr(isHex ? 2 : 1), isHex ? 16 : 10);
    return value ? std::optional(Character(*value)) : std::nullopt;
  }
  const auto* const found = std::ranges::find(entities, name, [](const auto& row) { return row.first; });
  return found == entities.end() ? std::nullopt : std::optional(std::u16string(1, found->second));
}

TDecodedText DecodeXml(std::u16string_view text) {
  constexpr std::size_t longest = 12; // "&#x0010FFFF;"
  TDecoder decoder(text);
  while (!decoder.Rest().empty()) {
    const std::u16string_view entity = decoder.Rest().substr(0, longest);
    const std::size_t end = entity.front() == u'&' ? entity.find(u';') : entity.npos;
    const auto value = end == entity.npos ? std::nullopt : EntityValue(entity.substr(1, end - 1));
    if (value)
      decoder.Take(end + 1, *value);
    else
      decoder.TakeAsItIs();
  }
  return std::move(decoder).Result();
}

TDecodedText DecodeJson(std::u16string_view text) {
  constexpr std::u16string_view letters = u"bfnrt\"\\/'";
  constexpr std::u16string_view meanings = u"\b\f\n\r\t\"\\/'";
  TDecoder decoder(text);
  while (!decoder.Rest().empty()) {
    const std::u16string_view rest = decoder.Rest();
    if (rest.size() < 2 || rest[0] != u'\\') {
      decoder.TakeAsItIs();
      continue;
    }
    const std::size_t size = rest[1] == u'u' ? 4 : rest[1] == u'x' ? 2 : 0;
    const auto value = size > 0 && rest.size() >= size + 2 ? Number(rest.substr(2, size), 16) : std::nullopt;
    const std::size_t letter = letters.find(rest[1]);
    if (value)
      decoder.Take(size + 2, Character(*value));
    else if (letter != letters.npos)
      decoder.Take(2, meanings.substr(letter, 1));
    else
      decoder.TakeAsItIs();
  }
  return std::move(decoder).Result();
}

// Two backslashes before a quote are one, "\"" and a doubled quote are a quote.
TDecodedText DecodeWindowsArgument(std::u16string_view text) {
  TDecoder decoder(text);
  while (!decoder.Rest().empty()) {
    const std::u16string_view rest = decoder.Rest();
    const std::size_t backslashes = std::min(rest.find_first_not_of(u'\\'), rest.size());
    const bool isQuoted = backslashes < rest.size() && rest[backslashes] == u'"';
    if (rest.starts_with(u"\"\"")) {
      decoder.Take(2, u"\"");
    } else if (!isQuoted || backslashes == 0) {
      const std::size_t size = std::max<std::size_t>(backslashes, 1);
      for (std::size_t i = 0; i < size; ++i)
        decoder.TakeAsItIs();
    } else {
      for (std::size_t i = 0; i < backslashes / 2; ++i)
        decoder.Take(2, u"\\");
      decoder.Take(1 + backslashes % 2, u"\"");
    }
  }
  return std::move(decoder).Result();
}

bool IsPunctuation(char16_t c) {
  const char16_t letter = c | 0x20;
  return c >= u' ' && c < 0x7F && !text::IsDigit(c) && (letter < u'a' || letter > u'z');
}

// "\$", and the quote that "'\''" and "'"'"'" put between apostrophes.
TDecodedText DecodeShellArgument(std::u16string_view text) {
  TDecoder decoder(text);
  while (!decoder.Rest().empty()) {
    const std::u16string_view rest = decoder.Rest();
    if (rest.starts_with(u"'\\''"))
      decoder.Take(4, u"'");
    else if (rest.starts_with(u"'\"'\"'"))
      decoder.Take(5, u"'");
    else if (rest.size() > 1 && rest[0] == u'\\' && IsPunctuation(rest[1]))
      decoder.Take(2, rest.substr(1, 1));
    else
      decoder.TakeAsItIs();
  }
  return std::move(decoder).Result();
}

// "^&", and "`$" of PowerShell.
TDecodedText DecodeCmdArgument(std::u16string_view text) {
  TDecoder decoder(text);
  while (!decoder.Rest().empty()) {
    const std::u16string_view rest = decoder.Rest();
    if (rest.size() > 1 && (rest[0] == u'^' || rest[0] == u'`') && IsPunctuation(rest[1]))
      decoder.Take(2, rest.substr(1, 1));
    else
      decoder.TakeAsItIs();
  }
  return std::move(decoder).Result();
}

constexpr TSpelling Address{u'%', DecodeAddress};
constexpr TSpelling Form{u'+', DecodeForm};
constexpr TSpelling Xml{u'&', DecodeXml};
constexpr TSpelling Json{u'\\', DecodeJson};
constexpr TSpelling WindowsArgument{u'"', DecodeWindowsArgument};
constexpr TSpelling ShellArgument{u'\\', DecodeShellArgument};
constexpr TSpelling ShellQuote{u'\'', DecodeShellArgument};
constexpr TSpelling CmdArgument{u'^', DecodeCmdArgument};
constexpr TSpelling PowerShellArgument{u'`', DecodeCmdArgument};

} // namespace

std::span<const TSpellings> KnownSpellings() {
  static const auto all = std::to_array<TSpellings>({{&Address},
                                                     {&Form},
                                                     {&Xml},
                                                     {&Json},
                                                     {&WindowsArgument},
                                                     {&ShellArgument},
                                                     {&ShellQuote},
                                                     {&CmdArgument},
                                                     {&PowerShellArgument},
                                                     {&Xml, &Json},
                                                     {&Json, &Xml},
                                                     {&Xml, &WindowsArgument},
                                                     {&Json, &WindowsArgument},
                                                     {&Json, &ShellArgument},
                                                     {&Xml, &Address}});
  return all;
}

TDecodedText Decode(const TSpellings& spellings, std::u16string_view text) {
  TDecodedText decoded;
  for (const TSpelling* spelling : spellings) {
    const bool isFirst = spelling == spellings.front();
    const std::u16string_view source = isFirst ? text : std::u16string_view(decoded.Text);
    if (source.find(spelling->Trigger) == source.npos) return {};
    TDecodedText next = spelling->Decode(source);
    if (!isFirst)
      for (std::size_t& end : next.Ends)
        end = decoded.Ends[end - 1];
    decoded = std::move(next);
  }
  return decoded;
}

} // namespace kx
