// The version block among the lines of a resource script: pure functions of the lines. `file` is for the
// errors, which are EKxParseError.
#pragma once

#include "host/VersionInfo.h"
#include "text/StringList.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace kx {

// What may come next in a block.
enum : unsigned { HeaderToken = 1U, BeginToken = 2U, BlockToken = 4U, EndToken = 8U, ValueToken = 16U };

bool OpensVersionBlock(std::u16string_view line);
// Raises "Unexpected ..." unless one of the needed tokens is allowed; `index` is the line's, from 0.
void RequireToken(unsigned allowed, unsigned needed, std::u16string_view keyword, const std::u16string& file,
                  std::size_t index);

void ReadVersionBlock(const text::TStringList& lines, const std::u16string& file,
                      IKxVersionInfoCallback& callback);

// The script with its first block replaced; one that has none gets it at the end, one whose block never ends
// loses what comes behind the block's first line.
text::TStringList RewriteVersionBlock(const text::TStringList& lines, const std::u16string& file,
                                      const IVersionInformation& info);

// Whether VS_VERSION_INFO, the name that a rewritten block bears, stands for its number there: where it is
// not defined, the resource gets that name instead, and Windows does not see it. `readInclude` gives the text
// of a file that the script includes by this name, if there is one.
using TReadInclude = std::function<std::optional<std::u16string>(std::u16string_view name)>;
bool DefinesVersionName(const text::TStringList& rewritten, const TReadInclude& readInclude);

} // namespace kx
