// The folders of the machine, for choosing a file or a folder: names only, never what a file holds.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kx::editor {

constexpr std::size_t MostNamesListed = 2000;

struct TChooserFolder {
  std::u16string Path;   // full, as the system spells it; empty above the drives
  std::u16string Parent; // empty when there is none
  std::vector<std::u16string> Folders;
  std::vector<std::u16string> Files;
  std::size_t More = 0; // folders and files that are not listed, since nobody reads so many
  std::u16string Error; // why there are none
  bool IsThere = false; // `path` named this very folder
};

// The folder that `path` names or lies in, seen from `base`; the nearest one there is. Files that fit one of
// `patterns` ("*.a;*.b") are listed, all when there are none.
TChooserFolder ListChooserFolder(std::u16string_view path, std::u16string_view base,
                                 std::u16string_view patterns);

// "*.sln", "a?.txt"; letter case is ignored.
bool MatchesPattern(std::u16string_view name, std::u16string_view pattern);

} // namespace kx::editor
