#include "foundation/text/WindowsPath.h"

#include "foundation/text/Text.h"

#include <algorithm>

namespace kx::text {

namespace {

constexpr std::size_t npos = std::u16string_view::npos;

enum class RootKind { None, Posix, Unc, Drive, DriveRelative, Rooted };

// The part of a path that ".." cannot leave: "/", "\\server\share", "C:\", "C:" or "\".
struct Root {
  RootKind Kind = RootKind::None;
  std::size_t Length = 0;
};

bool IsDrive(std::u16string_view path) {
  if (path.size() < 2 || path[1] != u':') return false;
  const char16_t letter = FoldCase(path[0]);
  return letter >= u'a' && letter <= u'z';
}

std::size_t FindSeparator(std::u16string_view path, std::size_t from) {
  while (from < path.size() && !IsPathSeparator(path[from]))
    ++from;
  return from;
}

Root RootOf(std::u16string_view path) {
  if (path.size() >= 2 && IsPathSeparator(path[0]) && IsPathSeparator(path[1])) {
    const std::size_t server = FindSeparator(path, 2);
    return {RootKind::Unc, FindSeparator(path, std::min(server + 1, path.size()))};
  }
  if (path.starts_with(u'/')) return {RootKind::Posix, 1};
  if (path.starts_with(u'\\')) return {RootKind::Rooted, 1};
  if (!IsDrive(path)) return {};
  if (path.size() > 2 && IsPathSeparator(path[2])) return {RootKind::Drive, 3};
  return {RootKind::DriveRelative, 2};
}

char16_t SeparatorOf(std::u16string_view path) {
  return IsPosixPath(path) ? u'/' : u'\\';
}

bool EndsWithSeparator(std::u16string_view path) {
  return !path.empty() && IsPathSeparator(path.back());
}

std::u16string WithOwnSeparators(std::u16string path) {
  const char16_t separator = SeparatorOf(path);
  std::ranges::replace_if(path, IsPathSeparator, separator);
  return path;
}

// Where the file name begins.
std::size_t NameStart(std::u16string_view path) {
  const bool posix = IsPosixPath(path);
  std::size_t start = path.size();
  while (start > 0 && !IsPathSeparator(path[start - 1]) && (posix || path[start - 1] != u':'))
    --start;
  return start;
}

// The last dot of the file name, or the path's end.
std::size_t ExtensionStart(std::u16string_view path) {
  const std::size_t dot = path.rfind(u'.');
  return dot == npos || dot < NameStart(path) ? path.size() : dot;
}

std::u16string Append(std::u16string_view folder, std::u16string_view name) {
  std::u16string path;
  path.reserve(folder.size() + 1 + name.size());
  path.append(folder);
  if (!folder.empty() && !EndsWithSeparator(folder)) path.push_back(SeparatorOf(folder));
  return path.append(name);
}

// The root that "\a" takes from the folder it is seen from.
std::u16string OnRootOf(std::u16string_view folder, std::u16string_view path) {
  const Root root = RootOf(folder);
  if (root.Kind == RootKind::None) return std::u16string(path);
  return Append(folder.substr(0, root.Length), path.substr(1));
}

std::u16string OnDriveOf(std::u16string_view folder, std::u16string_view path) {
  const std::u16string_view drive = path.substr(0, 2);
  const bool same = RootOf(folder).Kind == RootKind::Drive && EqualsIgnoreCase(folder.substr(0, 2), drive);
  return same ? Append(folder, path.substr(2)) : std::u16string(drive).append(u"\\").append(path.substr(2));
}

std::u16string Anchored(std::u16string_view path, std::u16string_view folder) {
  switch (RootOf(path).Kind) {
  case RootKind::Posix:
  case RootKind::Unc:
  case RootKind::Drive:
    return std::u16string(path);
  case RootKind::Rooted:
    return OnRootOf(folder, path);
  case RootKind::DriveRelative:
    return OnDriveOf(folder, path);
  case RootKind::None:
    break;
  }
  return path.empty() ? std::u16string(folder) : Append(folder, path);
}

// Takes the last step off a path that was built so far. False when there is none that ".." could leave.
bool StepUp(std::u16string& path, std::size_t root, char16_t separator) {
  if (path.size() <= root) return false;
  const std::size_t before = path.rfind(separator);
  const std::size_t start = before == npos || before < root ? root : before + 1;
  if (std::u16string_view(path).substr(start) == u"..") return false;
  path.resize(start > root ? start - 1 : root);
  return true;
}

// "." and ".." steps resolved; only a path without a root may begin with "..".
std::u16string Normalised(std::u16string_view path) {
  const Root root = RootOf(path);
  const char16_t separator = SeparatorOf(path);
  std::u16string result;
  result.reserve(path.size() + 1);
  result = path.substr(0, root.Length);
  std::ranges::replace_if(result, IsPathSeparator, separator);
  for (std::size_t start = root.Length; start < path.size();) {
    const std::size_t end = FindSeparator(path, start);
    const std::u16string_view step = path.substr(start, end - start);
    start = end + 1;
    if (step.empty() || step == u".") continue;
    if (step == u".." && (StepUp(result, root.Length, separator) || root.Kind != RootKind::None)) continue;
    if (!result.empty() && result.back() != separator) result.push_back(separator);
    result.append(step);
  }
  if (EndsWithSeparator(path) && !result.empty() && result.back() != separator) result.push_back(separator);
  return result;
}

} // namespace

bool IsPosixPath(std::u16string_view path) {
  return path.starts_with(u'/') && (path.size() < 2 || !IsPathSeparator(path[1]));
}

bool IsAbsolutePath(std::u16string_view path) {
  const RootKind kind = RootOf(path).Kind;
  return kind == RootKind::Posix || kind == RootKind::Unc || kind == RootKind::Drive;
}

std::u16string ExtractFilePath(std::u16string_view path) {
  return std::u16string(path.substr(0, NameStart(path)));
}

std::u16string ExtractFileDir(std::u16string_view path) {
  return ExcludeTrailingPathDelimiter(path.substr(0, NameStart(path)));
}

std::u16string ExtractFileName(std::u16string_view path) {
  return std::u16string(path.substr(NameStart(path)));
}

std::u16string ExtractFileExt(std::u16string_view path) {
  return std::u16string(path.substr(ExtensionStart(path)));
}

std::u16string ChangeFileExt(std::u16string_view path, std::u16string_view extension) {
  return std::u16string(path.substr(0, ExtensionStart(path))).append(extension);
}

std::u16string IncludeTrailingPathDelimiter(std::u16string_view path) {
  std::u16string result(path);
  if (!path.empty() && !EndsWithSeparator(path)) result.push_back(SeparatorOf(path));
  return result;
}

std::u16string ExcludeTrailingPathDelimiter(std::u16string_view path) {
  const Root root = RootOf(path);
  const bool kept = !EndsWithSeparator(path) || path.size() <= root.Length;
  return std::u16string(kept ? path : path.substr(0, path.size() - 1));
}

std::u16string JoinPath(std::u16string_view folder, std::u16string_view name) {
  if (folder.empty() || IsAbsolutePath(name)) return std::u16string(name);
  while (!name.empty() && IsPathSeparator(name.front()))
    name.remove_prefix(1);
  return WithOwnSeparators(name.empty() ? std::u16string(folder) : Append(folder, name));
}

std::u16string ExpandPath(std::u16string_view path, std::u16string_view folder) {
  return Normalised(Anchored(path, folder));
}

} // namespace kx::text
