// The part of a devenv.com command line that all runs of one configuration share.
#pragma once

#include "package/buildaction/BuildSettings.h"

#include <string>
#include <string_view>

namespace kx {

// The verb and the solution configuration; "/useenv " stands in front where it is asked for.
std::u16string DevEnvCommandLine(const TSolutionSettings& settings, std::u16string_view configuration,
                                 TVSDotNetBuildAction buildAction);

} // namespace kx
