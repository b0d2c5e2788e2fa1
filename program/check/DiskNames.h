// What files are called on the disk, letter by letter.
#pragma once

#include "foundation/platform/Files.h"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kx::check {

// What a path that a file names leads to.
struct TNamedFile {
  bool Exists = false;
  bool IsFolder = false;
  std::u16string Spelling = {}; // that of the disk where letter case differs; else empty
};

// Answers many questions about one tree: each folder is listed once, and taken for unchanged from then on.
class TDiskNames {
public:
  // `path` as a file of `folder`, a full path, names it. Both separators are taken. Of an absolute path only
  // the existence is known: nobody can say what the user calls the folders above.
  const TNamedFile& Find(std::u16string_view folder, std::u16string_view path);

private:
  using TEntries = std::vector<platform::FolderEntry>; // in their order without regard to letter case

  TNamedFile Walk(std::u16string_view folder, std::u16string_view path);
  const platform::FolderEntry* FindEntry(const std::u16string& folder, std::u16string_view name);
  const TEntries& EntriesOf(const std::u16string& folder);

  std::unordered_map<std::u16string, TEntries> listed_;
  std::unordered_map<std::u16string, TNamedFile> known_;
};

} // namespace kx::check
