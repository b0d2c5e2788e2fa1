#include "build/ProjectSelection.h"

#include "build/ProjectSearch.h"
#include "host/Utilities.h"
#include "text/Text.h"
#include "text/WindowsPath.h"

#include <map>

namespace kx {

namespace {

std::u16string SolutionName(const IVSDotNetSolution& solution) {
  return text::ExtractFileName(solution.GetFileName());
}

// The project as the solution names it although its file is missing; null when it does not name it at all.
std::shared_ptr<IVSDotNetProject> FindMissingProject(const IVSDotNetSolution& solution,
                                                     std::u16string_view text) {
  try {
    return FindProject(*LookAtSolution(solution.GetFileName(), true), text);
  } catch (const std::exception&) {
    return nullptr;
  }
}

std::u16string NearestProject(const IVSDotNetSolution& solution, std::u16string_view text) {
  constexpr std::size_t longestName = 200; // what is longer is no misspelt name
  if (text.size() > longestName) return {};
  std::vector<std::u16string> names;
  const auto projects = solution.GetProjects();
  for (int i = 0; i < projects->GetCount(); ++i) {
    const auto project = projects->GetItem(i);
    for (const auto& name : {project->GetName(), project->GetFileName(), project->GetProjectID()})
      names.push_back(name);
  }
  return text::NearestName(text, names);
}

} // namespace

TResolvedSelection ResolveSelection(const IVSDotNetSolution& solution, const text::TStringList& entries,
                                    const TExpandText& expand) {
  TResolvedSelection resolved;
  for (const auto& entry : entries) {
    TUnresolvedEntry failed{entry, entry, {}};
    TFoundProjects found = FindProjects(solution, entry);
    if (found.empty() && !entry.starts_with(u'{')) {
      try {
        failed.Meant = expand(entry);
        found = FindProjects(solution, failed.Meant);
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

std::u16string Explain(const IVSDotNetSolution& solution, const TUnresolvedEntry& entry) {
  if (!entry.Failure.empty()) return entry.Failure;
  if (const auto project = FindMissingProject(solution, entry.Meant))
    return u"The file of the project " + DoubleQuoteString(project->GetName()) + u" does not exist: " +
           ProjectPath(solution, *project);
  const std::u16string nearest = NearestProject(solution, entry.Meant);
  return SolutionName(solution) + u" has no project " + DoubleQuoteString(entry.Meant) + u"." +
         (nearest.empty() ? std::u16string() : u" Did you mean " + DoubleQuoteString(nearest) + u"?");
}

std::u16string Explain(const IVSDotNetSolution& solution, const TGuessedEntry& entry) {
  return SolutionName(solution) + u" has " +
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
