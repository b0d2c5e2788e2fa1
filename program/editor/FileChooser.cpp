#include "program/editor/FileChooser.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/System.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>

namespace kx::editor {

namespace {

bool IsWanted(std::u16string_view name, std::u16string_view patterns) {
  return patterns.empty() ||
         std::ranges::any_of(text::Split(patterns, u';'), [name](std::u16string_view pattern) {
           const auto trimmed = text::Trim(pattern);
           return trimmed == u"*.*" || MatchesPattern(name, trimmed);
         });
}

// Above the folders of the drives.
TChooserFolder ListDrives() {
  TChooserFolder drives;
  for (char16_t letter = u'A'; letter <= u'Z'; ++letter) {
    const std::u16string root = std::u16string(1, letter) + u":\\";
    if (platform::DirectoryExists(root)) drives.Folders.push_back(root);
  }
  return drives;
}

std::u16string NearestFolder(std::u16string path, std::u16string_view base) {
  while (!platform::DirectoryExists(path)) {
    std::u16string parent = text::ExtractFileDir(path);
    if (parent.empty() || parent == path) return std::u16string(base);
    path = std::move(parent);
  }
  return path;
}

} // namespace

bool MatchesPattern(std::u16string_view name, std::u16string_view pattern) {
  std::size_t n = 0;
  std::size_t p = 0;
  std::size_t star = std::u16string_view::npos;
  std::size_t resume = 0;
  while (n < name.size()) {
    if (p < pattern.size() && pattern[p] == u'*') {
      star = p++;
      resume = n;
    } else if (p < pattern.size() &&
               (pattern[p] == u'?' || text::FoldCase(pattern[p]) == text::FoldCase(name[n]))) {
      ++p;
      ++n;
    } else if (star != std::u16string_view::npos) {
      p = star + 1;
      n = ++resume;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of(u'*', p) == std::u16string_view::npos;
}

TChooserFolder ListChooserFolder(std::u16string_view path, std::u16string_view base,
                                 std::u16string_view patterns) {
  if (path.find(u'\0') != std::u16string_view::npos) throw EKxException(u"That is no path.");
  if (platform::IsWindows() && path == u"\\") return ListDrives();
  const std::u16string asked = text::ExpandPath(path, base);
  const std::u16string wanted = NearestFolder(text::ExcludeTrailingPathDelimiter(asked), base);
  TChooserFolder folder;
  folder.IsThere = !text::Trim(path).empty() && wanted == text::ExcludeTrailingPathDelimiter(asked);
  folder.Path = platform::ResolveExisting(wanted).value_or(wanted);
  folder.Parent = text::ExtractFileDir(text::ExcludeTrailingPathDelimiter(folder.Path));
  if (folder.Parent == folder.Path) folder.Parent = std::u16string(platform::IsWindows() ? 1 : 0, u'\\');
  const auto entries = platform::ListDirectory(folder.Path);
  if (!entries) {
    folder.Error = entries.Message();
    return folder;
  }
  for (const auto& entry : *entries) {
    if (!entry.IsDirectory && !IsWanted(entry.Name, patterns)) continue;
    auto& names = entry.IsDirectory ? folder.Folders : folder.Files;
    if (names.size() < MostNamesListed) {
      names.push_back(entry.Name);
    } else {
      ++folder.More;
    }
  }
  return folder;
}

} // namespace kx::editor
