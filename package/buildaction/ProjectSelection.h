// The selections of the Build action: lists in which users and saved projects name projects of the solution.
#pragma once

#include "foundation/text/StringList.h"
#include "foundation/text/Text.h"
#include "package/buildaction/ProjectSearch.h"

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
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
// The same, with a finder of the solution's projects.
TResolvedSelection ResolveSelection(const TProjectFinder& projects, const text::TStringList& entries,
                                    const TExpandText& expand);

// For users: why an entry means no project, with the nearest name; what was taken for it. The solution
// outlives it. After many entries names are compared no more: somebody has chosen another solution.
class TSelectionExplanations {
public:
  explicit TSelectionExplanations(const IVSDotNetSolution& solution) : solution_(solution) {}
  std::u16string Explain(const TUnresolvedEntry& entry);
  std::u16string Explain(const TGuessedEntry& entry) const;

private:
  std::shared_ptr<IVSDotNetProject> FindMissing(std::u16string_view text);
  std::u16string NearestProject(std::u16string_view text);

  const IVSDotNetSolution& solution_;
  std::shared_ptr<IVSDotNetSolution> whole_; // with the projects that are not on disk, once it is needed
  std::optional<TProjectFinder> finder_;     // of the whole; none when it cannot be read any more
  std::size_t compared_ = 0;                 // names, for suggestions
};

// Sets of ids, for those who ask about many.
using TProjectIds = std::unordered_set<std::u16string, text::IgnoreCaseHash, text::IgnoreCaseEqual>;
inline TProjectIds SetOf(const text::TStringList& ids) {
  return {ids.begin(), ids.end()};
}

// For users: those of the projects that cannot be told apart. Projects are built by their identifiers, so of
// several that share one the first is built each time. Empty where there are none.
std::u16string ExplainSharedIdentifiers(const IVSDotNetSolution& solution,
                                        std::span<const std::shared_ptr<IVSDotNetProject>> projects);

} // namespace kx
