#include "package/buildaction/KxVSDotNetAction.h"

#include "contract/LookAhead.h"
#include "contract/Utilities.h"
#include "package/buildaction/ProjectSearch.h"
#include "package/buildaction/ProjectSelection.h"
#include "package/buildaction/VersionStamping.h"

#include <algorithm>
#include <optional>
#include <set>

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

// A solution, and who finds its projects.
class TKxCustomVSDotNetAction::TLookedAt {
public:
  explicit TLookedAt(std::shared_ptr<IVSDotNetSolution> solution) : solution_(std::move(solution)) {}
  const std::shared_ptr<IVSDotNetSolution>& Solution() const { return solution_; }
  const TProjectFinder& Projects() {
    if (!projects_) projects_.emplace(*solution_);
    return *projects_;
  }

private:
  std::shared_ptr<IVSDotNetSolution> solution_;
  std::optional<TProjectFinder> projects_;
};

// A plan asks thousands of actions, and passes of one action, about one solution.
std::shared_ptr<TKxCustomVSDotNetAction::TLookedAt> TKxCustomVSDotNetAction::TryLookAt() {
  if (opening_) return nullptr;
  const TFlagGuard guard(opening_);
  try {
    const std::u16string name = ExpandExpression(solution_.Solution);
    if (name.empty()) return nullptr;
    const std::u16string file = FullProjectPath(name);
    return std::static_pointer_cast<TLookedAt>(TKxAskingScope::Read(u"solution " + file, [&] {
      return std::make_shared<TLookedAt>(LookAtSolution(file, false, &Host().Stop()));
    }));
  } catch (const std::exception&) {
    return nullptr;
  }
}

std::shared_ptr<IVSDotNetSolution> TKxCustomVSDotNetAction::TryOpenSolution() {
  const auto seen = TryLookAt();
  return seen ? seen->Solution() : nullptr;
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

void TKxCustomVSDotNetAction::GetFilesToRead(text::TStringList& files) {
  const auto solution = TryOpenSolution();
  if (!solution) return;
  files.Add(solution->GetFileName());
  const auto projects = solution->GetProjects();
  const auto add = [&](const auto& project) { files.Add(ProjectPath(*solution, *project)); };
  if (solution_.BuildType != TVSDotNetBuildType::btSelectedProjects) {
    for (int i = 0; i < projects->GetCount(); ++i)
      add(projects->GetItemInFileOrder(i));
    return;
  }
  // The tools build what the selected ones need, too.
  const text::TStringList selected = GetSelectedProjects();
  std::vector<std::u16string> ids(selected.begin(), selected.end());
  std::set<std::u16string> known(selected.begin(), selected.end());
  for (std::size_t i = 0; i < ids.size(); ++i) {
    const auto project = projects->FindByID(ids[i]);
    if (!project) continue;
    add(project);
    const auto needs = project->GetDependancies();
    for (const auto& id : needs->GetList())
      if (known.insert(id).second) ids.push_back(id);
  }
}

void TKxCustomVSDotNetAction::GetRequirements(text::TStringList& words) const {
  if (const auto* version = RowOf(solution_.VStudioVersion)) words.Add(version->Name);
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
  const auto seen = TryLookAt();
  if (!seen) return entries;
  text::TStringList ids =
      ResolveSelection(seen->Projects(), entries, [this](auto text) { return ExpandExpression(text); }).Ids;
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
