// kxhost inspect: what the package reads in a file, as JSON or for people.
#pragma once

#include "foundation/text/Exceptions.h"
#include "program/cli/Output.h"

#include <nlohmann/json_fwd.hpp>

#include <optional>
#include <string>
#include <vector>

namespace kx::cli {

using TJson = nlohmann::ordered_json;

struct TInspectOptions {
  std::vector<std::u16string> Files;
  bool Json = false;
  bool AllProjects = false;    // solutions: keep projects that are not on disk
  bool Lines = false;          // logs: one line "status<TAB>text" a message
  std::optional<bool> MSBuild; // logs: which tool wrote it
  std::int32_t VSVersion = 4;  // logs: ordinal of the Visual Studio version that ran
  std::u16string Encoding;     // logs: empty to find out
};

struct TInspectedFile {
  std::u16string Path; // full
  std::string Name;    // as the user wrote it, where several are inspected; else empty
};

// What one kind of file is turned into. Raises EKxException for a file that is refused.
TJson InspectSolution(const std::u16string& file, const TInspectOptions& options);
TJson InspectResourceScript(const std::u16string& file, const TInspectOptions& options);
TJson InspectBuildLog(const std::u16string& file, const TInspectOptions& options);
// The same for people, from the same object.
std::string DescribeSolution(const TJson& solution);
std::string DescribeResourceScript(const TJson& script);
std::string DescribeBuildLog(const TJson& log);

// Writes the results of a .trx file, as JSON or for people, without making one object of them.
void PrintTestResults(const TInspectedFile& file, const TInspectOptions& options, TOutput& output);

// Writes every message of a log with its status; nothing else.
void PrintBuildLogLines(const std::u16string& file, const TInspectOptions& options, TOutput& output);

// The exit code: 0, or 1 when any file was refused.
int RunInspect(const TInspectOptions& options);

} // namespace kx::cli
