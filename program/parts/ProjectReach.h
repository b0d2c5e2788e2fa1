// What projects take from, and leave in, places outside of their own folders.
#pragma once

#include "foundation/text/Text.h"

#include <optional>
#include <set>
#include <span>
#include <string>

namespace kx {

using TPathSet = std::set<std::u16string, text::IgnoreCaseLess>; // full paths

struct TReach {
  TPathSet ProjectFolders; // of the projects, and of those that they refer to
  TPathSet Folders;        // of sources, libraries and products that they name elsewhere
  TPathSet Files;          // the same
};

// Whatever in the files looks like a path that leads out of the project's folder counts: a linked source, a
// library, a property sheet (which is read, too), a folder for products. Where a variable stands in a path
// that is not known here, it is the folder in front of it. What is not there, or belongs to the tools, is
// left out. `inputs`: full paths; those that are neither solutions nor projects are not looked into. Nothing
// when one cannot be read.
std::optional<TReach> ReachOf(std::span<const std::u16string> inputs);

} // namespace kx
