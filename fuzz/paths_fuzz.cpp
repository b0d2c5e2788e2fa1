// Paths of Windows and of POSIX systems: their parts make the whole again, a full path is full and plain, and
// the quick way through a solution's paths gives what the slow one gives.
#include "contract/Utilities.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "fuzz/FuzzTarget.h"
#include "package/solution/VSNETSLN.Paths.h"
#include "program/editor/ProjectPaths.h"

#include <algorithm>

namespace kx::fuzz {
namespace {

void CheckParts(std::u16string_view path) {
  Require(text::ExtractFilePath(path) + text::ExtractFileName(path) == path,
          "directory and name are the path");
  Require(text::ChangeFileExt(path, text::ExtractFileExt(path)) == path,
          "the same extension changes nothing");
  const std::u16string folder = text::IncludeTrailingPathDelimiter(path);
  Require(path.empty() == folder.empty(), "nothing stays nothing");
  Require(path.empty() || text::IsPathSeparator(folder.back()), "a separator is added");
  Require(text::IncludeTrailingPathDelimiter(folder) == folder, "a separator is added once");
}

void CheckSteps(std::u16string_view full) {
  const char16_t separator = text::IsPosixPath(full) ? u'/' : u'\\';
  const char16_t other = separator == u'/' ? u'\\' : u'/';
  Require(separator == u'/' || full.find(other) == full.npos, "separators are of one kind");
  auto steps = text::Split(full, separator);
  const bool isShare = full.starts_with(u"\\\\"); // whose root, a server and a share, bears any names
  steps.erase(steps.begin(), steps.begin() + (isShare ? std::min<std::ptrdiff_t>(4, std::ssize(steps)) : 0));
  for (const auto step : steps)
    Require(step != u"." && step != u"..", "no step leads nowhere or up");
}

void CheckFull(std::u16string_view path, std::u16string_view folder) {
  if (!text::IsAbsolutePath(folder)) return;
  const std::u16string full = text::ExpandPath(path, folder);
  Require(text::ExpandPath(full, folder) == full, "a full path stays");
  Require(text::IsAbsolutePath(full), "a path seen from a full folder is full");
  CheckSteps(full);
}

void CheckForProject(std::u16string_view path, std::u16string_view folder) {
  const bool isPlain = path.find_first_of(u"%$") == path.npos && folder.find_first_of(u"%$") == folder.npos;
  if (!isPlain || !text::IsAbsolutePath(path) || !text::IsAbsolutePath(folder)) return;
  const std::u16string full = text::ExcludeTrailingPathDelimiter(text::ExpandPath(path, folder));
  const std::u16string from = text::ExpandPath(folder, u"");
  const std::u16string written = editor::PathForProject(full, from, true);
  Require(text::EqualsIgnoreCase(text::ExpandPath(written, from), full), "what is written leads to the file");
}

void Check(std::string_view bytes) {
  TInput input(bytes);
  const std::string_view path = input.Line();
  const std::u16string wide = text::FromUtf8(path);
  const std::u16string folder = text::FromUtf8(input.Rest());
  CheckParts(wide);
  CheckFull(wide, folder);
  CheckForProject(wide, folder);
  Require(TProjectPaths(folder).Expand(path) == TPathUtils::ExpandRelativePath(wide, folder),
          "the quick way gives the same path");
}

const TRegistration registration({"paths", Check});

} // namespace
} // namespace kx::fuzz
