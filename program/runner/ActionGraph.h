// Which action of a project comes behind which.
#pragma once

#include "program/runner/Project.h"
#include "program/runner/Schedule.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace kx {

// Those of the outermost level, in TProject::Actions().
std::vector<std::size_t> AllPlaces(const TProject& project);

// The actions of the outermost level, by their places in TProject::Actions(), and their needs. An action
// without Needs needs that the run goes on behind the one before it: in a group, the one before it there; the
// first of a group, and the one behind a group, whatever stands before. What a group needs, each of its
// actions needs.
class TActionGraph {
public:
  // Raises EKxParseError "file(line): ..." for a need that means nothing (with the nearest name) or two
  // things, and for actions that need each other in a circle. The project outlives the graph, and keeps its
  // actions.
  explicit TActionGraph(const TProject& project);

  std::span<const TActionNeed> NeedsOf(std::size_t action) const { return needs_.at(action); }
  // One after the other, as the file has them: no needs, no group, no loop whose passes may run side by side.
  bool IsPlain() const { return isPlain_; }
  // The places of these actions and groups (letter case does not count) and of all that they need, in the
  // order of the file. Raises EKxException for a name that means nothing or two things.
  std::vector<std::size_t> Select(std::span<const std::u16string> names) const;

private:
  const TProject& project_;
  bool isPlain_;
  std::vector<std::vector<TActionNeed>> needs_;
};

} // namespace kx
