#include "pages/SolutionOffers.h"

#include "build/ProjectSearch.h"
#include "host/Utilities.h"
#include "platform/Files.h"
#include "text/Text.h"

#include <algorithm>
#include <set>

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

TKxFieldOffers OfferConfigurations(const IVSDotNetSolution& solution, std::u16string_view wanted,
                                   bool asExpression) {
  TKxFieldOffers offers;
  const auto chosen = MatchConfigurations(solution, wanted, asExpression, offers.Error);
  const auto known = solution.GetConfigurations();
  for (int i = 0; known && i < known->GetCount(); ++i) {
    const std::u16string& name = known->GetItem(i)->GetName();
    offers.Items.push_back({name, name, std::ranges::find(chosen, name) != chosen.end()});
  }
  if (offers.Items.empty())
    offers.Error = u"The solution has no configurations.";
  else if (chosen.empty() && !wanted.empty() && offers.Error.empty())
    offers.Error = u"The solution has no configuration " + DoubleQuoteString(wanted) + u".";
  return offers;
}

TKxFieldOffers OfferProjects(const IVSDotNetSolution& solution, const text::TStringList& selected) {
  std::set<std::u16string> chosen;
  for (const auto& entry : selected)
    if (const auto project = FindProject(solution, entry)) chosen.insert(project->GetProjectID());
  TKxFieldOffers offers;
  const auto projects = solution.GetProjects();
  for (int i = 0; i < projects->GetCount(); ++i) {
    const auto project = projects->GetItem(i);
    offers.Items.push_back({project->GetProjectID(),
                            project->GetName() + u" (" + project->GetFileName() + u")",
                            chosen.contains(project->GetProjectID())});
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
