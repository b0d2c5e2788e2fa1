// The selections of the Build action: lists in which users and saved projects name projects of the solution.
#pragma once

#include "solution/VSNETSLN.h"
#include "text/StringList.h"

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

struct TUnresolvedEntry {
  std::u16string Entry;   // as the user wrote it
  std::u16string Meant;   // with its expressions expanded
  std::u16string Failure; // why they could not be
};
struct TGuessedEntry {
  std::u16string Entry;
  std::vector<std::shared_ptr<IVSDotNetProject>> Projects; // the first of them is taken
};

struct TResolvedSelection {
  // Of the entries, in their order, as the solution spells them; an entry that means no project stands as it
  // is.
  text::TStringList Ids;
  std::vector<TUnresolvedEntry> Unresolved;
  std::vector<TGuessedEntry> Guessed; // entries that could mean several projects
};

// Expands a text; raises for one that it cannot expand.
using TExpandText = std::function<std::u16string(std::u16string_view text)>;

// Each entry is an id in braces or whatever else FindProject knows a project by, as it stands or after its
// expressions were expanded.
TResolvedSelection ResolveSelection(const IVSDotNetSolution& solution, const text::TStringList& entries,
                                    const TExpandText& expand);

// For users: why the entry means no project, with the nearest name; what was taken for it.
std::u16string Explain(const IVSDotNetSolution& solution, const TUnresolvedEntry& entry);
std::u16string Explain(const IVSDotNetSolution& solution, const TGuessedEntry& entry);

// For users: those of the projects that cannot be told apart. Projects are built by their identifiers, so of
// several that share one the first is built each time. Empty where there are none.
std::u16string ExplainSharedIdentifiers(const IVSDotNetSolution& solution,
                                        std::span<const std::shared_ptr<IVSDotNetProject>> projects);

} // namespace kx
