// The generations of Visual Studio, one row each: a new one is a value of the enumeration and a row here.
#pragma once

#include "contract/PublishedProperties.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kx {

// The Visual Studio generation of a solution, of a tool's place and of an action's target. Stored as its
// ordinal.
enum class TVSDotNetVersion : std::int32_t { vs2002, vs2003, vs2005, vs2008, vs2010, vsUnknown };

struct TVSDotNetVersionRow {
  std::u16string_view Name; // of the enumeration's value
  std::u16string_view DisplayName;
  std::int32_t Format;             // what the header of its solutions says, before the dot
  std::u16string_view Property;    // of the options: the folder of its executable
  std::u16string_view OptionKey;   // of the same in the store
  std::u16string_view Registry;    // its key below that of all Visual Studios
  std::u16string_view Framework{}; // the one whose MSBuild builds its solutions, without the "v"; empty: none
};

// In the order of the enumeration. The first bears no ".NET" in its name and no year in its option: stores
// and users know it so.
inline constexpr std::array VSDotNetVersions{
    TVSDotNetVersionRow{u"vs2002", u"Visual Studio 2002", 7, u"DevEnvLocation", u"MSDevPath", u"7.0"},
    TVSDotNetVersionRow{u"vs2003", u"Visual Studio.NET 2003", 8, u"DevEnv2003Location", u"MSDevPath2003",
                        u"7.1"},
    TVSDotNetVersionRow{u"vs2005", u"Visual Studio.NET 2005", 9, u"DevEnv2005Location", u"MSDevPath2005",
                        u"8.0", u"2.0"},
    TVSDotNetVersionRow{u"vs2008", u"Visual Studio.NET 2008", 10, u"DevEnv2008Location", u"MSDevPath2008",
                        u"9.0", u"3.5"},
    TVSDotNetVersionRow{u"vs2010", u"Visual Studio.NET 2010", 11, u"DevEnv2010Location", u"MSDevPath2010",
                        u"10.0", u"4.0"},
};
static_assert(VSDotNetVersions.size() == static_cast<std::size_t>(TVSDotNetVersion::vsUnknown));

// Null for vsUnknown and for what a store or a caller may say beyond it.
constexpr const TVSDotNetVersionRow* RowOf(TVSDotNetVersion version) {
  const auto index = static_cast<std::size_t>(version);
  return index < VSDotNetVersions.size() ? &VSDotNetVersions[index] : nullptr;
}

// The framework of a version ("3.5"); empty for one without MSBuild.
constexpr std::u16string_view FrameworkOf(TVSDotNetVersion version) {
  const auto* row = RowOf(version);
  return row == nullptr ? std::u16string_view() : row->Framework;
}

inline constexpr auto VSDotNetVersionNames = [] {
  std::array<std::u16string_view, VSDotNetVersions.size() + 1> names;
  for (std::size_t i = 0; i < VSDotNetVersions.size(); ++i)
    names[i] = VSDotNetVersions[i].Name;
  names.back() = u"vsUnknown";
  return names;
}();
inline constexpr TKxEnumeration VSDotNetVersionEnumeration{u"TVSDotNetVersion", VSDotNetVersionNames};

} // namespace kx
