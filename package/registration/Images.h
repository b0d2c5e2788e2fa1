// The pictures of the actions and of the options page, under the identifiers of the actions.
#pragma once

#include <array>
#include <string_view>

namespace kx {

struct TPackageImage {
  std::u16string_view Name;
  std::string_view Svg;
};

// 16 by 16 units, one colour a meaning: blue for solutions, green for what succeeded, grey for files.
inline constexpr std::array<TPackageImage, 4> PackageImages{{
    // A solution, built: a box with a mark on it.
    {u"DEVENV", R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 16 16">
  <path fill="#2a6fb0" d="M1 4.5 8 1l7 3.5v7L8 15l-7-3.5z"/>
  <path fill="none" stroke="#fff" stroke-width="1.8" d="m4.5 8 2.5 2.5 4.5-5"/>
</svg>
)"},
    // A test tube.
    {u"MSTEST", R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 16 16">
  <path fill="none" stroke="#555" stroke-width="1.2" d="M4.5 1h7M5.5 1v11a2.5 2.5 0 0 0 5 0V1"/>
  <path fill="#3a8f3a" d="M6.1 7h3.8v5a1.9 1.9 0 0 1-3.8 0z"/>
</svg>
)"},
    // A label with a version on it.
    {u"VERSIONINFO", R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 16 16">
  <path fill="#555" d="M1 3h10l4 5-4 5H1z"/>
  <path fill="none" stroke="#fff" stroke-width="1.5" d="m3.5 5.5 1.8 5 1.8-5"/>
  <path fill="#fff" d="M8.5 9h1.5v1.5H8.5z"/>
</svg>
)"},
    // Three projects, and the way around them.
    {u"SOLUTIONITERATOR", R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 16 16">
  <path fill="#2a6fb0" d="M1 1h5v3.5H1zM1 6.25h5v3.5H1zM1 11.5h5V15H1z"/>
  <path fill="none" stroke="#3a8f3a" stroke-width="1.5" d="M8 2.75h3a3 3 0 0 1 3 3v4.5a3 3 0 0 1-3 3H9"/>
  <path fill="#3a8f3a" d="m10.5 10.5-3.5 2.75 3.5 2.75z"/>
</svg>
)"},
}};

} // namespace kx
