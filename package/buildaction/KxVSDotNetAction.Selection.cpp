#include "package/buildaction/KxVSDotNetAction.h"

#include "contract/Utilities.h"
#include "package/buildaction/ProjectSearch.h"
#include "package/buildaction/ProjectSelection.h"
#include "package/buildaction/VersionStamping.h"

#include <algorithm>

namespace kx {

namespace {

// Marks that something is under way, for as long as it lives.
class TFlagGuard {
public:
  explicit TFlagGuard(bool& flag) : flag_(flag) { flag_ = true; }
  ~TFlagGuard() { flag_ = false; }
  TFlagGuard(const TFlagGuard&) = delete;
  TFlagGuard& operator=(const TFlagGuard&) = delete;

private:
  bool& flag_;
};

std::u16string IdOf(const IVSDotNetSolution& solution, std::u16string_view text) {
  const auto project = FindProject(solution, text);
  return project ? project->GetProjectID() : std::u16string();
}

} // namespace

std::shared_ptr<IVSDotNetSolution> TKxCustomVSDotNetAction::TryOpenSolution() {
  if (opening_) return nullptr;
  const TFlagGuard guard(opening_);
  try {
    const std::u16string name = ExpandExpression(solution_.Solution);
    return name.empty() ? nullptr : LookAtSolution(FullProjectPath(name), false, &Host().Stop());
  } catch (const std::exception&) {
    return nullptr;
  }
}

std::u16string TKxCustomVSDotNetAction::GetProjectID(std::u16string_view text) {
  const auto solution = TryOpenSolution();
  return solution ? IdOf(*solution, text) : std::u16string();
}

std::u16string TKxCustomVSDotNetAction::GetProjectName(std::u16string_view text) {
  const auto solution = TryOpenSolution();
  const auto project = solution ? FindProject(*solution, text) : nullptr;
  return project ? project->GetName() : std::u16string();
}

std::u16string TKxCustomVSDotNetAction::GetProjectPath(std::u16string_view text) {
  const auto solution = TryOpenSolution();
  const auto project = solution ? FindProject(*solution, text) : nullptr;
  return project ? ProjectPath(*solution, *project) : std::u16string();
}

std::u16string TKxCustomVSDotNetAction::GetAllSolutionConfigurations() {
  const auto solution = TryOpenSolution();
  const auto configurations = solution ? solution->GetConfigurations() : nullptr;
  if (!configurations) return {};
  text::TStringList names;
  for (int i = 0; i < configurations->GetCount(); ++i)
    names.Add(configurations->GetItem(i)->GetName());
  return names.GetText();
}

void TKxCustomVSDotNetAction::GetFilesToChange(text::TStringList& files) {
  if (!assemblyInfo_.UpdateAssemblyInfo && !win32Stamp_.UpdateWin32Resource) return;
  if (const auto solution = TryOpenSolution()) CollectFilesToStamp(*this, *solution, files);
}

text::TStringList TKxCustomVSDotNetAction::GetSelectedProjects() {
  return WithProjectIDs(solution_.SelectedProjects);
}

text::TStringList TKxCustomVSDotNetAction::GetAssemblySelectedProjects() {
  return WithProjectIDs(assemblyInfo_.SelectedProjects);
}

text::TStringList TKxCustomVSDotNetAction::GetResourceSelectedProjects() {
  return WithProjectIDs(win32Stamp_.SelectedProjects);
}

// Entries in braces are ids already.
text::TStringList TKxCustomVSDotNetAction::WithProjectIDs(const text::TStringList& entries) {
  const auto isId = [](const std::u16string& entry) { return entry.starts_with(u'{'); };
  if (std::all_of(entries.begin(), entries.end(), isId)) return entries;
  const auto solution = TryOpenSolution();
  if (!solution) return entries;
  text::TStringList ids =
      ResolveSelection(*solution, entries, [this](auto text) { return ExpandExpression(text); }).Ids;
  for (std::size_t i = 0; i < entries.Count(); ++i)
    if (isId(entries[i])) ids.Set(i, entries[i]);
  return ids;
}

text::TStringList TKxCustomVSDotNetAction::ResolveProjects(std::u16string_view property,
                                                           const text::TStringList& entries,
                                                           const IVSDotNetSolution& solution) {
  const auto selection =
      ResolveSelection(solution, entries, [this](auto text) { return ExpandExpression(text); });
  TSelectionExplanations explanations(solution);
  const auto warn = [&](const auto& entry) {
    SendMessage(u"Warning : " + std::u16string(property) + u", " + DoubleQuoteString(entry.Entry) + u": " +
                    explanations.Explain(entry),
                TStatusTag::stWarning);
  };
  std::ranges::for_each(selection.Unresolved, warn);
  std::ranges::for_each(selection.Guessed, warn);
  return selection.Ids;
}

TFoundProjects TKxCustomVSDotNetAction::ProjectsToBuild(const IVSDotNetSolution& solution) {
  const bool all = solution_.BuildType != TVSDotNetBuildType::btSelectedProjects;
  const auto expand = [this](auto text) { return ExpandExpression(text); };
  const auto ids =
      all ? TProjectIds() : SetOf(ResolveSelection(solution, solution_.SelectedProjects, expand).Ids);
  TFoundProjects found;
  const auto projects = solution.GetProjects();
  for (int i = 0; i < projects->GetCount(); ++i)
    if (const auto project = projects->GetItem(i); all || ids.contains(project->GetProjectID()))
      found.push_back(project);
  return found;
}

bool TKxCustomVSDotNetAction::NeedsDevEnv(const IVSDotNetSolution& solution,
                                          std::span<const std::u16string> configurations) {
  if (!UsingMSBuild() || solution_.BuildType == TVSDotNetBuildType::btAllProjects) return false;
  const auto projects = ProjectsToBuild(solution);
  return std::ranges::any_of(projects, [configurations](const auto& project) {
    return IsSetupProject(*project) && IsBuiltIn(*project, configurations);
  });
}

std::u16string TKxVSDotNetAction::GetProjectIDFunction(TCustomKxAction& action,
                                                       std::u16string_view argument) {
  return static_cast<TKxVSDotNetAction&>(action).GetProjectID(argument);
}

std::u16string TKxVSDotNetAction::GetProjectNameFunction(TCustomKxAction& action,
                                                         std::u16string_view argument) {
  return static_cast<TKxVSDotNetAction&>(action).GetProjectName(argument);
}

std::u16string TKxVSDotNetAction::GetProjectPathFunction(TCustomKxAction& action,
                                                         std::u16string_view argument) {
  return static_cast<TKxVSDotNetAction&>(action).GetProjectPath(argument);
}

} // namespace kx
