#include "package/solution/VSNETSLN.Model.h"

#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "package/solution/VSNETSLN.Order.h"
#include "package/solution/VSNETSLN.Syntax.h"

#include <algorithm>

namespace kx {

namespace {

constexpr std::size_t UsualConfigs = 8;
constexpr std::size_t ManyConfigs = 16;

} // namespace

void TProjectConfigList::Add(std::u16string_view solutionConfig, std::u16string_view projectConfig,
                             bool flag) {
  if (const auto known = IndexOf(solutionConfig)) {
    lines_[*known].Flag = lines_[*known].Flag || flag;
    return;
  }
  const std::size_t start = text_.size();
  const std::size_t length = solutionConfig.size() + 1 + projectConfig.size();
  if (lines_.empty()) {
    lines_.reserve(UsualConfigs);
    text_.reserve(UsualConfigs * length);
  }
  text_.append(solutionConfig).append(u"=").append(projectConfig);
  lines_.push_back({start, length, text_.find(u'=', start) - start, flag});
  Index(lines_.size() - 1);
}

std::optional<TVSDotNetProjectConfig> TProjectConfigList::Find(std::u16string_view solutionConfig) const {
  const auto known = IndexOf(solutionConfig);
  return known ? std::optional((*this)[*known]) : std::nullopt;
}

TVSDotNetProjectConfig TProjectConfigList::operator[](std::size_t index) const {
  if (index >= lines_.size()) return {};
  const TLine& line = lines_[index];
  return {NameOf(index), TextOf(line).substr(line.NameLength + 1), line.Flag};
}

std::optional<std::size_t> TProjectConfigList::IndexOf(std::u16string_view name) const {
  if (index_) return index_->Find(name, [this](std::size_t line) { return NameOf(line); });
  for (std::size_t i = lines_.size();
       i-- > 0;) { // mostly asked for the latest: ".ActiveCfg", then ".Build.0"
    if (text::EqualsIgnoreCase(NameOf(i), name)) return i;
  }
  return std::nullopt;
}

// Of lines with equal names the first one is found.
void TProjectConfigList::Index(std::size_t line) {
  if (index_) {
    if (!IndexOf(NameOf(line))) index_->Add(NameOf(line), static_cast<std::uint32_t>(line));
  } else if (lines_.size() == ManyConfigs) {
    index_ = std::make_unique<TNameIndex>();
    for (std::size_t i = 0; i < ManyConfigs; ++i)
      Index(i);
  }
}

bool TVSDotNetProject::IsVCProject() const {
  const std::u16string extension = text::ExtractFileExt(fileName_);
  return text::EqualsIgnoreCase(extension, u".vcproj") || text::EqualsIgnoreCase(extension, u".vcxproj");
}

void TVSDotNetProject::AddConfig(std::u16string_view solutionConfig, std::u16string_view projectConfig,
                                 bool flag) {
  configs_.Add(solutionConfig, projectConfig, flag);
}

std::u16string_view TVSDotNetProject::GetConfig(std::u16string_view solutionConfig) const {
  return configs_.Find(solutionConfig).value_or(TVSDotNetProjectConfig()).Project;
}

bool TVSDotNetProject::IsActiveConfig(std::u16string_view solutionConfig) const {
  return configs_.Find(solutionConfig).value_or(TVSDotNetProjectConfig()).Active;
}

TVSDotNetProjectConfig TVSDotNetProject::GetConfigItem(int index) const {
  return configs_[static_cast<std::size_t>(index)];
}

void TVSDotNetProjects::Add(std::shared_ptr<IVSDotNetProject> project) {
  byId_.clear();
  inFileOrder_.push_back(project);
  projects_.push_back(std::move(project));
}

std::shared_ptr<IVSDotNetProject> TVSDotNetProjects::FindByID(std::u16string_view id) const {
  if (byId_.empty()) {
    byId_.reserve(projects_.size());
    for (std::size_t i = 0; i < projects_.size(); ++i)
      byId_.try_emplace(projects_[i]->GetProjectID(), i);
  }
  const auto found = byId_.find(id);
  return found == byId_.end() ? nullptr : projects_[found->second];
}

std::shared_ptr<IVSDotNetProject> TVSDotNetProjects::FindByFileName(std::u16string_view fileName) const {
  const auto found = std::ranges::find_if(
      projects_, [fileName](const auto& project) { return project->GetFileName() == fileName; });
  return found == projects_.end() ? nullptr : *found;
}

bool TVSDotNetProjects::SortUnlessCircular() {
  if (!CirclesAmong(projects_).empty()) return false;
  SortByDependancies();
  return true;
}

void TVSDotNetProjects::SortByDependancies() {
  const std::vector<std::size_t> order = OrderByDependancies(projects_, stop_);
  std::vector<std::shared_ptr<IVSDotNetProject>> sorted;
  sorted.reserve(order.size());
  for (const std::size_t position : order)
    sorted.push_back(std::move(projects_[position]));
  projects_ = std::move(sorted);
  byId_.clear();
}

bool IsSolutionFolder(const IVSDotNetProject& project) {
  return slnsyntax::IsFolderType(project.GetProjectTypeID());
}

std::vector<TVSDotNetCircle> FindCircles(const IVSDotNetProjects& projects) {
  TVSDotNetCircle all;
  for (int i = 0; i < projects.GetCount(); ++i)
    all.push_back(projects.GetItemInFileOrder(i));
  std::vector<TVSDotNetCircle> circles;
  for (const auto& way : CirclesAmong(all)) {
    TVSDotNetCircle& circle = circles.emplace_back();
    for (const std::size_t position : way)
      circle.push_back(all[position]);
  }
  return circles;
}

std::u16string DescribeCircle(const TVSDotNetCircle& circle) {
  std::u16string text;
  for (std::size_t i = 0; i < circle.size(); ++i)
    text += (i == 0 ? u"" : u", ") + circle[i]->GetName() + u" needs " +
            circle[(i + 1) % circle.size()]->GetName();
  return text;
}

} // namespace kx
