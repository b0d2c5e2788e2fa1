// Finding projects and configurations of a solution by what users and saved selections call them.
#pragma once

#include "foundation/text/Text.h"
#include "package/solution/VSNETSLN.h"

#include <array>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kx {

using TFoundProjects = std::vector<std::shared_ptr<IVSDotNetProject>>;

// Finds projects of one solution, which outlives it: by the file as the solution writes it, the same with the
// solution's folder in front, then without regard to letter case by full path, file name, name and id: all
// that fit in the first of these ways, in build order.
class TProjectFinder {
public:
  explicit TProjectFinder(const IVSDotNetSolution& solution);
  TFoundProjects Find(std::u16string_view text) const;

private:
  using TIndex =
      std::unordered_map<std::u16string, TFoundProjects, text::IgnoreCaseHash, text::IgnoreCaseEqual>;

  std::u16string folder_;
  std::unordered_map<std::u16string, std::shared_ptr<IVSDotNetProject>> byFile_; // letter case counts
  std::array<TIndex, 4> indexes_; // by full path, file name, name, id
};

// The first project that a finder finds; null when nothing fits.
std::shared_ptr<IVSDotNetProject> FindProject(const IVSDotNetSolution& solution, std::u16string_view text);

// The full path of a project's file; the address of a web project.
std::u16string ProjectPath(const IVSDotNetSolution& solution, const IVSDotNetProject& project);

bool IsSetupProject(const IVSDotNetProject& project); // ".vdproj", which MSBuild does not know
// Whether any of these solution configurations builds the project.
bool IsBuiltIn(const IVSDotNetProject& project, std::span<const std::u16string> configurations);

// Says which projects that are part of these configurations are not on disk; empty when there are none.
std::u16string MissingProjects(const IVSDotNetSolution& solution,
                               std::span<const std::u16string> configurations);

// The names of the configurations that `wanted` means: the one of this name (letter case ignored), else with
// `asExpression` all that match it as a regular expression. `error` says what is wrong with the expression.
std::vector<std::u16string> MatchConfigurations(const IVSDotNetSolution& solution, std::u16string_view wanted,
                                                bool asExpression, std::u16string& error);

// Solutions call the platform "Any CPU", most project files "AnyCPU": True when this one knows
// `configuration`
// ("Debug|Any CPU") only without the blank. A file that cannot be read answers False.
bool WritesAnyCPUWithoutBlank(const IVSDotNetSolution& solution, const IVSDotNetProject& project,
                              std::u16string_view configuration);

} // namespace kx
