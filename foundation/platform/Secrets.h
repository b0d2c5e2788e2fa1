// Texts that must not lie about in clear.
#pragma once

#include "foundation/platform/Result.h"

#include <optional>
#include <string>
#include <string_view>

namespace kx::platform {

// Secrets that only this user on this machine reads again, by the system's protection service on Windows.
// Elsewhere by the key in `keyFile`, which is made with access for its owner only. Unprotect gives nothing
// for what was made elsewhere or changed.
Result<std::string> ProtectSecret(std::string_view clear, std::u16string_view keyFile);
std::optional<std::string> UnprotectSecret(std::string_view secret, std::u16string_view keyFile);

} // namespace kx::platform
