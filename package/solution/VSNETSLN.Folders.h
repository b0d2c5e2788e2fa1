// The folders in which Visual Studio shows the projects of a solution; no build asks for them.
#pragma once

#include "contract/Process.h"
#include "foundation/text/Text.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

// By the id of a project: the names of the folders around it, the outermost first. What stands in none is not
// there.
using TSolutionFolders = std::map<std::u16string, std::vector<std::u16string>, text::IgnoreCaseLess>;

// Of a file that OpenSolution has read before: what it does not understand it passes over. Raises
// EKxParseError for a file that cannot be read, and EKxException once `stop` is raised.
TSolutionFolders ReadSolutionFolders(std::u16string_view fileName, const TKxEvent* stop);

} // namespace kx
