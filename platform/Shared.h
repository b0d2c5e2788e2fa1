// What the sources of every system in this room share.
#pragma once

#include "platform/Result.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kx::platform {

// "Cannot <action> <path>. <reason>", the path as the caller wrote it.
Failure FileFailure(std::u16string_view action, std::u16string_view path, std::u16string_view reason);

// Why a file of several names (hard links) is not replaced.
std::u16string SeveralNames(std::uint64_t count);

// Letters and digits for names that must not be guessed or taken.
std::string RandomLetters(std::size_t count);

} // namespace kx::platform
