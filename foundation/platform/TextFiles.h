// Text files: a byte-order mark says the encoding, else the text is in the ANSI code page (the system's on
// Windows, Windows-1252 elsewhere, in which every byte has its character).
#pragma once

#include "foundation/platform/Result.h"

#include <optional>
#include <string>
#include <string_view>

namespace kx::platform {

std::u16string DecodeTextFile(std::string_view bytes); // without the byte-order mark
// The same, but without a mark it is UTF-8 when all of it is valid UTF-8: of files that other programs than
// those of Windows write, too.
std::u16string DecodeUtf8OrAnsi(std::string_view bytes);
Result<std::u16string> ReadTextFile(std::u16string_view path);

std::u16string FromAnsi(std::string_view bytes);
std::optional<std::string> ToAnsi(std::u16string_view text); // nothing when a character is not in the page

// The text in the ANSI code page whatever it holds.
struct LossyText {
  std::string Bytes;
  std::size_t Lost = 0; // characters that are not in the page; each became "?"
};
LossyText ToAnsiLossy(std::u16string_view text);

// A Windows code page by its number (932, 1250, ...). Nothing when the system lacks the page or the bytes are
// malformed in it.
std::optional<std::u16string> FromCodePage(std::string_view bytes, unsigned page);

} // namespace kx::platform
