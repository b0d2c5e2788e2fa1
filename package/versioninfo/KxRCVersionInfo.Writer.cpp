#include "foundation/text/Text.h"
#include "package/versioninfo/VersionBlock.h"

namespace kx {

std::size_t FindEndOfBlock(const text::TStringList& lines, std::size_t index, const std::u16string& file) {
  unsigned allowed = HeaderToken | BeginToken;
  int depth = 0;
  for (++index; index < lines.Count(); ++index) {
    const std::u16string_view line = text::Trim(lines[index]);
    if (text::StartsWithIgnoreCase(line, u"BEGIN")) {
      RequireToken(allowed, BeginToken, u"BEGIN", file, index);
      ++depth;
      allowed = BlockToken | EndToken;
    } else if (text::StartsWithIgnoreCase(line, u"END")) {
      RequireToken(allowed, EndToken, u"END", file, index);
      if (--depth == 0) return index + 1;
    } else if (text::StartsWithIgnoreCase(line, u"BLOCK")) {
      RequireToken(allowed, BlockToken, u"BLOCK", file, index);
      allowed = BeginToken | EndToken;
    }
  }
  return index;
}

text::TStringList RewriteVersionBlock(const text::TStringList& lines, const std::u16string& file,
                                      const IVersionInformation& info) {
  text::TStringList rewritten;
  std::size_t index = 0;
  for (; index < lines.Count() && !OpensVersionBlock(lines[index]); ++index)
    rewritten.Add(lines[index]);
  if (index < lines.Count()) index = FindEndOfBlock(lines, index, file);
  rewritten.Add(VersionBlockHeader);
  TVersionInfo::GenerateVersionInfoRC(info, rewritten, false);
  for (; index < lines.Count(); ++index)
    rewritten.Add(lines[index]);
  return rewritten;
}

} // namespace kx
