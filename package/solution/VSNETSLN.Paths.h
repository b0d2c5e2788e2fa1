// The full paths of the projects that one solution names.
#pragma once

#include <string>
#include <string_view>

namespace kx {

// Gives what TPathUtils::ExpandRelativePath gives for a path in UTF-8. Nearly all paths of solutions just
// step down from its folder; those are put together without more ado, as a run over many solutions does
// little else.
class TProjectPaths {
public:
  explicit TProjectPaths(std::u16string_view folder);
  std::u16string_view Expand(std::string_view path); // valid until the next call

private:
  bool AppendPlain(std::string_view path);

  std::u16string folder_;
  std::u16string plain_; // the folder as results begin with it, and the last plain path behind it
  std::size_t base_;     // length of the folder in it
  char16_t separator_;
  std::u16string other_;
};

} // namespace kx
