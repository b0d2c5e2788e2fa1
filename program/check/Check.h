// kxhost check: looks for what is wrong in the files that a build reads.
#pragma once

#include "program/check/CheckRule.h"
#include "program/check/DiskNames.h"

#include <memory>

namespace kx::check {

struct TFilesToCheck {
  std::vector<std::u16string> Files = {};    // full paths
  std::vector<std::u16string> Troubles = {}; // a sentence for each folder that cannot be read, or has none
};

// The files below a folder that check takes by themselves: solutions, projects, build projects. Hidden
// folders are passed over. A file is itself. Raises EKxException when there is nothing of that name.
TFilesToCheck FilesToCheck(const std::u16string& path);

struct TKnownProject;

class TChecker {
public:
  explicit TChecker(TCheckLevels levels) : levels_(std::move(levels)) {}

  // Full paths. With a solution its projects are checked, each project once however many name it.
  void CheckSolution(const std::u16string& file);
  void CheckProject(const std::u16string& file);
  void CheckBuildProject(const TBuildProjectFacts& project);
  // Which configurations of a solution a name or an expression means; where there are none, that is found.
  std::vector<std::u16string> CheckConfiguration(const std::u16string& file, const std::u16string& wanted);
  std::size_t FileCount() const { return files_ + projects_.size(); } // that were looked at
  // By file in the order of checking, in each by line.
  std::vector<TFinding> TakeFindings();

private:
  std::shared_ptr<const TKnownProject> KnowProject(const std::u16string& file);

  TCheckLevels levels_;
  TDiskNames disk_;
  std::size_t files_ = 0; // projects of solutions apart
  std::map<std::u16string, std::shared_ptr<const TKnownProject>, text::IgnoreCaseLess> projects_;
  std::vector<TFinding> findings_;
};

} // namespace kx::check
