// The options that something reads: those of the options objects, and the host's own.
#pragma once

#include "program/runner/ServiceRegistry.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

struct TKnownOption {
  enum class TKind { Text, Number, Folder, File, Link };
  TOptionName Name;
  TKind Kind = TKind::Text;
  const TKxEnumeration* Enumeration = nullptr; // of a number that is one's ordinal
};

// In the order of a listing. The keys of an options object are those that it saves.
std::vector<TKnownOption> KnownOptions(const TServiceRegistry& services);
const TKnownOption* FindOption(std::span<const TKnownOption> known, const TOptionName& name);
// Raises EKxException that says the nearest name.
const TKnownOption& RequireOption(std::span<const TKnownOption> known, const TOptionName& name);

// What the store keeps for a value that a person gives: the ordinal for a name of an enumeration. Raises
// EKxException that says what the option takes.
std::u16string StoredText(const TKnownOption& option, std::u16string_view value);
std::u16string ShownText(const TKnownOption& option, std::u16string_view stored); // the reverse
// Raises EKxException for a path that means another place in each folder, for a file where a folder is meant,
// and for what is no link to a file. The text is a doubt that need not be wrong: what is named is not on this
// machine.
std::optional<std::u16string> CheckPlace(const TKnownOption& option, std::u16string_view value);

} // namespace kx
