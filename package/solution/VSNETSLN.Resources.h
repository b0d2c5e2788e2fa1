// Which resource scripts a C++ project compiles, and which of them holds a version resource.
#pragma once

#include "foundation/platform/Files.h"
#include "foundation/text/StringList.h"

#include <string>
#include <string_view>

namespace kx {

struct TProjectResources {
  text::TStringList Files;        // full paths in the order of the project file, duplicates kept
  std::u16string WithVersionInfo; // the first of them that mentions VERSIONINFO, or empty
};

// A project file that is missing or of another kind has no scripts. Raises EKxParseError for a C++ project
// file that cannot be read. A script that cannot be read stays in the list and holds no version resource.
TProjectResources ScanForResources(std::u16string_view projectFile, platform::FileLookup& files);

} // namespace kx
