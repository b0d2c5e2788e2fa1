// Names in the languages of diagrams: nothing in them can break out. They hold no control characters.
#pragma once

#include <string>
#include <string_view>

namespace kx {

std::string DotText(std::u16string_view name);  // of an identifier, between its quotation marks
std::string DotLabel(std::u16string_view text); // of what is shown, between its quotation marks
std::string MermaidText(std::u16string_view text);

} // namespace kx
