// What the output of devenv and MSBuild means: errors and warnings counted, each line with its status,
// failures that the exit code hides.
#pragma once

#include "contract/Actions.h"
#include "package/solution/VSNETSLN.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace kx {

struct TBuildOutputOptions {
  bool UsingMSBuild = false;
  bool Structured = false; // MSBuild alone; its lines are then left to the structured-output helper
  TVSDotNetVersion Version = TVSDotNetVersion::vs2005;
};

// What a tool says about the projects that it was to build. Up to date counts as built.
enum class TBuiltProjects { Unsaid, None, Some };

enum class TBuildCount { Errors, Warnings };

// Receives what the analysis finds, in the order of the output.
class IBuildOutputSink {
public:
  virtual ~IBuildOutputSink() = default;
  virtual void Count(TBuildCount what, std::int32_t number) = 0; // to be added, and sent as a metric
  virtual void Line(std::u16string_view line, TStatusTag status) = 0;
  virtual void StructuredLine(std::u16string_view line) = 0;
};

// Reads the standard output of one tool, English or French. Its cost is linear in the output whatever that
// holds.
class TBuildOutputAnalysis {
public:
  TBuildOutputAnalysis(const TBuildOutputOptions& options, IBuildOutputSink& sink)
      : options_(options), sink_(sink) {}

  // Before each run of a tool; setup projects are built by devenv even where MSBuild builds the others.
  void BeginRun(bool usingMSBuild);
  // A chunk of any number of lines; an empty one is one empty line.
  void Feed(std::u16string_view chunk);
  // The run's own summary names a failed project. Looked for up to Visual Studio .NET 2003, whose exit code
  // hides it.
  bool HasFailed() const { return failed_; }
  // As the run's own words say; lines that were left to the structured-output helper are not among them.
  TBuiltProjects BuiltProjects() const { return built_; }
  // Which tool's summary the output holds, whichever tool is expected.
  bool HasDevEnvSummary() const { return hasDevEnvSummary_; }
  bool HasMSBuildSummary() const { return hasMSBuildSummary_; }

private:
  void ReadLine(std::u16string_view line);
  void ReadDevEnvCounts(std::u16string_view line, unsigned findings);
  bool ReadMSBuildCounts(std::u16string_view line, unsigned findings);
  void NoteSummary(std::u16string_view line, unsigned findings);
  void NoteBuilt(std::optional<bool> some);

  TBuildOutputOptions options_;
  IBuildOutputSink& sink_;
  bool failed_ = false;
  bool hasDevEnvSummary_ = false;
  bool hasMSBuildSummary_ = false;
  TBuiltProjects built_ = TBuiltProjects::Unsaid;
};

} // namespace kx
