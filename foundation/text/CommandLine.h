// Command lines as one text, by the rules of the Windows C runtime:
// https://learn.microsoft.com/cpp/c-language/parsing-c-command-line-arguments
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kx::text {

// The arguments that a Windows program sees for this text (without a program name in front): blanks separate,
// double quotes group and vanish, 2n backslashes before a quote are n backslashes, 2n+1 are n and a literal
// quote, and a doubled quote inside quotes is one literal quote.
std::vector<std::u16string> SplitCommandLine(std::u16string_view commandLine);

// In double quotes always, so that SplitCommandLine gives the text back as one argument: quotes inside are
// escaped, backslashes before a quote and before the closing quote are doubled.
std::u16string QuoteArgument(std::u16string_view argument);

// The same, but only where the text is empty or has blanks or quotes.
std::u16string QuoteArgumentIfNeeded(std::u16string_view argument);

} // namespace kx::text
