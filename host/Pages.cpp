#include "host/Pages.h"

#include "host/Services.h"

namespace kx {

namespace {

bool Take(std::optional<std::u16string> choice, std::u16string& path) {
  if (!choice) return false;
  path = std::move(*choice);
  return true;
}

} // namespace

bool KxBrowseForDirectory(std::u16string_view title, std::u16string& path) {
  return Take(DesignService().BrowseForDirectory(title, path), path);
}

bool KxBrowseForFile(std::u16string_view title, std::u16string& path, std::u16string_view filter) {
  return Take(DesignService().BrowseForFile(title, path, filter), path);
}

void ShowMessage(std::u16string_view text) {
  DesignService().ShowMessage(text);
}

} // namespace kx
