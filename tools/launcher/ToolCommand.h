// How the command line that an MSBuild.exe of Windows is given is said to the tools of other systems.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kx::launcher {

enum class ToolKind { DotNet, MSBuild, XBuild };

struct Tool {
  ToolKind Kind = ToolKind::MSBuild;
  std::string Path; // of the program to run
};

// Which argument is the project or solution file: the first that is neither a switch nor a response file. A
// path of this system begins with "/" as switches do; a switch is letters and digits up to its end or a
// colon.
std::optional<std::size_t> FindFileArgument(std::span<const std::string> arguments);

// Where on this system a folder on a mapped drive ("C:/src") is.
using FolderOnDrive = std::function<std::string(const std::string& folder)>;

// The whole argument vector, the program's name first. Arguments pass as they arrive, but for what the tool
// would refuse or take wrongly:
// - folders in properties (OutDir, SolutionDir, ReferencePath, ...) get "/" for "\", which would else become
// part of a
//   file's name, and those on a mapped drive become folders of this system;
// - xbuild knows neither parallel nodes nor binary logs and takes every unknown switch for a second project
// file, so
//   those that only tune a build are left out, and the others are spelled in its one way ("/v:q" for "-V:q").
std::vector<std::string> ToolCommand(const Tool& tool, std::span<const std::string> arguments,
                                     const FolderOnDrive& folderOnDrive);

} // namespace kx::launcher
