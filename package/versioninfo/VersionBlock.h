// The version block among the lines of a resource script: pure functions of the lines. `file` is for the
// errors, which are EKxParseError.
#pragma once

#include "foundation/text/StringList.h"
#include "package/versioninfo/VersionInfo.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

// What may come next in a block.
enum : unsigned { HeaderToken = 1U, BeginToken = 2U, BlockToken = 4U, EndToken = 8U, ValueToken = 16U };

bool OpensVersionBlock(std::u16string_view line);
// Raises "Unexpected ..." unless one of the needed tokens is allowed; `index` is the line's, from 0.
void RequireToken(unsigned allowed, unsigned needed, std::u16string_view keyword, const std::u16string& file,
                  std::size_t index);

void ReadVersionBlock(const text::TStringList& lines, const std::u16string& file,
                      IKxVersionInfoCallback& callback);

// The index of the line behind the block whose first line is at `index`.
std::size_t FindEndOfBlock(const text::TStringList& lines, std::size_t index, const std::u16string& file);

// The script with its first block replaced; one that has none gets it at the end, one whose block never ends
// loses what comes behind the block's first line.
text::TStringList RewriteVersionBlock(const text::TStringList& lines, const std::u16string& file,
                                      const IVersionInformation& info);

// A version block as a resource compiler understands it.
struct TVersionBlockContent {
  struct TItem {
    std::u16string Name;
    std::u16string Written; // as the script has it, but for blanks
    std::u16string Value;   // the same for everything that compiles to the same
  };
  std::size_t Begin = 0;   // the index of its first line, the number of lines where there is none
  std::size_t End = 0;     // behind its last line
  std::vector<TItem> Head; // the statements before the first BEGIN, and the translations
  std::vector<std::u16string> Languages; // the names of the blocks of texts, in lower case
  std::vector<TItem> Texts;              // of the first language
  std::vector<std::u16string> Extras;    // comments, directives and whatever else stands in it, each once
};
// With `doubleByte` a backslash behind a character that is not ASCII is its second half.
TVersionBlockContent ReadVersionBlockContent(const text::TStringList& lines, bool doubleByte);

// What a pragma before the version block says, if one does.
std::optional<unsigned> CodePageOfVersionBlock(const text::TStringList& lines);

// What rewriting the block would change or leave out though `info` does not ask for it, as sentences without
// the file's name. Raises as RewriteVersionBlock does.
text::TStringList FindLosses(const text::TStringList& lines, const std::u16string& file,
                             const IVersionInformation& info);

// Whether VS_VERSION_INFO, the name that a rewritten block bears, stands for its number there: where it is
// not defined, the resource gets that name instead, and Windows does not see it. `readInclude` gives the text
// of a file that the script includes by this name, if there is one.
using TReadInclude = std::function<std::optional<std::u16string>(std::u16string_view name)>;
bool DefinesVersionName(const text::TStringList& rewritten, const TReadInclude& readInclude);

} // namespace kx
