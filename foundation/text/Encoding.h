// Bytes to UTF-16 and back. Ill-formed input never fails: each maximal ill-formed piece of UTF-8 and each
// lone surrogate becomes U+FFFD. The single-byte pages map all 256 bytes and back without loss; bytes that a
// page leaves undefined map to the code point of the same number.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kx::text {

std::u16string FromUtf8(std::string_view bytes);
// The same into a text that is used again and again, so that its memory is, too.
void AssignUtf8(std::u16string& text, std::string_view bytes);
std::string ToUtf8(std::u16string_view text);
bool IsValidUtf8(std::string_view bytes);
// Length of the longest well-formed start of `bytes`; a sequence cut off by the end counts as ill-formed.
std::size_t ValidUtf8Prefix(std::string_view bytes);
// Text that holds only ASCII (identifiers, numbers) as UTF-16.
std::u16string FromAscii(std::string_view ascii);

std::u16string FromUtf16LE(std::string_view bytes); // an odd last byte becomes U+FFFD
std::u16string FromUtf16BE(std::string_view bytes);
std::string ToUtf16LE(std::u16string_view text);

// The byte-order marks that text files carry.
enum class ByteOrderMark { None, Utf8, Utf16LE, Utf16BE };
ByteOrderMark DetectByteOrderMark(std::string_view bytes);
std::size_t LengthOf(ByteOrderMark mark); // in bytes

// The single-byte code pages known without the system's help.
enum class SingleBytePage { Windows1252, Dos850 };
std::u16string FromSingleByte(std::string_view bytes, SingleBytePage page);
// Nothing when a character is not in the page.
std::optional<std::string> ToSingleByte(std::u16string_view text, SingleBytePage page);

// Which of the two pages West European tool output without byte-order mark was written in: counts the bytes
// above 0x7F that are a letter of French, German or Spanish in each; Windows-1252 when both fit equally well.
class SingleByteGuess {
public:
  void Feed(std::string_view bytes);
  SingleBytePage Result() const;

private:
  std::size_t windows_ = 0;
  std::size_t dos_ = 0;
};

// Decodes the output lines of one tool: a line of well-formed UTF-8 is that, any other is in the page that
// all such lines so far point to. One object a stream and run.
class ToolOutputDecoder {
public:
  std::u16string Decode(std::string_view line);

private:
  SingleByteGuess guess_;
};

} // namespace kx::text
