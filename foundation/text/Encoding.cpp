#include "foundation/text/Encoding.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace kx::text {

namespace {

constexpr char16_t kReplacement = 0xFFFD;

// The block is copied out and back, so that the compiler need not fear that the two overlap, and has a fixed
// length: it makes vector instructions of the loop then.
template <std::size_t Size, typename Source, typename Unit>
void CopyAsciiBlock(const Source* source, Unit* target) {
  std::array<Source, Size> from;
  std::array<Unit, Size> to;
  std::memcpy(from.data(), source, sizeof from);
  for (std::size_t i = 0; i < Size; ++i)
    to[i] = static_cast<Unit>(from[i]);
  std::memcpy(target, to.data(), sizeof to);
}

// Collects units in a small buffer and appends them block by block: a large text is written once, not zeroed
// first.
template <typename Unit>
class Appender {
public:
  static constexpr std::size_t kBlock = 32;

  explicit Appender(std::size_t expected) { text_.reserve(expected); }

  void Put(Unit unit) {
    if (count_ == buffer_.size()) Flush();
    buffer_[count_++] = unit;
  }

  // Takes the ASCII units that `source` begins with; says how many.
  template <typename Source>
  std::size_t PutAscii(const Source* source, std::size_t size) {
    std::size_t done = 0;
    while (size - done >= kBlock && IsAsciiBlock(source + done)) {
      PutBlock(source + done);
      done += kBlock;
    }
    while (done < size && static_cast<std::make_unsigned_t<Source>>(source[done]) < 0x80) {
      Put(static_cast<Unit>(source[done++]));
    }
    return done;
  }

  std::basic_string<Unit> Take() {
    Flush();
    return std::move(text_);
  }

private:
  template <typename Source>
  static bool IsAsciiBlock(const Source* source) {
    std::make_unsigned_t<Source> all = 0;
    for (std::size_t i = 0; i < kBlock; ++i) {
      all = static_cast<std::make_unsigned_t<Source>>(all |
                                                      static_cast<std::make_unsigned_t<Source>>(source[i]));
    }
    return all < 0x80;
  }

  template <typename Source>
  void PutBlock(const Source* source) {
    if (buffer_.size() - count_ < kBlock) Flush();
    CopyAsciiBlock<kBlock>(source, buffer_.data() + count_);
    count_ += kBlock;
  }

  void Flush() {
    text_.append(buffer_.data(), count_);
    count_ = 0;
  }

  std::basic_string<Unit> text_;
  std::size_t count_ = 0;
  std::array<Unit, 2048> buffer_; // written before it is read
};

constexpr std::uint8_t ByteAt(std::string_view bytes, std::size_t at) {
  return static_cast<std::uint8_t>(bytes[at]);
}

// The well-formed UTF-8 sequence that begins with a byte: its length, and the range of its second byte, which
// rules out overlong forms, surrogates and what lies beyond U+10FFFF.
struct Utf8Lead {
  std::uint8_t Length = 0;
  std::uint8_t SecondFirst = 0x80;
  std::uint8_t SecondLast = 0xBF;
};

constexpr Utf8Lead LeadOf(std::uint8_t byte) {
  if (byte < 0x80) return {1};
  if (byte < 0xC2 || byte > 0xF4) return {0};
  if (byte < 0xE0) return {2};
  if (byte == 0xE0) return {3, 0xA0};
  if (byte == 0xED) return {3, 0x80, 0x9F};
  if (byte < 0xF0) return {3};
  if (byte == 0xF0) return {4, 0x90};
  return {4, 0x80, static_cast<std::uint8_t>(byte == 0xF4 ? 0x8F : 0xBF)};
}

struct Utf8Sequence {
  char32_t Value = 0;
  std::size_t Length = 0; // of an ill-formed one: the bytes that one U+FFFD stands for
  bool WellFormed = false;
};

Utf8Sequence ReadSequence(std::string_view bytes, std::size_t at) {
  const std::uint8_t first = ByteAt(bytes, at);
  const Utf8Lead lead = LeadOf(first);
  if (lead.Length < 2) return {first, 1, lead.Length == 1};
  char32_t value = first & (0x7FU >> lead.Length);
  for (std::size_t i = 1; i < lead.Length; ++i) {
    if (at + i == bytes.size()) return {0, i, false};
    const std::uint8_t next = ByteAt(bytes, at + i);
    const bool fits = i == 1 ? next >= lead.SecondFirst && next <= lead.SecondLast : (next & 0xC0U) == 0x80U;
    if (!fits) return {0, i, false};
    value = (value << 6) | (next & 0x3FU);
  }
  return {value, lead.Length, true};
}

void PutCodePoint(Appender<char16_t>& out, char32_t value) {
  if (value < 0x10000) {
    out.Put(static_cast<char16_t>(value));
    return;
  }
  out.Put(static_cast<char16_t>(0xD7C0 + (value >> 10)));
  out.Put(static_cast<char16_t>(0xDC00 + (value & 0x3FF)));
}

void PutUtf8(Appender<char>& out, char32_t value) {
  const auto put = [&](char32_t byte) { out.Put(static_cast<char>(static_cast<std::uint8_t>(byte))); };
  const auto putRest = [&](unsigned shift) { put(0x80 | ((value >> shift) & 0x3F)); };
  if (value < 0x80) return put(value);
  if (value < 0x800) {
    put(0xC0 | (value >> 6));
    return putRest(0);
  }
  if (value < 0x10000) {
    put(0xE0 | (value >> 12));
    putRest(6);
    return putRest(0);
  }
  put(0xF0 | (value >> 18));
  putRest(12);
  putRest(6);
  putRest(0);
}

constexpr bool IsHighSurrogate(char16_t c) {
  return (c & 0xFC00) == 0xD800;
}
constexpr bool IsLowSurrogate(char16_t c) {
  return (c & 0xFC00) == 0xDC00;
}

bool IsPair(std::u16string_view text, std::size_t at) {
  return IsHighSurrogate(text[at]) && at + 1 < text.size() && IsLowSurrogate(text[at + 1]);
}

std::u16string WithoutLoneSurrogates(std::u16string text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if ((text[i] & 0xF800) != 0xD800) continue;
    if (IsPair(text, i)) {
      ++i;
    } else {
      text[i] = kReplacement;
    }
  }
  return text;
}

