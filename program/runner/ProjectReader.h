// From the elements of a project file to the project.
#pragma once

#include "program/runner/Project.h"
#include "program/runner/ProjectXml.h"

#include <string>
#include <string_view>

namespace kx {

// Fills the project. Raises EKxParseError with file and line for whatever a project file cannot hold; the
// project is then filled in part.
void ReadProject(const TProjectElement& root, std::u16string_view fileName, TProject& project);

// The element that holds the actions of a project or of a loop; null when there is none.
const TProjectElement* ActionsOf(const TProjectElement& element);

} // namespace kx
