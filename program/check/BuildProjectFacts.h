// A build project (*.kxproj) as check sees it: its text, and what its actions and their pages say about it.
#pragma once

#include "program/runner/ProjectXml.h"
#include "program/runner/Run.h"

#include <string>
#include <vector>

namespace kx::check {

struct TBuildProblem {
  int Line = 0;
  std::u16string Message;
};

struct TBuildProjectFacts {
  std::u16string File;
  std::vector<TBuildProblem> Refused; // why it cannot be loaded; then all else is empty
  TProjectElement Root = {};
  std::vector<TBuildProblem> Settings;     // what validation finds
  std::vector<TBuildProblem> Unchangeable; // files that a run would change and cannot
  std::vector<TBuildProblem> Ineffective;  // properties that others switch off
  std::vector<TBuildProblem> ClearSecrets; // properties
};

// Loads the project as a run would, and runs nothing. The pages of its actions have to be registered.
TBuildProjectFacts ReadBuildProjectFacts(const std::u16string& file, const TServiceRegistry& services,
                                         TKxEvent& stop, const TRunSettings& settings);

} // namespace kx::check
