// Versions as the attributes of an assembly take them: parts joined by dots.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kx {

// Without the empty parts at the end: "2..." is "2", "1.0.*." is "1.0.*".
std::u16string TrimAssemblyVersion(std::u16string_view version);

// AssemblyVersion and AssemblyFileVersion, in whose values compilers look for numbers.
bool IsAssemblyVersionAttribute(std::u16string_view attribute);

// Why no compiler takes this value of one of the two, as text for the user; nothing where one does. Empty
// parts at the end do not count. One to four numbers of 0 to 65534 are taken (65535 in a file version), and
// "*" for the last two or the last of four.
std::optional<std::u16string> CheckAssemblyVersion(std::u16string_view attribute,
                                                   std::u16string_view version);

} // namespace kx
