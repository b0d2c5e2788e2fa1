// The build project that a command is about.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace kx::cli {

// Takes PROJECT, which may be left out.
void DefineProject(CLI::App& command, std::optional<std::string>& file);

// The same, and behind it the names of actions and groups of the project.
struct TProjectSelection {
  std::optional<std::string> File;
  std::vector<std::string> Names;
};
void DefineProjectAndNames(CLI::App& command, TProjectSelection& selection);

// What was given, else the only build project of the current folder. Raises EUsage where there is none, or
// more than one, and for a file of another kind.
std::u16string RequireProject(const std::optional<std::string>& file);
// The same; a first word that can be no file is a name where the current folder holds only one project.
std::u16string RequireProject(TProjectSelection& selection);

} // namespace kx::cli
