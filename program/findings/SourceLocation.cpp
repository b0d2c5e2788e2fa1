#include "program/findings/SourceLocation.h"

#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>

namespace kx {

namespace {

constexpr std::u16string_view PositionCharacters = u"0123456789,-";

// "12>" of a parallel build.
std::u16string_view WithoutBuildNumber(std::u16string_view line) {
  const std::size_t end = line.find_first_not_of(u"0123456789");
  return end != 0 && end != line.npos && line[end] == u'>' ? line.substr(end + 1) : line;
}

// "12", "12,5", "12-14", "12,5,12,9", "12,5-13,1": the first line and column. `text` has PositionCharacters
// only.
bool ReadPosition(std::u16string_view text, TSourceLocation& location) {
  if (text.empty() || !text::IsDigit(text[0])) return false;
  const std::size_t end = std::min(text.find_first_of(u",-"), text.size());
  location.Line = text::ToIntegerOr(text.substr(0, end), 0);
  if (end < text.size() && text[end] == u',') {
    const std::u16string_view column = text.substr(end + 1);
    location.Column = text::ToIntegerOr(column.substr(0, column.find_first_of(u",-")), 0);
  }
  return location.Line > 0;
}

// MSBuild names the project behind the message, "text [C:\\App\\App.csproj]", and files as that project sees
// them.
void SeeFromProject(TSourceLocation& location) {
  const std::size_t open = location.Rest.rfind(u" [");
  if (open == std::u16string::npos || !location.Rest.ends_with(u"proj]")) return;
  const std::u16string project = location.Rest.substr(open + 2, location.Rest.size() - open - 3);
  location.Rest.resize(open);
  if (!text::IsAbsolutePath(location.File))
    location.File = text::JoinPath(text::ExtractFileDir(project), location.File);
}

} // namespace

std::optional<TSourceLocation> FindSourceLocation(std::u16string_view line) {
  line = text::Trim(WithoutBuildNumber(text::Trim(line)));
  // The first bracket that holds a position and is followed by a colon: folders may have brackets of their
  // own.
  for (std::size_t open = line.find(u'('); open != line.npos; open = line.find(u'(', open + 1)) {
    // Only as far as a position reaches: a line of nothing but brackets is looked at once.
    const std::size_t close = line.find_first_not_of(PositionCharacters, open + 1);
    if (close == line.npos) break;
    if (line[close] != u')') continue;
    TSourceLocation location;
    const std::u16string_view behind = text::TrimLeft(line.substr(close + 1));
    if (open == 0 || behind.empty() || behind.front() != u':') continue;
    if (!ReadPosition(line.substr(open + 1, close - open - 1), location)) continue;
    location.File = text::TrimRight(line.substr(0, open));
    location.Rest = text::Trim(behind.substr(1));
    SeeFromProject(location);
    return location;
  }
  return std::nullopt;
}

} // namespace kx
