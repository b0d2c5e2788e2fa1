// The algebra of Windows paths, as text, on every system: both separators, drives, UNC names. Nothing here
// looks at a disk. A path that begins with a single "/" is a path of a POSIX system: it is absolute, and
// results built on it are written with "/"; every other result is written with "\".
#pragma once

#include <string>
#include <string_view>

namespace kx::text {

constexpr bool IsPathSeparator(char16_t c) {
  return c == u'\\' || c == u'/';
}

bool IsPosixPath(std::u16string_view path);    // "/srv/a"; not "//server/share"
bool IsAbsolutePath(std::u16string_view path); // "C:\a", "\\server\share\a", "/srv/a"

// C:\a\b.txt has the directory part "C:\a\" (with its last separator or colon), the folder "C:\a" (a root
// keeps its separator), the file name "b.txt" and the extension ".txt" (empty when the name has no dot).
std::u16string ExtractFilePath(std::u16string_view path);
std::u16string ExtractFileDir(std::u16string_view path);
std::u16string ExtractFileName(std::u16string_view path);
std::u16string ExtractFileExt(std::u16string_view path);
std::u16string ChangeFileExt(std::u16string_view path, std::u16string_view extension);

// The delimiter added is the path's own kind; empty text stays empty.
std::u16string IncludeTrailingPathDelimiter(std::u16string_view path);
std::u16string ExcludeTrailingPathDelimiter(std::u16string_view path);

// Folder and name joined by one separator; an absolute `name` stands alone.
std::u16string JoinPath(std::u16string_view folder, std::u16string_view name);

// The full path of `path` seen from `folder`: absolute paths stand alone, "\a" and "C:a" take what they lack
// from `folder`, "." and ".." steps are resolved (never above a root), doubled separators are folded, and all
// separators become those of the result's kind.
std::u16string ExpandPath(std::u16string_view path, std::u16string_view folder);

} // namespace kx::text
