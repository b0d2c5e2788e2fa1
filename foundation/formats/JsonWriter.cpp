#include "foundation/formats/JsonWriter.h"

#include "foundation/text/Encoding.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace kx {

namespace {

constexpr std::size_t LongestEscape = 6; // \u001f
constexpr char Hexadecimal = 'u';
constexpr std::size_t AsciiSize = 128;

// What stands behind the backslash; 0 for characters that stand for themselves.
constexpr std::array<char, AsciiSize> MakeEscapes() {
  std::array<char, AsciiSize> escapes{};
  std::fill_n(escapes.begin(), ' ', Hexadecimal);
  for (const auto& [character, letter] :
       {std::pair{'"', '"'}, {'\\', '\\'}, {'\b', 'b'}, {'\f', 'f'}, {'\n', 'n'}, {'\r', 'r'}, {'\t', 't'}})
    escapes[static_cast<unsigned char>(character)] = letter;
  return escapes;
}

constexpr std::array<char, AsciiSize> Escapes = MakeEscapes();

char* PutUnit(char* out, char16_t unit) {
  constexpr std::string_view digits = "0123456789abcdef";
  const char letter = Escapes[unit];
  if (letter == 0) {
    *out++ = static_cast<char>(unit);
    return out;
  }
  *out++ = '\\';
  *out++ = letter;
  if (letter != Hexadecimal) return out;
  *out++ = '0';
  *out++ = '0';
  *out++ = digits[unit >> 4U];
  *out++ = digits[unit & 0xFU];
  return out;
}

constexpr std::size_t RunBlock = 8;

// Whether so many characters stand for themselves. The length is fixed, so that the compiler makes vector
// instructions of it.
bool IsPlainBlock(const char16_t* units) {
  char16_t other = 0;
  for (std::size_t i = 0; i < RunBlock; ++i)
    other = static_cast<char16_t>(other | (units[i] < u' ') | (units[i] >= AsciiSize) | (units[i] == u'"') |
                                  (units[i] == u'\\'));
  return other == 0;
}

void CopyBlock(const char16_t* units, char* out) {
  std::array<char16_t, RunBlock> wide; // copied, so that the compiler need not fear that the two overlap
  std::memcpy(wide.data(), units, sizeof wide);
  std::array<char, RunBlock> narrow;
  for (std::size_t i = 0; i < RunBlock; ++i)
    narrow[i] = static_cast<char>(wide[i]);
  std::memcpy(out, narrow.data(), sizeof narrow);
}

} // namespace

TJsonWriter::TJsonWriter(TPut put)
    : put_(std::move(put)), block_(std::make_unique_for_overwrite<char[]>(BlockSize)) {}

void TJsonWriter::Value(std::u16string_view text) {
  Separate();
  PutByte('"');
  while (!text.empty()) {
    text.remove_prefix(PutAscii(text));
    const auto other =
        std::ranges::find_if(text, [](char16_t unit) { return unit < AsciiSize; }) - text.begin();
    if (other > 0) PutBytes(text::ToUtf8(text.substr(0, static_cast<std::size_t>(other))));
    text.remove_prefix(static_cast<std::size_t>(other));
  }
  PutByte('"');
  needsComma_ = true;
}

void TJsonWriter::Value(std::string_view utf8) {
  Value(text::FromUtf8(utf8));
}

void TJsonWriter::Key(std::string_view name) {
  Separate();
  char* out = Room(name.size() + 3);
  *out++ = '"';
  out = std::ranges::copy(name, out).out;
  *out++ = '"';
  *out++ = ':';
  used_ = static_cast<std::size_t>(out - block_.get());
  needsComma_ = false;
}

void TJsonWriter::EndLine() {
  PutByte('\n');
  needsComma_ = false;
}

void TJsonWriter::Flush() {
  if (used_ > 0) put_({block_.get(), std::exchange(used_, 0)});
}

void TJsonWriter::Word(std::string_view ascii) {
  Separate();
  PutBytes(ascii);
  needsComma_ = true;
}

void TJsonWriter::PutBytes(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::size_t size = std::min(bytes.size(), BlockSize);
    std::memcpy(Room(size), bytes.data(), size);
    used_ += size;
    bytes.remove_prefix(size);
  }
}

std::size_t TJsonWriter::PutAscii(std::u16string_view text) {
  const std::size_t most = std::min(text.size(), BlockSize / LongestEscape);
  char* out = Room(most * LongestEscape);
  std::size_t done = 0;
  while (done < most && text[done] < AsciiSize) {
    if (most - done >= RunBlock && IsPlainBlock(text.data() + done)) {
      CopyBlock(text.data() + done, out);
      out += RunBlock;
      done += RunBlock;
      continue;
    }
    const std::size_t end = std::min(done + RunBlock, most);
    for (; done < end && text[done] < AsciiSize; ++done)
      out = PutUnit(out, text[done]);
  }
  used_ = static_cast<std::size_t>(out - block_.get());
  return done;
}

} // namespace kx
