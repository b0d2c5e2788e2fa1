// What became of the projects that one tool builds, as its output tells it.
#pragma once

#include "foundation/text/Text.h"
#include "program/runner/Results.h"

#include <chrono>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kx {

// Reads what devenv and MSBuild say of projects in plain output, and takes what is known of them otherwise. A
// project that comes several times, as one does that others need, is one: with the longest of its times,
// failed if it failed once.
class TToolProjects {
public:
  using TTime = std::chrono::steady_clock::time_point;

  // Named by files. An end without a beginning is that of a tool which does not tell beginnings.
  void Start(std::u16string_view file, TTime now);
  void End(std::u16string_view file, bool succeeded, TTime now);
  // A line of the output; those that are about no project do nothing.
  void Read(std::u16string_view line, TTime now);
  // What the line says is wrong belongs to the project that it names, else to the one that is being built.
  // What a closing summary repeats is not counted again.
  void Count(std::u16string_view line, const TFinding& finding);

  // In the order of their coming. Those that have not ended are `unfinished`, but failed where that is a
  // success.
  std::vector<TProjectResult> Take(TTime runStart, TResultKind unfinished);

private:
  struct TProject {
    TProjectResult Result;
    std::u16string File = {}; // or the name that devenv has for it
    int Open = 0;             // begun and not ended so many times
    TTime Start = {};
    TTime Began = {}; // of the longest time
    TTime Ended = {};
    bool IsBuilt = false; // has begun, not only been skipped
    bool IsFailed = false;
    bool TellsStarts = false;
  };
  struct TNumbered { // by devenv, with the number that its lines begin with; 0 where there is but one
    std::size_t Place = 0;
    TTime LastLine = {};
  };

  TProject* Find(std::u16string_view file);
  TProject& Known(std::u16string_view file);
  TProject* FindCounted(std::u16string_view line, const TFinding& finding);
  void Start(TProject& project, TTime now);
  static void End(TProject& project, bool succeeded, TTime now);
  bool ReadHeading(std::u16string_view line, TTime now);
  void ReadMSBuildLine(std::u16string_view line, TTime now);
  void EndNumbered(const TNumbered& numbered);
  void EndAllNumbered();

  std::vector<TProject> projects_;
  std::unordered_map<std::u16string, std::size_t, text::IgnoreCaseHash, text::IgnoreCaseEqual>
      places_; // by file
  std::map<int, TNumbered> numbered_;
  std::vector<std::size_t> begun_;                     // places, the innermost last
  std::map<std::u16string, TProblemCounts> unclaimed_; // of projects that have not come yet
};

} // namespace kx
