// The options by which findings stop what was built, for every command that finds something.
#pragma once

#include "program/cli/Palette.h"
#include "program/findings/Gates.h"

#include <cstdint>
#include <span>
#include <string>

namespace CLI {
class App;
}

namespace kx::cli {

struct TGateArguments {
  std::string Baseline;
  std::string FailOn;
  std::string MaxWarnings;
  bool WriteBaseline = false;
};
void DefineGates(CLI::App& command, TGateArguments& arguments); // --baseline and what belongs to it

struct TFound {
  std::span<const TFinding> Findings; // with fingerprints
  std::int64_t More = 0;              // that are in no list
  std::u16string Root = {};           // that their files are seen from
  bool IsComplete = true;             // else what is missing is not fixed, and no baseline is written
};

// The gates of one run of a command. `own` are those of the project file, behind the command line's.
class TGates {
public:
  // Raises EUsage, as long as nothing has been done yet.
  TGates(const TGateArguments& arguments, const TGateSettings& own);

  const std::u16string& BaselineFile() const { return settings_.Baseline; } // full path; empty: none
  bool Writes() const { return writes_; }
  bool CountFindings() const; // whether findings make a difference: for the baseline or for the exit code
  // Compares, or writes the baseline. `lines` gets what there is to say; the exit code is `exitCode`, or
  // ExitGate where that was a success.
  int Apply(const TFound& found, const TPalette& palette, int exitCode, std::string& lines) const;

private:
  int Write(const TFound& found, int exitCode, std::string& lines) const;

  TGateSettings settings_;
  bool writes_;
};

} // namespace kx::cli
