// How the files of a web project, which a solution names by its address, are found.
#pragma once

#include "contract/PublishedProperties.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace kx {

// Stored as its ordinal.
enum class TProjLocDetectMethod : std::int32_t { useWMI, useShare, useWebDAV };

inline constexpr std::array<std::u16string_view, 3> ProjLocDetectMethodNames{u"useWMI", u"useShare",
                                                                             u"useWebDAV"};
inline constexpr TKxEnumeration ProjLocDetectMethodEnumeration{u"TProjLocDetectMethod",
                                                               ProjLocDetectMethodNames};

} // namespace kx
