#include "program/editor/ProjectPaths.h"

#include "foundation/platform/System.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/runner/References.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace kx::editor {

namespace {

constexpr std::size_t MostFoldersUp = 2;

std::vector<std::u16string_view> NamesOf(std::u16string_view path) {
  std::vector<std::u16string_view> names;
  for (std::size_t at = 0; at < path.size();) {
    const auto end = static_cast<std::size_t>(
        std::find_if(path.begin() + static_cast<std::ptrdiff_t>(at), path.end(), text::IsPathSeparator) -
        path.begin());
    if (end > at) names.push_back(path.substr(at, end - at));
    at = end + 1;
  }
  return names;
}

// How many names stand for the root itself: a drive; a server and its share.
std::size_t RootNames(std::u16string_view path) {
  if (text::IsPosixPath(path)) return 0;
  return path.starts_with(u"\\\\") ? 2 : 1;
}

bool SameName(std::u16string_view a, std::u16string_view b) {
  return platform::IsWindows() ? text::EqualsIgnoreCase(a, b) : a == b;
}

char16_t SeparatorOf(std::u16string_view folder) {
  return text::IsPosixPath(folder) ? u'/' : u'\\';
}

// Nothing when the path is too far away, or its way from the folder would mean something else.
std::optional<std::u16string> Relative(std::u16string_view path, std::u16string_view folder) {
  if (text::IsPosixPath(path) != text::IsPosixPath(folder)) return std::nullopt;
  // A share whose server has no name: the names alone would be those of another share.
  if (path.starts_with(u"\\\\\\") || folder.starts_with(u"\\\\\\")) return std::nullopt;
  const auto names = NamesOf(path);
  const auto folders = NamesOf(folder);
  const auto [here, there] = std::ranges::mismatch(folders, names, SameName);
  const auto common = static_cast<std::size_t>(there - names.begin());
  const std::size_t up = folders.size() - common;
  if (up > MostFoldersUp || common < RootNames(folder) || (up > 0 && common == RootNames(folder)))
    return std::nullopt;
  std::u16string relative;
  const auto add = [&](std::u16string_view name) {
    if (!relative.empty()) relative += SeparatorOf(folder);
    relative += name;
  };
  for (std::size_t i = 0; i < up; ++i)
    add(u"..");
  std::for_each(there, names.end(), add);
  if (relative.find(u':') == 1) return std::nullopt; // a name that would be read as a drive
  return relative.empty() ? u"." : relative;
}

std::u16string Escaped(std::u16string_view text) {
  std::u16string escaped;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto rest = text.substr(i);
    const bool isDouble = rest.size() > 1 && rest[0] == rest[1] && (rest[0] == u'%' || rest[0] == u'$');
    if (isDouble || ReadReference(rest)) escaped += text[i];
    escaped += text[i];
  }
  return escaped;
}

} // namespace

std::u16string PathForProject(std::u16string_view path, std::u16string_view folder, bool isSeenFromProject) {
  const auto relative = Relative(path, folder);
  if (!relative) return Escaped(path);
  if (isSeenFromProject) return Escaped(*relative);
  const std::u16string start = u"%ProjectDir%";
  return *relative == u"." ? start : start + SeparatorOf(folder) + Escaped(*relative);
}

bool HasReferences(std::u16string_view text) {
  return std::ranges::any_of(SplitReferences(text),
                             [](const TTextPart& part) { return part.Reference.has_value(); });
}

} // namespace kx::editor
