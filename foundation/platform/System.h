// What the machine and the user's session are.
#pragma once

#include "foundation/platform/Result.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx::platform {

std::u16string MachineName();
std::u16string
SystemName(); // with its version: "Debian GNU/Linux 12 (bookworm)", "Windows 10.0"; empty when unknown
// The user's folder for what programs remember by themselves; empty when the system names none.
std::u16string StateDirectory();
std::optional<std::u16string> EnvironmentVariable(std::u16string_view name);
std::vector<std::u16string> EnvironmentNames();
bool IsWindows();

// Shows the address in the user's browser and does not wait for it.
Status OpenInBrowser(std::u16string_view address);

} // namespace kx::platform