std::u16string FromUtf16(std::string_view bytes, std::endian order) {
  std::u16string text((bytes.size() + 1) / 2, kReplacement);
  std::memcpy(text.data(), bytes.data(), bytes.size() / 2 * 2);
  if (order != std::endian::native) {
    for (std::size_t i = 0; i < bytes.size() / 2; ++i) {
      text[i] = static_cast<char16_t>((text[i] << 8) | (text[i] >> 8));
    }
  }
  return WithoutLoneSurrogates(std::move(text));
}

// The characters of the bytes from 0x80.
using HighHalf = std::array<char16_t, 128>;

constexpr HighHalf MakeWindows1252() {
  constexpr std::array<char16_t, 32> differing{
      0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
      0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
      0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
  HighHalf page{};
  for (std::size_t i = 0; i < page.size(); ++i)
    page[i] = static_cast<char16_t>(0x80 + i);
  std::copy(differing.begin(), differing.end(), page.begin());
  return page;
}

constexpr HighHalf kWindows1252 = MakeWindows1252();
constexpr HighHalf kDos850{
    0x00C7, 0x00FC, 0x00E9, 0x00E2, 0x00E4, 0x00E0, 0x00E5, 0x00E7, 0x00EA, 0x00EB, 0x00E8, 0x00EF, 0x00EE,
    0x00EC, 0x00C4, 0x00C5, 0x00C9, 0x00E6, 0x00C6, 0x00F4, 0x00F6, 0x00F2, 0x00FB, 0x00F9, 0x00FF, 0x00D6,
    0x00DC, 0x00F8, 0x00A3, 0x00D8, 0x00D7, 0x0192, 0x00E1, 0x00ED, 0x00F3, 0x00FA, 0x00F1, 0x00D1, 0x00AA,
    0x00BA, 0x00BF, 0x00AE, 0x00AC, 0x00BD, 0x00BC, 0x00A1, 0x00AB, 0x00BB, 0x2591, 0x2592, 0x2593, 0x2502,
    0x2524, 0x00C1, 0x00C2, 0x00C0, 0x00A9, 0x2563, 0x2551, 0x2557, 0x255D, 0x00A2, 0x00A5, 0x2510, 0x2514,
    0x2534, 0x252C, 0x251C, 0x2500, 0x253C, 0x00E3, 0x00C3, 0x255A, 0x2554, 0x2569, 0x2566, 0x2560, 0x2550,
    0x256C, 0x00A4, 0x00F0, 0x00D0, 0x00CA, 0x00CB, 0x00C8, 0x0131, 0x00CD, 0x00CE, 0x00CF, 0x2518, 0x250C,
    0x2588, 0x2584, 0x00A6, 0x00CC, 0x2580, 0x00D3, 0x00DF, 0x00D4, 0x00D2, 0x00F5, 0x00D5, 0x00B5, 0x00FE,
    0x00DE, 0x00DA, 0x00DB, 0x00D9, 0x00FD, 0x00DD, 0x00AF, 0x00B4, 0x00AD, 0x00B1, 0x2017, 0x00BE, 0x00B6,
    0x00A7, 0x00F7, 0x00B8, 0x00B0, 0x00A8, 0x00B7, 0x00B9, 0x00B3, 0x00B2, 0x25A0, 0x00A0};

constexpr const HighHalf& HighHalfOf(SingleBytePage page) {
  return page == SingleBytePage::Windows1252 ? kWindows1252 : kDos850;
}

// Letters of French, German and Spanish. Left out are the ligatures and the y with diaeresis: their codes in
// one page are quotation marks, blanks or frequent letters in the other, which are far more common.
constexpr std::u16string_view kSmallLetters = u"àâçéèêëîïôùûüäößáíóúñ";
constexpr std::u16string_view kCapitalLetters = u"ÀÂÇÉÈÊËÎÏÔÙÛÜÄÖÁÍÓÚÑ";

using LetterTable = std::array<bool, 128>;

// A capital letter proves nothing where its byte is a small one, far more frequent, in the other page.
constexpr LetterTable LettersOf(const HighHalf& page, const HighHalf& other) {
  constexpr auto npos = std::u16string_view::npos;
  LetterTable letters{};
  for (std::size_t i = 0; i < letters.size(); ++i) {
    const bool small = kSmallLetters.find(page[i]) != npos;
    const bool capital = kCapitalLetters.find(page[i]) != npos && kSmallLetters.find(other[i]) == npos;
    // The no-break space, which French sets before a colon, must not pass for a letter of the other page.
    letters[i] = (small || capital) && other[i] != 0x00A0;
  }
  return letters;
}

constexpr LetterTable kWindowsLetters = LettersOf(kWindows1252, kDos850);
constexpr LetterTable kDosLetters = LettersOf(kDos850, kWindows1252);

std::size_t AsciiPrefix(std::string_view bytes, std::size_t from) {
  constexpr std::uint64_t highBits = 0x8080808080808080U;
  std::size_t at = from;
  for (std::uint64_t eight = 0; bytes.size() - at >= sizeof eight; at += sizeof eight) {
    std::memcpy(&eight, bytes.data() + at, sizeof eight);
    if ((eight & highBits) != 0) break;
  }
  while (at < bytes.size() && ByteAt(bytes, at) < 0x80)
    ++at;
  return at;
}

// The last block overlaps the one before it.
void Widen(std::string_view ascii, char16_t* target) {
  constexpr std::size_t block = 8;
  const auto widen = [&](std::size_t at) { CopyAsciiBlock<block>(ascii.data() + at, target + at); };
  if (ascii.size() < block) {
    std::ranges::copy(ascii, target);
    return;
  }
  for (std::size_t at = 0; ascii.size() - at > block; at += block)
    widen(at);
  widen(ascii.size() - block);
}

std::u16string FromLongUtf8(std::string_view bytes) {
  Appender<char16_t> out(bytes.size());
  for (std::size_t at = 0; at < bytes.size();) {
    if (ByteAt(bytes, at) < 0x80) {
      at += out.PutAscii(bytes.data() + at, bytes.size() - at);
      continue;
    }
    const Utf8Sequence sequence = ReadSequence(bytes, at);
    PutCodePoint(out, sequence.WellFormed ? sequence.Value : kReplacement);
    at += sequence.Length;
  }
  return out.Take();
}

} // namespace

