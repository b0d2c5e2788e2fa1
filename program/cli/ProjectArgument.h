// The build project that a command is about.
#pragma once

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace kx::cli {

// Takes PROJECT, which may be left out.
void DefineProject(CLI::App& command, std::optional<std::string>& file);

// What was given, else the only build project of the current folder. Raises EUsage where there is none, or
// more than one, and for a file of another kind.
std::u16string RequireProject(const std::optional<std::string>& file);

} // namespace kx::cli
