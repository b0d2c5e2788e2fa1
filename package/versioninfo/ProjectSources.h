// What a project file says of its sources: the projects of Visual Studio 2002 and 2003 (<File
// RelPath="...">), C++ projects (<File RelativePath="...">) and those of MSBuild (<Compile Include="...">).
#pragma once

#include "package/assemblyinfo/AssemblyInfo.h"

#include <string>
#include <string_view>

namespace kx {

// The path of the AssemblyInfo file that a project file names, as far as it can be told without other files;
// empty when it names none. The first item that is compiled and whose file name is "AssemblyInfo" with one
// extension, else whose path ends in "AssemblyInfo" with letters, digits, "_", "|" or "." behind it; where no
// such item is compiled, the first of the others. Letter case is ignored. Raises EKxException for a file that
// cannot be opened, EKxParseError for XML that cannot be read; what is no XML (setup projects) names none.
std::u16string FindAssemblyInfoName(std::u16string_view projectFile, std::u16string_view solutionFolder);

// All that a project compiles: links, lists, wildcards and imported files included. An item under a condition
// counts. Empty when the file cannot be read.
TAssemblyInfoUnit ReadProjectSources(std::u16string_view name, std::u16string_view projectFile,
                                     std::u16string_view solutionFolder);

} // namespace kx
