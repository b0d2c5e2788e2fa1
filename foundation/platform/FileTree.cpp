#include "foundation/platform/FileTree.h"

#include "foundation/platform/Shared.h"
#include "foundation/text/Text.h"

#include <algorithm>

namespace kx::platform {

bool IsLeftOut(std::u16string_view name, std::span<const std::u16string_view> without) {
  return std::ranges::any_of(without, [name](auto other) { return text::EqualsIgnoreCase(name, other); });
}

Result<std::vector<FileStamp>> ListFileTree(std::u16string_view folder,
                                            std::span<const std::u16string_view> without) {
  auto files = ListTreeUnsorted(folder, without);
  if (files) std::ranges::sort(*files, {}, &FileStamp::Path);
  return files;
}

} // namespace kx::platform
