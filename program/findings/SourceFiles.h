// The files that findings point at, where they can be read.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

// The folder that files are named from in everything that other machines read: the nearest one at or above
// `folder` that is a working copy of a version control system, else `folder` itself.
std::u16string FindSourceRoot(std::u16string_view folder);

// The file as seen from `root`, with "/" as the separator; one that does not lie below is only turned into
// that form. An empty root is that of nothing.
std::u16string SeenFrom(std::u16string_view root, std::u16string_view file);

struct TSourceFile {
  std::vector<std::u16string> Lines = {};
  // For each line, GitHub's "primaryLocationLineHash": over the line and what follows it up to 100 units
  // without blanks, and which such line of the file it is, "39fa2ee980eb94b0:1".
  std::vector<std::string> LineHashes = {};
};

// Reads files one after the other and keeps the last one: ask for all findings of a file in a row.
class TSourceFiles {
public:
  explicit TSourceFiles(std::u16string root) : root_(std::move(root)) {}
  // `file` is seen from the root. Null for what is no readable file, or one of more than 16 MB.
  const TSourceFile* Open(const std::u16string& file);
  // Empty when the file or the line is not there.
  std::u16string LineText(const std::u16string& file, int line);
  std::string LineHash(const std::u16string& file, int line);

private:
  std::u16string root_;
  std::u16string name_;
  std::unique_ptr<TSourceFile> file_;
};

std::vector<std::string> LineHashesOf(std::u16string_view content);

} // namespace kx
