// The command lines of shells: taken apart while they are typed, and put together from what completes them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kx::cli {

enum class TShell { Bash, Zsh, Fish, PowerShell };

// The line up to the cursor. The last word is the one that is typed; it is empty behind a blank.
struct TTypedLine {
  std::vector<std::u16string> Words; // without their quotation marks
  // What of the last word bash takes for a word of its own, with which it replaces the rest.
  std::size_t Kept = 0;   // characters of the last word in front of that
  char16_t Quote = u'\0'; // the quotation mark that is open
};
TTypedLine SplitTyped(std::u16string_view line, TShell shell);

// A whole word as the shell wants it in place of the typed one.
std::u16string CompletedWord(std::u16string_view word, const TTypedLine& typed, TShell shell);

} // namespace kx::cli