std::u16string FromUtf8(std::string_view bytes) {
  std::u16string text;
  AssignUtf8(text, bytes);
  return text;
}

// Nearly all texts are names and paths in ASCII, for which the block by block way is too long.
void AssignUtf8(std::u16string& text, std::string_view bytes) {
  constexpr std::size_t shortest = 1024; // of those for which it counts that nothing is zeroed
  if (bytes.size() < shortest && AsciiPrefix(bytes, 0) == bytes.size()) {
    text.resize(bytes.size());
    Widen(bytes, text.data());
  } else {
    text = FromLongUtf8(bytes);
  }
}

std::string ToUtf8(std::u16string_view text) {
  Appender<char> out(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const char16_t unit = text[at];
    if (unit < 0x80) {
      at += out.PutAscii(text.data() + at, text.size() - at);
    } else if (IsPair(text, at)) {
      PutUtf8(out, 0x10000U + ((unit & 0x3FFU) << 10) + (text[at + 1] & 0x3FFU));
      at += 2;
    } else {
      PutUtf8(out, IsHighSurrogate(unit) || IsLowSurrogate(unit) ? kReplacement : unit);
      ++at;
    }
  }
  return out.Take();
}

bool IsValidUtf8(std::string_view bytes) {
  return ValidUtf8Prefix(bytes) == bytes.size();
}

