// The registry of Windows.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kx::platform {

// The string value below HKEY_LOCAL_MACHINE, in the 32-bit view (Visual Studio 7 to 10 are 32-bit programs),
// opened for reading only. Nothing when key or value are missing, and on systems without a registry.
std::optional<std::u16string> ReadLocalMachineString(std::u16string_view key, std::u16string_view value);

} // namespace kx::platform
