// String literals of the languages of AssemblyInfo files.
#pragma once

#include "package/assemblyinfo/AssemblyInfoSource.h"

namespace kx {

struct TLiteralEnd {
  std::size_t At = 0; // behind the literal
  bool Closed = false;
};
// The end of the string or character literal that begins at `at`; `at` itself when none does. A literal that
// is never closed ends with its line or, where it may hold line ends, with the text.
TLiteralEnd SkipLiteral(std::u16string_view text, std::size_t at, TAssemblyInfoLanguage language);

// Whether a string literal has no parts to be computed.
bool IsConstantLiteral(std::u16string_view literal, TAssemblyInfoLanguage language);

// The value of a string literal; nothing for one with parts to be computed, in a raw form of several lines,
// or with an escape that the language does not know.
std::optional<std::u16string> DecodeLiteral(std::u16string_view literal, TAssemblyInfoLanguage language);

// The expression that has this value. `old` is what it replaces: its form (verbatim, wide) is kept where the
// value allows.
std::u16string EncodeLiteral(std::u16string_view value, TAssemblyInfoLanguage language,
                             std::u16string_view old = {});

} // namespace kx
