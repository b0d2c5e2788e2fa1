// From the elements of a project file to the project.
#pragma once

#include "program/runner/Project.h"
#include "program/runner/ProjectXml.h"

#include <string>
#include <string_view>
#include <vector>

namespace kx {

// Fills the project. Raises EKxParseError with file and line for whatever a project file cannot hold; the
// project is then filled in part.
void ReadProject(const TProjectElement& root, std::u16string_view fileName, TProject& project);

// The element that holds the actions of a project or of a loop; null when there is none.
const TProjectElement* ActionsOf(const TProjectElement& element);

bool IsGroup(const TProjectElement& element); // which stands among the actions of a project

// One of the actions in it, and the element that it stands in: that one, or a group there.
struct TActionElement {
  const TProjectElement* Action;
  const TProjectElement* Holder;
};
// All of them in the order of the file, those of groups among them; the elements are those of `element`.
std::vector<TActionElement> ActionElementsOf(const TProjectElement& element);

} // namespace kx
