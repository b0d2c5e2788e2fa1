// Looks for an MSBuild-compatible tool on this machine.
#pragma once

#include "tools/launcher/ToolCommand.h"

#include <functional>
#include <string_view>

namespace kx::launcher {

// The full path of a program on the search path, or of an executable file given by its path; nothing when
// missing.
using ProgramLookup = std::function<std::optional<std::string>(std::string_view nameOrPath)>;

// `wanted` (the variable KX_MSBUILD) names the tool: "dotnet", "msbuild", "xbuild", or the path of a program,
// whose file name tells its kind. Empty: the first of dotnet (only with an SDK), msbuild, xbuild that is
// installed.
std::optional<Tool> FindTool(std::string_view wanted, const ProgramLookup& find);

} // namespace kx::launcher
