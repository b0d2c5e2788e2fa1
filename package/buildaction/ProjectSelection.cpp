#include "package/buildaction/ProjectSelection.h"

#include "contract/Utilities.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <map>

namespace kx {

namespace {

std::u16string SolutionName(const IVSDotNetSolution& solution) {
  return text::ExtractFileName(solution.GetFileName());
}

} // namespace

TResolvedSelection ResolveSelection(const IVSDotNetSolution& solution, const text::TStringList& entries,
                                    const TExpandText& expand) {
  return entries.IsEmpty() ? TResolvedSelection()
                           : ResolveSelection(TProjectFinder(solution), entries, expand);
}

TResolvedSelection ResolveSelection(const TProjectFinder& projects, const text::TStringList& entries,
                                    const TExpandText& expand) {
  TResolvedSelection resolved;
  for (const auto& entry : entries) {
    TUnresolvedEntry failed{entry, entry, {}};
    TFoundProjects found = projects.Find(entry);
    if (found.empty() && !entry.starts_with(u'{')) {
      try {
        failed.Meant = expand(entry);
        found = projects.Find(failed.Meant);
      } catch (const std::exception& error) {
        failed.Failure = MessageOf(error);
      }
    }
    resolved.Ids.Add(found.empty() ? entry : found.front()->GetProjectID());
    if (found.empty()) resolved.Unresolved.push_back(std::move(failed));
    if (found.size() > 1) resolved.Guessed.push_back({entry, std::move(found)});
  }
  return resolved;
}

// The project as the solution names it although its file is missing; null when it does not name it at all.
std::shared_ptr<IVSDotNetProject> TSelectionExplanations::FindMissing(std::u16string_view text) {
  if (whole_ == nullptr) {
    try {
      whole_ = LookAtSolution(solution_.GetFileName(), true);
      finder_.emplace(*whole_);
    } catch (const std::exception&) {
      return nullptr;
    }
  }
  const auto found = finder_->Find(text);
  return found.empty() ? nullptr : found.front();
}

std::u16string TSelectionExplanations::NearestProject(std::u16string_view text) {
  constexpr std::size_t longestName = 200;        // what is longer is no misspelt name
  constexpr std::size_t mostCompared = 1'000'000; // a second or two
  if (text.size() > longestName || compared_ >= mostCompared) return {};
  std::vector<std::u16string> names;
  const auto projects = solution_.GetProjects();
  for (int i = 0; i < projects->GetCount(); ++i) {
    const auto project = projects->GetItem(i);
    for (const auto& name : {project->GetName(), project->GetFileName(), project->GetProjectID()})
      names.push_back(name);
  }
  compared_ += names.size();
  return text::NearestName(text, names);
}

std::u16string TSelectionExplanations::Explain(const TUnresolvedEntry& entry) {
  if (!entry.Failure.empty()) return entry.Failure;
  if (const auto project = FindMissing(entry.Meant))
    return u"The file of the project " + DoubleQuoteString(project->GetName()) + u" does not exist: " +
           ProjectPath(solution_, *project);
  const std::u16string nearest = NearestProject(entry.Meant);
  return SolutionName(solution_) + u" has no project " + DoubleQuoteString(entry.Meant) + u"." +
         (nearest.empty() ? std::u16string() : u" Did you mean " + DoubleQuoteString(nearest) + u"?");
}

std::u16string TSelectionExplanations::Explain(const TGuessedEntry& entry) const {
  return SolutionName(solution_) + u" has " +
         text::FromInteger(static_cast<std::int64_t>(entry.Projects.size())) + u" projects " +
         DoubleQuoteString(entry.Entry) + u". Taken is " + entry.Projects.front()->GetFileName() +
         u"; name the file instead.";
}

std::u16string ExplainSharedIdentifiers(const IVSDotNetSolution& solution,
                                        std::span<const std::shared_ptr<IVSDotNetProject>> projects) {
  std::map<std::u16string, std::shared_ptr<IVSDotNetProject>, text::IgnoreCaseLess> firsts;
  std::u16string shared;
  for (const auto& project : projects) {
    const auto& first = firsts.try_emplace(project->GetProjectID(), project).first->second;
    if (text::EqualsIgnoreCase(first->GetFileName(), project->GetFileName())) continue;
    shared += (shared.empty() ? u"" : u"; ") + first->GetFileName() + u" and " + project->GetFileName() +
              u" have " + project->GetProjectID();
  }
  if (shared.empty()) return {};
  return SolutionName(solution) + u" gives different projects one identifier: " + shared +
         u". Only the first of them is built. Give the others identifiers of their own, or build the whole "
         u"solution (BuildType btAllProjects).";
}

} // namespace kx
