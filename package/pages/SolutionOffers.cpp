#include "package/pages/SolutionOffers.h"

#include "contract/Utilities.h"
#include "foundation/platform/Files.h"
#include "foundation/text/Text.h"
#include "package/buildaction/ProjectSearch.h"
#include "package/solution/VSNETSLN.Folders.h"

#include <algorithm>
#include <map>
#include <unordered_map>

namespace kx {

std::shared_ptr<IVSDotNetSolution> OpenSolutionOf(TKxCustomVSDotNetAction& action, std::u16string_view text,
                                                  const TKxEvent* stop) {
  const std::u16string name = action.ExpandExpression(text);
  if (name.empty()) throw EKxException(u"No solution file is named yet.");
  const std::u16string path = action.FullProjectPath(name);
  if (!platform::FileExists(path))
    throw EKxException(u"Solution File " + DoubleQuoteString(path) + u" does not exist");
  try {
    return LookAtSolution(path, false, stop);
  } catch (const EKxParseError& error) {
    throw EKxException(u"Error Parsing Solution File : " + error.Message() +
                       (error.Line() == 0 ? u"" : u" (line " + text::FromInteger(error.Line()) + u")"));
  }
}

namespace {

// The configurations that a run would build, and in `error` why there are none.
std::vector<std::u16string> ChosenConfigurations(const IVSDotNetSolution& solution,
                                                 TKxCustomVSDotNetAction& action, std::u16string_view wanted,
                                                 bool asExpression, std::u16string& error) {
  try {
    const std::u16string name = action.ExpandExpression(wanted);
    if (name.empty()) { // which as an expression would match them all, but no run takes it
      error = u"No configuration is named yet.";
      return {};
    }
    auto chosen = MatchConfigurations(solution, name, asExpression, error);
    if (chosen.empty() && error.empty())
      error = u"The solution has no configuration " + DoubleQuoteString(name) + u".";
    return chosen;
  } catch (const EKxException& failure) {
    error = failure.Message();
    return {};
  }
}

// What looking for many projects of one solution needs.
class TKnownProjects {
public:
  explicit TKnownProjects(const IVSDotNetSolution& solution) : finder_(solution) {
    const auto projects = solution.GetProjects();
    for (int i = 0; i < projects->GetCount(); ++i)
      ++bearers_[projects->GetItem(i)->GetName()];
  }

  // The project that an entry of a selection means, as a run would find it.
  std::shared_ptr<IVSDotNetProject> ProjectOf(TKxCustomVSDotNetAction& action,
                                              const std::u16string& entry) const {
    if (auto project = Find(entry)) return project;
    const auto expanded = action.ForeseeExpression(entry);
    return expanded ? Find(*expanded) : nullptr;
  }

  // A name that begins like an id would be taken for one; one with references, blanks around it or a namesake
  // may mean another project.
  bool NamesOnly(const IVSDotNetProject& project) const {
    const std::u16string& name = project.GetName();
    if (name.empty() || name.starts_with(u'{') || text::Trim(name) != name) return false;
    if (name.find_first_of(u"%$") != std::u16string::npos) return false;
    const auto found = Find(name);
    return found && found->GetProjectID() == project.GetProjectID() && bearers_.at(name) == 1;
  }

private:
  std::shared_ptr<IVSDotNetProject> Find(std::u16string_view text) const {
    const auto found = finder_.Find(text);
    return found.empty() ? nullptr : found.front();
  }

  TProjectFinder finder_;
  std::unordered_map<std::u16string, int, text::IgnoreCaseHash, text::IgnoreCaseEqual> bearers_; // of a name
};

// What a run would build of the project in each configuration of the solution.
std::vector<std::u16string> ConfigurationsOf(const IVSDotNetProject& project,
                                             const std::vector<TKxFieldOffer>& configurations) {
  std::vector<std::u16string> cells;
  cells.reserve(configurations.size());
  for (const auto& configuration : configurations)
    cells.emplace_back(project.IsActiveConfig(configuration.Value) ? project.GetConfig(configuration.Value)
                                                                   : std::u16string_view());
  return cells;
}

} // namespace

TKxFieldOffers OfferConfigurations(const IVSDotNetSolution& solution, TKxCustomVSDotNetAction& action,
                                   std::u16string_view wanted, bool asExpression) {
  TKxFieldOffers offers;
  const auto chosen = ChosenConfigurations(solution, action, wanted, asExpression, offers.Error);
  const auto known = solution.GetConfigurations();
  for (int i = 0; known && i < known->GetCount(); ++i) {
    const std::u16string& name = known->GetItem(i)->GetName();
    offers.Items.push_back({name, name, std::ranges::find(chosen, name) != chosen.end()});
  }
  if (offers.Items.empty()) offers.Error = u"The solution has no configurations.";
  return offers;
}

TKxFieldOffers OfferProjects(const IVSDotNetSolution& solution, TKxCustomVSDotNetAction& action,
                             const text::TStringList& selected, std::u16string_view configuration,
                             bool asExpression, const TKxEvent* stop) {
  const TKnownProjects known(solution);
  auto folders = ReadSolutionFolders(solution.GetFileName(), stop);
  std::map<std::u16string, std::vector<std::u16string>> lines; // by the id of the project that they mean
  for (const auto& entry : selected)
    if (const auto project = known.ProjectOf(action, entry)) lines[project->GetProjectID()].push_back(entry);
  TKxFieldOffers offers;
  offers.Columns = OfferConfigurations(solution, action, configuration, asExpression).Items;
  const auto projects = solution.GetProjects();
  for (int i = 0; i < projects->GetCount(); ++i) {
    const auto project = projects->GetItem(i);
    const std::u16string& id = project->GetProjectID();
    const auto found = lines.find(id);
    TKxFieldOffer offer{known.NamesOnly(*project) ? project->GetName() : id,
                        project->GetName() + u" (" + project->GetFileName() + u")", found != lines.end()};
    if (offer.Chosen) offer.Lines = found->second;
    offer.Cells = ConfigurationsOf(*project, offers.Columns);
    offer.Folders = std::move(folders[id]);
    offers.Items.push_back(std::move(offer));
  }
  if (offers.Items.empty()) offers.Error = u"The solution has no projects whose files are found.";
  return offers;
}

TKxFieldOffers OfferPropertySets(const text::TStringList& names, std::u16string_view value) {
  TKxFieldOffers offers;
  for (const auto& name : names)
    offers.Items.push_back({name, name, text::EqualsIgnoreCase(name, value)});
  if (offers.Items.empty()) offers.Error = u"The project has no property sets of this kind.";
  return offers;
}

} // namespace kx
