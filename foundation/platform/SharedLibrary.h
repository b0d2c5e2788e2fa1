// Shared libraries that are loaded while the program runs.
#pragma once

#include "foundation/platform/Result.h"

#include <string>
#include <string_view>

namespace kx::platform {

// A shared library of the program's own kind. Loaded for the life of the process.
using EntryPoint = void (*)();
Result<EntryPoint> LoadLibraryEntry(std::u16string_view path, std::string_view entry);

// The path of the library of this name that was made together with the program and lies beside it.
std::u16string LibraryBesideProgram(std::u16string_view name);

} // namespace kx::platform