std::size_t ValidUtf8Prefix(std::string_view bytes) {
  for (std::size_t at = AsciiPrefix(bytes, 0); at < bytes.size(); at = AsciiPrefix(bytes, at)) {
    const Utf8Sequence sequence = ReadSequence(bytes, at);
    if (!sequence.WellFormed) return at;
    at += sequence.Length;
  }
  return bytes.size();
}

std::u16string FromAscii(std::string_view ascii) {
  return FromUtf8(ascii);
}

std::u16string FromUtf16LE(std::string_view bytes) {
  return FromUtf16(bytes, std::endian::little);
}

std::u16string FromUtf16BE(std::string_view bytes) {
  return FromUtf16(bytes, std::endian::big);
}

std::string ToUtf16LE(std::u16string_view text) {
  std::string bytes;
  bytes.reserve(text.size() * 2);
  for (const char16_t unit : WithoutLoneSurrogates(std::u16string(text))) {
    bytes.push_back(static_cast<char>(unit & 0xFF));
    bytes.push_back(static_cast<char>(unit >> 8));
  }
  return bytes;
}

ByteOrderMark DetectByteOrderMark(std::string_view bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF")) return ByteOrderMark::Utf8;
  if (bytes.starts_with("\xFF\xFE")) return ByteOrderMark::Utf16LE;
  if (bytes.starts_with("\xFE\xFF")) return ByteOrderMark::Utf16BE;
  return ByteOrderMark::None;
}

std::size_t LengthOf(ByteOrderMark mark) {
  switch (mark) {
  case ByteOrderMark::Utf8:
    return 3;
  case ByteOrderMark::Utf16LE:
  case ByteOrderMark::Utf16BE:
    return 2;
  case ByteOrderMark::None:
    break;
  }
  return 0;
}

std::u16string FromSingleByte(std::string_view bytes, SingleBytePage page) {
  const HighHalf& high = HighHalfOf(page);
  Appender<char16_t> out(bytes.size());
  for (std::size_t at = 0; at < bytes.size();) {
    if (ByteAt(bytes, at) < 0x80) {
      at += out.PutAscii(bytes.data() + at, bytes.size() - at);
    } else {
      out.Put(high[ByteAt(bytes, at++) - 0x80U]);
    }
  }
  return out.Take();
}

std::optional<std::string> ToSingleByte(std::u16string_view text, SingleBytePage page) {
  const HighHalf& high = HighHalfOf(page);
  Appender<char> out(text.size());
  for (std::size_t at = 0; at < text.size();) {
    if (text[at] < 0x80) {
      at += out.PutAscii(text.data() + at, text.size() - at);
      continue;
    }
    const auto found = std::ranges::find(high, text[at++]);
    if (found == high.end()) return std::nullopt;
    out.Put(static_cast<char>(static_cast<std::uint8_t>(0x80 + (found - high.begin()))));
  }
  return out.Take();
}

void SingleByteGuess::Feed(std::string_view bytes) {
  for (std::size_t at = AsciiPrefix(bytes, 0); at < bytes.size(); at = AsciiPrefix(bytes, at + 1)) {
    const std::size_t letter = ByteAt(bytes, at) - 0x80U;
    windows_ += kWindowsLetters[letter] ? 1 : 0;
    dos_ += kDosLetters[letter] ? 1 : 0;
  }
}

SingleBytePage SingleByteGuess::Result() const {
  return dos_ > windows_ ? SingleBytePage::Dos850 : SingleBytePage::Windows1252;
}

std::u16string ToolOutputDecoder::Decode(std::string_view line) {
  if (IsValidUtf8(line)) return FromUtf8(line);
  guess_.Feed(line);
  return FromSingleByte(line, guess_.Result());
}

} // namespace kx::text
