// What the machine and the user's session are.
#pragma once

#include "foundation/platform/Result.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx::platform {

std::u16string MachineName();
std::optional<std::u16string> EnvironmentVariable(std::u16string_view name);
std::vector<std::u16string> EnvironmentNames();
bool IsWindows();

// Shows the address in the user's browser and does not wait for it.
Status OpenInBrowser(std::u16string_view address);

// The string value below HKEY_LOCAL_MACHINE, in the 32-bit view (Visual Studio 7 to 10 are 32-bit programs),
// opened for reading only. Nothing when key or value are missing, and on systems without a registry.
std::optional<std::u16string> ReadLocalMachineString(std::u16string_view key, std::u16string_view value);

// Secrets that only this user on this machine reads again, by the system's protection service on Windows.
// Elsewhere by the key in `keyFile`, which is made with access for its owner only. Unprotect gives nothing
// for what was made elsewhere or changed.
Result<std::string> ProtectSecret(std::string_view clear, std::u16string_view keyFile);
std::optional<std::string> UnprotectSecret(std::string_view secret, std::u16string_view keyFile);

// A shared library of the program's own kind. Loaded for the life of the process.
using EntryPoint = void (*)();
Result<EntryPoint> LoadLibraryEntry(std::u16string_view path, std::string_view entry);

} // namespace kx::platform
