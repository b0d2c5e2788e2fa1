#include "program/runner/Surroundings.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/System.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/findings/SourceFiles.h"

#include <algorithm>

namespace kx {

namespace {

// The first line of a file; empty when there is none.
std::u16string LineOf(const std::u16string& file) {
  const auto bytes = platform::ReadFile(file);
  if (!bytes) return {};
  return std::u16string(text::Trim(text::FromUtf8(bytes->substr(0, bytes->find('\n')))));
}

bool IsCommit(std::u16string_view text) {
  return (text.size() == 40 || text.size() == 64) && std::ranges::all_of(text, [](char16_t c) {
           return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f');
         });
}

std::u16string CommitIf(std::u16string text) {
  return IsCommit(text) ? std::move(text) : std::u16string();
}

// Of a worktree and of a submodule ".git" is a file that names the folder.
std::u16string GitFolder(const std::u16string& root) {
  std::u16string place = text::JoinPath(root, u".git");
  if (platform::DirectoryExists(place)) return place;
  constexpr std::u16string_view key = u"gitdir: ";
  const std::u16string line = LineOf(place);
  return line.starts_with(key) ? text::ExpandPath(line.substr(key.size()), root) : std::u16string();
}

// Branches that Git has gathered in one file.
std::u16string PackedCommit(const std::u16string& file, std::u16string_view ref) {
  const auto bytes = platform::ReadFile(file);
  const std::size_t end = bytes ? bytes->find(" " + text::ToUtf8(ref) + "\n") : std::string::npos;
  if (end == std::string::npos) return {};
  const std::size_t begin = bytes->rfind('\n', end) + 1; // 0 in the first line
  return CommitIf(text::FromUtf8(bytes->substr(begin, end - begin)));
}

} // namespace

TWorkingCopy ReadWorkingCopy(std::u16string_view folder) {
  const std::u16string git = GitFolder(FindSourceRoot(folder));
  if (git.empty()) return {};
  const std::u16string head = LineOf(text::JoinPath(git, u"HEAD"));
  constexpr std::u16string_view key = u"ref: ";
  if (!head.starts_with(key)) return {.Commit = CommitIf(head)};
  const std::u16string ref = head.substr(key.size());
  const std::u16string shared = LineOf(text::JoinPath(git, u"commondir")); // worktrees have one in common
  const std::u16string common = shared.empty() ? git : text::ExpandPath(shared, git);
  TWorkingCopy copy{.Commit = CommitIf(LineOf(text::JoinPath(common, ref)))};
  if (copy.Commit.empty()) copy.Commit = PackedCommit(text::JoinPath(common, u"packed-refs"), ref);
  constexpr std::u16string_view heads = u"refs/heads/";
  copy.Branch = ref.starts_with(heads) ? ref.substr(heads.size()) : ref;
  return copy;
}

TRunSurroundings SurroundingsOf(std::u16string_view folder) {
  TWorkingCopy copy = ReadWorkingCopy(folder);
  TRunSurroundings surroundings;
  surroundings.Machine = platform::MachineName();
  surroundings.System = platform::SystemName();
  surroundings.Commit = std::move(copy.Commit);
  surroundings.Branch = std::move(copy.Branch);
  return surroundings;
}

} // namespace kx
