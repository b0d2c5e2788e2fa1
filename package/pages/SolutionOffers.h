// What the solution of a Build action holds, and the property sets of its project: for the fields that name
// one of them.
#pragma once

#include "contract/PageFields.h"
#include "package/buildaction/KxVSDotNetAction.h"

#include <memory>
#include <string>
#include <string_view>

namespace kx {

// Opens the solution that `text` names, as the action would when it runs. Raises EKxException that says why
// it cannot be opened; `stop` ends a long search.
std::shared_ptr<IVSDotNetSolution> OpenSolutionOf(TKxCustomVSDotNetAction& action, std::u16string_view text,
                                                  const TKxEvent* stop);

// The solution's configurations; chosen are those that a run would build for `wanted`, which may hold
// variables.
TKxFieldOffers OfferConfigurations(const IVSDotNetSolution& solution, TKxCustomVSDotNetAction& action,
                                   std::u16string_view wanted, bool asExpression);

// The solution's projects in build order, by their names, or by their ids where a name would not mean just
// this one; chosen are those that an entry of `selected` means. The columns are the solution's configurations
// as OfferConfigurations gives them; the cells say what is built of a project in them, empty: it is not
// built.
TKxFieldOffers OfferProjects(const IVSDotNetSolution& solution, TKxCustomVSDotNetAction& action,
                             const text::TStringList& selected, std::u16string_view configuration,
                             bool asExpression, const TKxEvent* stop);

// Property sets of the project by their names; chosen is the one that `value` names.
TKxFieldOffers OfferPropertySets(const text::TStringList& names, std::u16string_view value);

} // namespace kx
