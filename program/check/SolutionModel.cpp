#include "program/check/SolutionModel.h"

#include "foundation/text/Text.h"
#include "package/solution/VSNETSLN.Model.h"

#include <map>

namespace kx::check {

std::vector<std::shared_ptr<IVSDotNetProject>> ModelOf(const TSolutionFacts& facts, bool withOldNeeds) {
  std::multimap<std::u16string_view, const TOldNeed*, text::IgnoreCaseLess> oldNeeds;
  if (withOldNeeds)
    for (const TOldNeed& need : facts.OldNeeds)
      oldNeeds.emplace(need.Owner, &need);
  std::vector<std::shared_ptr<IVSDotNetProject>> projects;
  projects.reserve(facts.Projects.size());
  for (const TSolutionProject& project : facts.Projects) {
    auto model = std::make_shared<TVSDotNetProject>(project.Name, project.Path, project.Id, project.TypeId,
                                                    TProjectResources());
    for (const TLineText& need : project.Needs)
      model->GetDependancies()->Add(need.Text, need.Line);
    const auto [first, last] = oldNeeds.equal_range(project.Id);
    for (auto need = first; need != last; ++need)
      model->GetDependancies()->Add(need->second->Needed, need->second->Line);
    projects.push_back(std::move(model));
  }
  return projects;
}

std::u16string Shortlist(const std::vector<std::u16string>& names) {
  constexpr std::size_t most = 5;
  const std::size_t shown = names.size() <= most + 1 ? names.size() : most;
  std::u16string list = text::Join(std::span(names).first(shown), u", ");
  if (shown < names.size())
    list += u" and " + text::FromInteger(static_cast<std::int64_t>(names.size() - shown)) + u" more";
  return list;
}

} // namespace kx::check
