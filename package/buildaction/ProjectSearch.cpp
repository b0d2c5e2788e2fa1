#include "package/buildaction/ProjectSearch.h"

#include "contract/Utilities.h"
#include "foundation/formats/RegEx.h"
#include "foundation/formats/Xml.h"
#include "foundation/platform/Files.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "package/buildaction/BuildSettings.h"

#include <algorithm>

namespace kx {

namespace {

std::u16string FullPath(std::u16string_view folder, std::u16string_view name) {
  return TPathUtils::ExpandRelativePath(name, folder);
}

} // namespace

TProjectFinder::TProjectFinder(const IVSDotNetSolution& solution) : folder_(SolutionDirectory(solution)) {
  const auto projects = solution.GetProjects();
  const auto count = static_cast<std::size_t>(projects->GetCount());
  byFile_.reserve(count);
  for (auto& index : indexes_)
    index.reserve(count);
  for (int i = 0; i < projects->GetCount(); ++i) {
    const auto project = projects->GetItem(i);
    const std::u16string& file = project->GetFileName();
    byFile_.try_emplace(file, project);
    const std::array<std::u16string, 4> names{FullPath(folder_, file), text::ExtractFileName(file),
                                              project->GetName(), project->GetProjectID()};
    for (std::size_t way = 0; way < names.size(); ++way)
      indexes_[way][names[way]].push_back(project);
  }
}

TFoundProjects TProjectFinder::Find(std::u16string_view text) const {
  const std::u16string wanted(text);
  if (const auto found = byFile_.find(wanted); found != byFile_.end()) return {found->second};
  if (text::StartsWithIgnoreCase(wanted, folder_))
    if (const auto found = byFile_.find(wanted.substr(folder_.size())); found != byFile_.end())
      return {found->second};
  const std::u16string path = FullPath(folder_, wanted);
  for (std::size_t way = 0; way < indexes_.size(); ++way)
    if (const auto found = indexes_[way].find(way == 0 ? path : wanted); found != indexes_[way].end())
      return found->second;
  return {};
}

std::shared_ptr<IVSDotNetProject> FindProject(const IVSDotNetSolution& solution, std::u16string_view text) {
  const auto found = TProjectFinder(solution).Find(text);
  return found.empty() ? nullptr : found.front();
}

std::u16string ProjectPath(const IVSDotNetSolution& solution, const IVSDotNetProject& project) {
  return FullPath(SolutionDirectory(solution), project.GetFileName());
}

bool IsSetupProject(const IVSDotNetProject& project) {
  return text::EqualsIgnoreCase(text::ExtractFileExt(project.GetFileName()), u".vdproj");
}

bool IsBuiltIn(const IVSDotNetProject& project, std::span<const std::u16string> configurations) {
  return std::ranges::any_of(configurations,
                             [&project](const auto& name) { return !project.GetConfig(name).empty(); });
}

std::u16string MissingProjects(const IVSDotNetSolution& solution,
                               std::span<const std::u16string> configurations) {
  if (solution.GetProjectsNotFound().empty()) return {};
  const auto all = LookAtSolution(solution.GetFileName(), true);
  std::vector<std::u16string> missing;
  for (const auto& named : solution.GetProjectsNotFound()) {
    const auto project = all->GetProjects()->FindByID(named->GetProjectID());
    if (IsSolutionFolder(*named) || !project || platform::DirectoryExists(ProjectPath(solution, *project)))
      continue;
    if (IsBuiltIn(*project, configurations)) missing.push_back(project->GetFileName());
  }
  if (missing.empty()) return {};
  const std::vector<std::u16string> names(configurations.begin(), configurations.end());
  return u"Projects of " + text::Join(names, u", ") + u" are not on disk: " + text::Join(missing, u", ");
}

bool WritesAnyCPUWithoutBlank(const IVSDotNetSolution& solution, const IVSDotNetProject& project,
                              std::u16string_view configuration) {
  const auto bar = configuration.find(u'|');
  if (bar == std::u16string_view::npos) return false;
  if (!text::EqualsIgnoreCase(configuration.substr(bar + 1), u"any cpu")) return false;
  std::u16string file = project.GetFileName();
  if (!platform::FileExists(file)) file = text::JoinPath(SolutionDirectory(solution), file);
  const auto content = ReadProjectText(file);
  if (!content) return false;
  const std::u16string config(configuration.substr(0, bar));
  return content->find(config + u"|Any CPU") == std::u16string::npos &&
         content->find(config + u"|AnyCPU") != std::u16string::npos;
}

std::vector<std::u16string> MatchConfigurations(const IVSDotNetSolution& solution, std::u16string_view wanted,
                                                bool asExpression, std::u16string& error) {
  const auto known = solution.GetConfigurations();
  const int count = known ? known->GetCount() : 0;
  for (int i = 0; i < count; ++i)
    if (const std::u16string& name = known->GetItem(i)->GetName(); text::EqualsIgnoreCase(name, wanted))
      return {name};
  std::vector<std::u16string> matched;
  if (!asExpression || count == 0) return matched;
  try {
    const auto compiled = RegEx::NewRegularExpression(wanted);
    for (int i = 0; i < count; ++i)
      if (const std::u16string& name = known->GetItem(i)->GetName(); compiled->IsMatch(name))
        matched.push_back(name);
  } catch (const ERegExError& failure) {
    error = failure.Message();
  }
  return matched;
}

} // namespace kx
