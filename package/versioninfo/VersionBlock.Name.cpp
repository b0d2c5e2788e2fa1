#include "package/versioninfo/VersionBlock.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>
#include <array>
#include <set>

namespace kx {

namespace {

// The headers that define the name or include one that does: those of the Windows SDK
// (https://learn.microsoft.com/windows/win32/menurc/versioninfo-resource), of 16-bit Windows (ver.h), MFC
// (afxres.h, winres.h), ATL and Windows CE (newres.h).
constexpr std::array<std::u16string_view, 9> DefiningHeaders{u"afxres.h",  u"atlres.h",   u"newres.h",
                                                             u"ver.h",     u"verrsrc.h",  u"winver.h",
                                                             u"windows.h", u"winresrc.h", u"winres.h"};

class TNameSearch {
public:
  explicit TNameSearch(const TReadInclude& readInclude) : readInclude_(readInclude) {}

  // Looks at the lines before the version block: the name must be known by then.
  template <typename TLines>
  bool Look(const TLines& lines, int depth = 0) {
    bool inComment = false;
    for (const auto& line : lines) {
      if (depth == 0 && OpensVersionBlock(line)) return false;
      if (!inComment && LookAtDirective(text::Trim(line), depth)) return true;
      inComment = EndsInComment(line, inComment);
    }
    return false;
  }

private:
  static constexpr int MaxDepth = 16;
  static constexpr std::size_t MaxFiles = 200;

  bool LookAtDirective(std::u16string_view line, int depth) {
    if (!line.starts_with(u'#')) return false;
    line = text::TrimLeft(line.substr(1));
    if (line.starts_with(u"define")) return text::TrimLeft(line.substr(6)).starts_with(u"VS_VERSION_INFO");
    if (!line.starts_with(u"include")) return false;
    line = text::TrimLeft(line.substr(7));
    if (line.empty() || (line[0] != u'"' && line[0] != u'<')) return false;
    const std::size_t end = line.find(line[0] == u'"' ? u'"' : u'>', 1);
    return end != std::u16string_view::npos && LookIntoInclude(line.substr(1, end - 1), depth + 1);
  }

  bool LookIntoInclude(std::u16string_view name, int depth) {
    const std::u16string file = text::ExtractFileName(name);
    if (std::ranges::any_of(DefiningHeaders, [&file](std::u16string_view header) {
          return text::EqualsIgnoreCase(header, file);
        }))
      return true;
    if (depth > MaxDepth || seen_.size() >= MaxFiles || !seen_.emplace(name).second) return false;
    const std::optional<std::u16string> content = readInclude_(name);
    return content && Look(text::SplitLines(*content), depth);
  }

  static bool EndsInComment(std::u16string_view line, bool inComment) {
    for (std::size_t at = 0; at < line.size();) {
      const std::size_t found = line.find(inComment ? u"*/" : u"/*", at);
      if (found == std::u16string_view::npos) break;
      inComment = !inComment;
      at = found + 2;
    }
    return inComment;
  }

  const TReadInclude& readInclude_;
  std::set<std::u16string, text::IgnoreCaseLess> seen_;
};

} // namespace

bool DefinesVersionName(const text::TStringList& rewritten, const TReadInclude& readInclude) {
  return TNameSearch(readInclude).Look(rewritten);
}

} // namespace kx
