// The names by which the parts of a run are called from outside.
#pragma once

#include "contract/Iterator.h"
#include "program/plan/UniqueNames.h"
#include "program/runner/Project.h"
#include "program/runner/Results.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

// Those of a parallel loop that can say them; else none.
std::vector<TKxPass> PassesOf(const TActionNode& node);

// For people, and for programs that take it for a line.
std::u16string InOneLine(std::u16string text);

// Unique in a project, without regard to letter case: "Build (2)", "All projects/Lib". The same whichever of
// the actions are planned.
class TPartIds {
public:
  explicit TPartIds(const TProject& project);

  const std::u16string& Of(std::size_t place) const { return ofActions_[place]; } // of the whole action
  std::u16string OfPass(std::size_t place, const std::u16string& value);          // of its next pass

private:
  std::u16string Take(const std::u16string& name) { return taken_.Take(name, u" (", u")"); }

  TUniqueNames taken_;
  std::vector<std::u16string> ofActions_;
};

// The parts of the whole project's plan, found by their ids. Loops are asked for their passes when an id
// first seems to mean one, so that neither one part costs all of them nor a thousand parts the same ones
// again.
class TPartFinder {
public:
  explicit TPartFinder(const TProject& project); // must outlive it and not change

  // Nothing for an unknown id. Letter case is ignored.
  std::optional<TPartOfRun> Find(const std::u16string& id);

private:
  void AddPartsOf(const std::u16string& action);

  const TProject& project_;
  TPartIds ids_;
  TByName<std::size_t> actions_; // whose parts have not been added yet
  TByName<TPartOfRun> parts_;
};

} // namespace kx
