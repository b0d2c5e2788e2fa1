// The part of an MSBuild.exe command line that all runs of one configuration share.
#pragma once

#include "package/buildaction/BuildSettings.h"

#include <functional>
#include <string>
#include <string_view>

namespace kx {

// How the command line reaches the host's variables.
struct TTextExpander {
  // False when the host could not expand the text; it has told the user so, under the label.
  std::function<bool(std::u16string_view label, std::u16string_view text, std::u16string& result)> TryExpand;
  std::function<std::u16string(std::u16string_view text)> Expand; // raises
};

// What is built: a solution configuration name, or a project configuration of the form Config|Platform.
struct TMSBuildTarget {
  std::u16string_view Configuration;
  bool AnyCPU = false; // the project file writes the platform "Any CPU" without the blank
  TVSDotNetBuildAction BuildAction = TVSDotNetBuildAction::baBuild;
  std::u16string LoggerAssembly; // full path; used with structured output only
};

struct TMSBuildCommandLine {
  std::u16string Text;
  text::TStringList Properties; // as they stand in its "/p:" switch, for the log
};

// Raises EFailAction for a text that cannot be expanded and for a list of warnings that holds anything but
// numbers.
TMSBuildCommandLine MSBuildCommandLine(const TSolutionSettings& solution, const TMSBuildSettings& settings,
                                       const TMSBuildTarget& target, const TTextExpander& expander);

bool IsWarningList(std::u16string_view list); // numbers separated by semicolons; empty is one too

} // namespace kx
