#include "program/parts/ProjectReach.h"

#include "foundation/formats/Xml.h"
#include "foundation/platform/Files.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

namespace kx {

namespace {

constexpr auto OwnFolder = std::to_array<std::u16string_view>(
    {u"$(ProjectDir)", u"$(MSBuildProjectDirectory)", u"$(MSBuildThisFileDirectory)", u"$(InputDir)"});
constexpr std::u16string_view SolutionFolder = u"$(SolutionDir)";
// What projects import; they name files as seen from the project, or from where they lie.
constexpr auto Imported =
    std::to_array<std::u16string_view>({u".props", u".targets", u".vsprops", u".projitems", u".vcxitems"});

bool IsProjectFile(std::u16string_view file) {
  return text::EndsWithIgnoreCase(file, u"proj");
}

bool IsImported(std::u16string_view file) {
  return std::ranges::any_of(Imported,
                             [file](auto ending) { return text::EndsWithIgnoreCase(file, ending); });
}

bool LeadsOut(std::u16string_view path) {
  return path.find(u"..\\") != path.npos || path.find(u"../") != path.npos || path.ends_with(u"..");
}

// Up to the last separator in front of what is not known.
std::u16string_view KnownPart(std::u16string_view path) {
  const std::size_t unknown = path.find_first_of(u"$%*?@");
  if (unknown == path.npos) return path;
  const std::size_t end = path.substr(0, unknown).find_last_of(u"\\/");
  return end == path.npos ? std::u16string_view() : path.substr(0, end);
}

class TProjectsReach {
public:
  explicit TProjectsReach(std::span<const std::u16string> inputs) {
    for (const auto& input : inputs)
      if (text::EndsWithIgnoreCase(input, u".sln")) solutions_.insert(text::ExtractFileDir(input));
  }

  bool Read(const std::u16string& project) {
    const std::u16string folder = text::ExtractFileDir(project);
    reach_.ProjectFolders.insert(folder);
    return Read(project, folder);
  }

  TReach Take() && { return std::move(reach_); }

private:
  // `folder`: that of the project which the file belongs to.
  bool Read(const std::u16string& file, const std::u16string& folder) {
    if (!read_.insert(file).second) return true;
    const auto whole = ReadProjectText(file);
    if (!whole) return false;
    const TPathSet folders{folder, text::ExtractFileDir(file)};
    std::vector<std::u16string_view> pieces;
    for (std::size_t begin = 0; begin < whole->size();) {
      const std::size_t end = std::min(whole->find_first_of(u"<>\"'|;,\r\n", begin), whole->size());
      const std::u16string_view piece = text::Trim(std::u16string_view(*whole).substr(begin, end - begin));
      begin = end + 1;
      if (!TakePiece(piece, folders, folder)) return false;
    }
    return true;
  }

  // A path, perhaps with blanks in it; else a command line.
  bool TakePiece(std::u16string_view piece, const TPathSet& folders, const std::u16string& project) {
    if (!MayLeadOut(piece)) return true;
    if (StartsAsPath(piece)) return TakePath(piece, folders, project);
    for (const auto& word : text::Split(piece, u' '))
      if (StartsAsPath(word) && !TakePath(word, folders, project)) return false;
    return true;
  }

  static bool MayLeadOut(std::u16string_view piece) {
    return LeadsOut(piece) || text::FindIgnoreCase(piece, SolutionFolder) != piece.npos ||
           text::IsAbsolutePath(piece);
  }

  static bool StartsAsPath(std::u16string_view piece) {
    const auto isOwn = [piece](auto name) { return text::StartsWithIgnoreCase(piece, name); };
    return piece.starts_with(u"..") || text::IsAbsolutePath(piece) || isOwn(SolutionFolder) ||
           std::ranges::any_of(OwnFolder, isOwn) ||
           (LeadsOut(piece) && piece.find(u' ') == piece.npos && !piece.starts_with(u'$'));
  }

  bool TakePath(std::u16string_view path, const TPathSet& folders, const std::u16string& project) {
    if (text::StartsWithIgnoreCase(path, SolutionFolder))
      return TakeBelow(path.substr(SolutionFolder.size()), solutions_, project);
    for (const auto name : OwnFolder)
      if (text::StartsWithIgnoreCase(path, name))
        return TakeBelow(path.substr(name.size()), folders, project);
    return TakeBelow(path, folders, project);
  }

  bool TakeBelow(std::u16string_view path, const TPathSet& folders, const std::u16string& project) {
    const bool isWhole = KnownPart(path) == path;
    std::u16string_view known = KnownPart(path);
    if (!text::IsAbsolutePath(path)) // a separator behind "$(SolutionDir)" is one too many
      known.remove_prefix(std::min(known.find_first_not_of(u"\\/"), known.size()));
    for (const auto& folder : folders)
      if (!TakeFull(text::ExcludeTrailingPathDelimiter(text::ExpandPath(known, folder)), isWhole, project))
        return false;
    return true;
  }

  bool TakeFull(const std::u16string& path, bool isWhole, const std::u16string& project) {
    if (text::StartsWithIgnoreCase(path, text::IncludeTrailingPathDelimiter(project))) return true;
    if (platform::DirectoryExists(path)) {
      // A whole drive is no place for sources: the word was something else.
      if (text::ExtractFileDir(path) != path && !text::ExtractFileDir(path).empty())
        reach_.Folders.insert(path);
      return true;
    }
    if (!isWhole || !platform::FileExists(path)) return true;
    if (IsProjectFile(path)) return Read(path);
    reach_.Files.insert(path);
    return !IsImported(path) || Read(path, project);
  }

  TPathSet solutions_;
  TPathSet read_;
  TReach reach_;
};

} // namespace

std::optional<TReach> ReachOf(std::span<const std::u16string> inputs) {
  TProjectsReach reach(inputs);
  for (const auto& input : inputs)
    if (IsProjectFile(input) && !reach.Read(input)) return std::nullopt;
  return std::move(reach).Take();
}

} // namespace kx
