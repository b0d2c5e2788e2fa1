// The files of the page, compiled in.
#pragma once

#include <string_view>

namespace kx::editor {

extern const std::string_view IndexPage;
extern const std::string_view Style;
extern const std::string_view AppScript;
extern const std::string_view ApiScript;
extern const std::string_view TreeScript;
extern const std::string_view FormScript;
extern const std::string_view ProjectScript;
extern const std::string_view DialogsScript;
extern const std::string_view LogScript;
extern const std::string_view RunScript;
extern const std::string_view ChartsScript;
extern const std::string_view DomScript;

} // namespace kx::editor
