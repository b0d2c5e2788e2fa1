// What a file is that was given to a command which does not take it.
#pragma once

#include <string>
#include <string_view>

namespace kx::cli {

// "App.sln is a solution. "kxhost inspect App.sln" shows it; ..."; empty for a file of no kind that a command
// knows. The file's beginning counts before its extension, so it may have any name. Of a file that does not
// exist it says so, and what its name would make it.
std::u16string DescribeFileKind(std::u16string_view file);

// The extension that files of its kind usually have; empty for one of no kind that a command knows.
std::u16string_view ExtensionOfKind(std::u16string_view file);

std::u16string NoSuchFile(std::u16string_view file);

// Raises EUsage for a file of another kind and for a folder. The file need not exist.
void RequireBuildProject(std::u16string_view file);

// Raises EUsage for a file, by whatever name or link, that somebody has written: a build project, a solution,
// a project, a source. `option` is the one whose output would replace it.
void RequireNotWrittenByHand(std::u16string_view option, std::u16string_view file);
// Whether both paths lead to one file, under whatever names; of files that are not there yet, whether they
// would.
bool IsSameFile(std::u16string_view one, std::u16string_view other);
// Whether its content says that a run has left it: a log, a report, results of unit tests. Nothing counts.
bool IsLeftByRun(std::u16string_view file);
bool IsRegularFile(std::u16string_view file); // no folder, pipe or device

} // namespace kx::cli
