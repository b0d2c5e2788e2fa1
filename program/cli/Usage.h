// How the program ends, and what is said of a wrong command line.
#pragma once

#include "foundation/text/Exceptions.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class Option;
}

namespace kx::cli {

// Exit codes of kxhost.
inline constexpr int ExitSuccess = 0;
inline constexpr int ExitFailed = 1;
inline constexpr int ExitUsage = 2;
inline constexpr int ExitInvalid = 3; // project file or validation
inline constexpr int ExitGate = 4;    // all well, but for what findings are allowed
inline constexpr int ExitStopped = 130;

// The command line is wrong: exit code ExitUsage.
class EUsage : public EKxException {
public:
  using EKxException::EKxException;
};

// "a, b or c".
std::u16string ListOf(std::span<const std::u16string> names, std::u16string_view lastWord);
// The position of the name that an option was given, letter case ignored. Raises EUsage that says them all.
std::size_t RequireChoice(std::u16string_view option, std::u16string_view text,
                          std::span<const std::u16string_view> names);
// What an option takes, for those who complete what is typed; the option takes other values as before.
void OfferChoices(CLI::Option* option, std::span<const std::u16string_view> names);
std::vector<std::u16string> ChoicesOf(CLI::Option& option); // empty where nothing was offered

} // namespace kx::cli
