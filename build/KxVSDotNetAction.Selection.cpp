#include "build/KxVSDotNetAction.h"

#include "build/ProjectSearch.h"
#include "build/VersionStamping.h"

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

const text::TStringList& TKxCustomVSDotNetAction::GetSelectedProjects() {
  SanitiseProjectIDs(solution_.SelectedProjects);
  return solution_.SelectedProjects;
}

const text::TStringList& TKxCustomVSDotNetAction::GetAssemblySelectedProjects() {
  SanitiseProjectIDs(assemblyInfo_.SelectedProjects);
  return assemblyInfo_.SelectedProjects;
}

const text::TStringList& TKxCustomVSDotNetAction::GetResourceSelectedProjects() {
  SanitiseProjectIDs(win32Stamp_.SelectedProjects);
  return win32Stamp_.SelectedProjects;
}

// Entries in braces are ids already. One that stays unresolved is kept; it will match no project.
void TKxCustomVSDotNetAction::SanitiseProjectIDs(text::TStringList& entries,
                                                 std::shared_ptr<IVSDotNetSolution> solution) {
  for (std::size_t i = 0; i < entries.Count(); ++i) {
    const std::u16string entry = entries[i];
    if (entry.starts_with(u'{')) continue;
    if (!solution) solution = TryOpenSolution();
    if (!solution) return;
    std::u16string id = IdOf(*solution, entry);
    if (id.empty()) {
      try {
        id = IdOf(*solution, ExpandExpression(entry));
      } catch (const std::exception&) {
        continue;
      }
    }
    if (!id.empty()) entries.Set(i, id);
  }
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
