#include "program/report/CiGuard.h"

#include "foundation/text/Encoding.h"

#include <algorithm>
#include <array>

namespace kx {

namespace {

constexpr std::string_view Break = "\xE2\x80\x8A"; // U+200A

struct TRange {
  char32_t First;
  char32_t Last;
};

// Behind these a line begins, for .NET, Java, Python or JavaScript.
constexpr std::array<TRange, 4> LineEnds{{{0x0A, 0x0D}, {0x1C, 0x1E}, {0x85, 0x85}, {0x2028, 0x2029}}};

// The blanks of Unicode that are no line ends (White_Space), and the pattern of Braille without dots.
constexpr std::array<TRange, 9> Blanks{{{0x09, 0x09},
                                        {0x1F, 0x20},
                                        {0xA0, 0xA0},
                                        {0x1680, 0x1680},
                                        {0x2000, 0x200A},
                                        {0x202F, 0x202F},
                                        {0x205F, 0x205F},
                                        {0x2800, 0x2800},
                                        {0x3000, 0x3000}}};

// What has no width (Default_Ignorable_Code_Point): comparisons that know Unicode skip it anywhere.
constexpr std::array<TRange, 17> Invisible{{{0xAD, 0xAD},
                                            {0x034F, 0x034F},
                                            {0x061C, 0x061C},
                                            {0x115F, 0x1160},
                                            {0x17B4, 0x17B5},
                                            {0x180B, 0x180F},
                                            {0x200B, 0x200F},
                                            {0x202A, 0x202E},
                                            {0x2060, 0x206F},
                                            {0x3164, 0x3164},
                                            {0xFE00, 0xFE0F},
                                            {0xFEFF, 0xFEFF},
                                            {0xFFA0, 0xFFA0},
                                            {0xFFF0, 0xFFFB},
                                            {0x1BCA0, 0x1BCA3},
                                            {0x1D173, 0x1D17A},
                                            {0xE0000, 0xE0FFF}}};

// What stands behind "##" in a command; letter case is ignored.
constexpr std::array<std::string_view, 3> Commands{"[", "vso[", "teamcity["};

template <std::size_t Count>
bool IsIn(char32_t character, const std::array<TRange, Count>& ranges) {
  return std::ranges::any_of(ranges, [character](const TRange& range) {
    return character >= range.First && character <= range.Last;
  });
}

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

// Also when the text ends within it: the next one may bring the rest.
bool BeginsCommand(std::string_view text) {
  return std::ranges::any_of(Commands, [text](std::string_view command) {
    const std::size_t size = std::min(text.size(), command.size());
    return std::equal(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(size), command.begin(),
                      [](char a, char b) { return Lower(a) == b; });
  });
}

// The length of a sequence that only changes the colour; 0 for anything else.
std::size_t ColourSize(std::string_view text) {
  if (!text.starts_with("\x1b[")) return 0;
  const std::size_t end = text.find_first_not_of("0123456789;", 2);
  return end != std::string_view::npos && text[end] == 'm' ? end + 1 : 0;
}

struct TCharacter {
  char32_t Value;
  std::size_t Size; // in bytes
};

// Bytes that are no UTF-8 are characters of their own that nothing looks for.
TCharacter FirstOf(std::string_view utf8) {
  const auto lead = static_cast<unsigned char>(utf8.front());
  if (lead < 0x80) return {lead, 1};
  const std::size_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || utf8.size() < size) return {0xFFFD, 1};
  auto value = static_cast<char32_t>(lead & (0x7FU >> size));
  for (std::size_t i = 1; i < size; ++i) {
    const auto byte = static_cast<unsigned char>(utf8[i]);
    if ((byte & 0xC0U) != 0x80U) return {0xFFFD, 1};
    value = (value << 6U) | (byte & 0x3FU);
  }
  return {value, size};
}

// A control character as its picture.
std::string PictureOf(char32_t control) {
  return text::ToUtf8(
      std::u16string(1, control < 0x20 ? static_cast<char16_t>(0x2400 + control) : u'\u2421'));
}

bool IsControl(char32_t character) {
  return (character < 0x20 && character != U'\t') || (character >= 0x7F && character < 0xA0);
}

} // namespace

void TCiGuard::StartLine() {
  colons_ = EColons::Possible;
  hashes_ = 0;
}

// Decides on what stands before `character`, whose own bytes and those behind it are `rest`.
void TCiGuard::Take(char32_t character, std::string_view rest, std::string& out) {
  if (character == U':' && colons_ == EColons::One) out += Break;
  if (hashes_ >= 2 && BeginsCommand(rest)) out += Break;
  if (IsIn(character, Invisible)) return;
  hashes_ = character == U'#' ? hashes_ + 1 : 0;
  if (colons_ == EColons::Possible && IsIn(character, Blanks)) return;
  const bool isFirstColon = character == U':' && colons_ == EColons::Possible;
  colons_ = isFirstColon ? EColons::One : EColons::Over;
}

std::string TCiGuard::Pass(std::string_view utf8) {
  std::string out;
  out.reserve(utf8.size());
  while (!utf8.empty()) {
    if (const std::size_t colour = ColourSize(utf8); colour > 0) {
      out += utf8.substr(0, colour);
      utf8.remove_prefix(colour);
      isEmptyLine_ = false;
      continue;
    }
    const auto [character, size] = FirstOf(utf8);
    const bool isCrLf = utf8.starts_with("\r\n");
    isEmptyLine_ = character == U'\n' || character == U'\r';
    if (IsIn(character, LineEnds)) {
      StartLine();
    } else {
      Take(character, utf8, out);
    }
    if (isEmptyLine_) {
      out += isCrLf ? "" : "\n";
    } else if (IsControl(character)) {
      out += PictureOf(character);
    } else {
      out += utf8.substr(0, size);
    }
    utf8.remove_prefix(size);
  }
  return out;
}

std::u16string HarmlessForCi(std::u16string_view text) {
  return text::FromUtf8(TCiGuard().Pass(text::ToUtf8(text)));
}

} // namespace kx
