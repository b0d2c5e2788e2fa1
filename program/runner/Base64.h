// Bytes as text of letters and digits (RFC 4648).
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kx {

std::u16string ToBase64(std::string_view bytes);
// Nothing for what ToBase64 does not write.
std::optional<std::string> FromBase64(std::u16string_view text);

} // namespace kx
