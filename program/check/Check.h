// kxhost check: looks for what is wrong in the files that a build reads.
#pragma once

#include "program/check/CheckRule.h"
#include "program/check/DiskNames.h"

#include <set>

namespace kx::check {

// The files below a folder that check takes by themselves (solutions), with full paths, in
// the order of their names. Hidden folders are passed over. A file is itself. Raises EKxException when there
// is nothing of that name.
std::vector<std::u16string> FilesToCheck(const std::u16string& path);

class TChecker {
public:
  explicit TChecker(TCheckLevels levels) : levels_(std::move(levels)) {}

  void CheckSolution(const std::u16string& file); // a full path
  // By file in the order of checking, in each by line.
  std::vector<TFinding> TakeFindings();

private:
  TCheckLevels levels_;
  TDiskNames disk_;
  std::vector<TFinding> findings_;
};

} // namespace kx::check
