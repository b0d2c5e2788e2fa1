// Whose the private folders are that stand in the temporary one.
#pragma once

#include <filesystem>

namespace kx::platform {

// True for a folder of this user's, and nobody else's to enter, whose owner lives no more.
bool IsAbandonedFolder(const std::filesystem::path& path);

} // namespace kx::platform
