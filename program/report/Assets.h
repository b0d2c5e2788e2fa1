// What a report's page consists of beside its content; the files of the same names, compiled in.
#pragma once

#include <string_view>

namespace kx::assets {

extern const std::string_view Theme;         // theme.css, which the editor shares
extern const std::string_view TimelineStyle; // timeline.css, the same
extern const std::string_view ReportStyle;   // report.css
extern const std::string_view ReportScript;  // report.js

} // namespace kx::assets
