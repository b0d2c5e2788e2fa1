// Build logs as users have them: of any size, in the encoding of whatever console or redirection wrote them.
#pragma once

#include "foundation/platform/Files.h"
#include "foundation/text/Exceptions.h"

#include <functional>
#include <string>
#include <string_view>

namespace kx::cli {

// Raises EUsage for a name that is no encoding's.
void RequireEncoding(std::u16string_view name);

// Gives every line of a log, decoded, without its line end (LF or CR LF), holding one block of the file in
// memory. The encoding is the one named (a code page's number or name, "utf-8", "utf-16le", "utf-16be"), or
// found: by byte-order mark, else UTF-8 when the whole file is well-formed, else Windows-1252 or code page
// 850, whichever its accented letters fit better. Raises EKxException for a file that cannot be read, and as
// RequireEncoding does.
void ForEachLogLine(const std::u16string& file, std::u16string_view encoding,
                    const std::function<void(std::u16string_view line)>& handle);

} // namespace kx::cli
