#include "foundation/platform/Registry.h"

namespace kx::platform {

std::optional<std::u16string> ReadLocalMachineString(std::u16string_view /*key*/,
                                                     std::u16string_view /*value*/) {
  return std::nullopt;
}

} // namespace kx::platform
