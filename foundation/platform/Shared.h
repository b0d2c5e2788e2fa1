// What the sources of every system in this room share.
#pragma once

#include "foundation/platform/FileTree.h"
#include "foundation/platform/Files.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kx::platform {

// "Cannot <action> <path>. <reason>", the path as the caller wrote it.
Failure FileFailure(std::u16string_view action, std::u16string_view path, std::u16string_view reason);

// Why a file of several names (hard links) is not replaced.
std::u16string SeveralNames(std::uint64_t count);

// What SaveNewFile and CopyToNewFile have in common; the latter gives the file the times of the other one,
// too.
Result<bool> SaveNew(std::u16string_view path, std::string_view bytes, std::u16string_view like,
                     bool withTimes);

// What ListDirectory gives, as the system orders it.
Result<std::vector<FolderEntry>> ListUnsorted(std::u16string_view path);

// What ListFileTree gives, as the system orders it; it leaves out folders of these names.
Result<std::vector<FileStamp>> ListTreeUnsorted(std::u16string_view folder,
                                                std::span<const std::u16string_view> without);
bool IsLeftOut(std::u16string_view name, std::span<const std::u16string_view> without);

// A folder and all that is in it; links are removed, not followed. What cannot be removed stays.
void RemoveTree(const std::filesystem::path& folder) noexcept;

// Letters and digits for names that must not be guessed or taken.
std::string RandomLetters(std::size_t count);

// The names of what lives only for a moment: random, and known as ours when a killed program has left them.
struct PassingNames {
  std::string_view Start;
  std::string_view End;

  std::string New() const;
  bool Has(std::string_view name) const;
};
inline constexpr PassingNames kTemporaryFiles{".kx-", ".tmp"};
inline constexpr PassingNames kPrivateFolders{"kx-", ""};
inline constexpr const char* kKept =
    ".kept"; // a file in a private folder that is not ours to remove any more

// True for the first call with this folder: what killed programs have left in one is looked for once, since
// it may hold much else.
bool IsFirstVisit(const std::string& folder);

} // namespace kx::platform
