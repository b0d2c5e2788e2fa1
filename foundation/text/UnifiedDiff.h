// The difference of two texts in the form that patch tools read.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kx::text {

// Hunks with three lines of context ("@@ -1,4 +1,5 @@" and lines that begin with " ", "-" or "+"), one entry
// a line and without the names of files before them; empty when no line differs. Line ends are not compared.
std::vector<std::u16string> UnifiedDiff(std::u16string_view before, std::u16string_view after);

} // namespace kx::text
