// kxhost inspect: what the package reads in a file, as JSON or for people.
#pragma once

#include "foundation/formats/JsonWriter.h"
#include "foundation/text/Exceptions.h"
#include "program/cli/Output.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kx::cli {

struct TInspectOptions {
  std::vector<std::u16string> Files;
  bool Json = false;
  bool AllProjects = false;    // solutions: keep projects that are not on disk
  bool Lines = false;          // logs: one line "status<TAB>text" a message
  std::optional<bool> MSBuild; // logs: which tool wrote it
  std::int32_t VSVersion = 4;  // logs: ordinal of the Visual Studio version that ran
  std::u16string Encoding;     // logs: empty to find out
};

// What was read in one file. All that can be wrong with the file is known before the first of it is written.
class IInspected {
public:
  virtual ~IInspected() = default;
  virtual void WriteMembers(TJsonWriter& json) const = 0; // of the object that is open
  virtual void Describe(TOutput& output) const = 0;       // for people
};

using TInspected = std::shared_ptr<const IInspected>;

// One kind of file each, by its full path. Raises EKxException for a file that is refused.
TInspected InspectSolution(const std::u16string& file, const TInspectOptions& options);
TInspected InspectResourceScript(const std::u16string& file, const TInspectOptions& options);
TInspected InspectTestResults(const std::u16string& file, const TInspectOptions& options);
TInspected InspectBuildLog(const std::u16string& file, const TInspectOptions& options);

// Why a file was refused, and where in it.
std::u16string ReasonOf(const std::exception& error);

// Writes every message of a log with its status; nothing else.
void PrintBuildLogLines(const std::u16string& file, const TInspectOptions& options, TOutput& output);

// The exit code: 0, or 1 when any file was refused.
int RunInspect(const TInspectOptions& options);

} // namespace kx::cli
