// The wording that the engine's error messages share.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

std::u16string Quoted(std::u16string_view text);

// " Did you mean "Solution"?", with a blank in front; empty when no candidate is near.
std::u16string DidYouMean(std::u16string_view name, std::span<const std::u16string> candidates);

// Why an action or a part is skipped: another one, which it needs, has ended badly or will not run.
std::u16string NeedNotMet(std::u16string_view other);

// Throws EKxParseError "file(line): message", with the line as a field too.
[[noreturn]] void RefuseFile(std::u16string_view fileName, int line, std::u16string_view message);

// The line, from 1, on which this byte stands.
int LineOfByte(std::string_view bytes, std::size_t position);

// The bytes behind a byte-order mark. Throws when they are not UTF-8.
std::string_view RequireUtf8(std::string_view bytes, std::u16string_view fileName);

} // namespace kx
