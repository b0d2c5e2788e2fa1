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
std::optional<std::u16string> EnvironmentVariable(std::u16string_view name);
std::vector<std::u16string> EnvironmentNames();
void ForgetEnvironmentVariable(std::u16string_view name); // programs started from now on do not get it
bool IsWindows();

// Shows the address in the user's browser and does not wait for it.
Status OpenInBrowser(std::u16string_view address);

} // namespace kx::platform
