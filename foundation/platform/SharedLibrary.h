// Shared libraries that are looked for while the program runs.
#pragma once

#include "foundation/platform/Result.h"

#include <string_view>

namespace kx::platform {

// A shared library of the program's own kind. Loaded for the life of the process.
using EntryPoint = void (*)();
Result<EntryPoint> LoadLibraryEntry(std::u16string_view path, std::string_view entry);

} // namespace kx::platform
