// What a file is that was given to a command which does not take it.
#pragma once

#include <string>
#include <string_view>

namespace kx::cli {

// "App.sln is a solution. "kxhost inspect App.sln" shows it; ..."; empty for a file of no kind that a command
// knows. The file's beginning counts before its extension, so it may have any name; it need not exist.
std::u16string DescribeFileKind(std::u16string_view file);

// Raises EUsage for a file of another kind.
void RequireBuildProject(std::u16string_view file);

} // namespace kx::cli
