#include "program/check/DiskNames.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>

namespace kx::check {

const TNamedFile& TDiskNames::Find(std::u16string_view folder, std::u16string_view path) {
  std::u16string key(folder);
  key += u'\n'; // in no path
  key += path;
  const auto known = known_.find(key);
  if (known != known_.end()) return known->second;
  return known_.emplace(std::move(key), Walk(folder, path)).first->second;
}

TNamedFile TDiskNames::Walk(std::u16string_view folder, std::u16string_view path) {
  if (text::IsAbsolutePath(path)) {
    const bool isFolder = platform::DirectoryExists(path);
    return {.Exists = isFolder || platform::FileExists(path), .IsFolder = isFolder};
  }
  std::u16string at(folder);
  std::u16string spelling;
  const std::u16string steps = text::ReplaceAll(path, u"/", u"\\");
  TNamedFile found{.Exists = true, .IsFolder = true};
  for (const auto step : text::Split(steps, u'\\')) {
    if (step.empty() || step == u".") continue;
    if (!spelling.empty()) spelling += u'\\';
    if (step == u"..") {
      at = text::ExtractFileDir(at);
      spelling += step;
      continue;
    }
    const platform::FolderEntry* entry = FindEntry(at, step);
    if (entry == nullptr) return {};
    found.IsFolder = entry->IsDirectory;
    if (entry->Name != step) found.Spelling = entry->Name; // replaced below by the whole path
    spelling += entry->Name;
    at = text::JoinPath(at, entry->Name);
  }
  if (!found.Spelling.empty()) found.Spelling = std::move(spelling);
  return found;
}

// The name itself, else one that differs in letter case only.
const platform::FolderEntry* TDiskNames::FindEntry(const std::u16string& folder, std::u16string_view name) {
  const TEntries& entries = EntriesOf(folder);
  const auto first =
      std::ranges::lower_bound(entries, name, text::IgnoreCaseLess(), &platform::FolderEntry::Name);
  const auto isAlike = [&](auto entry) {
    return entry != entries.end() && text::EqualsIgnoreCase(entry->Name, name);
  };
  for (auto entry = first; isAlike(entry); ++entry)
    if (entry->Name == name) return &*entry;
  return isAlike(first) ? &*first : nullptr;
}

const TDiskNames::TEntries& TDiskNames::EntriesOf(const std::u16string& folder) {
  const auto [known, isNew] = listed_.try_emplace(folder);
  if (!isNew) return known->second;
  if (auto listing = platform::ListDirectory(folder)) known->second = *std::move(listing);
  return known->second;
}

} // namespace kx::check
