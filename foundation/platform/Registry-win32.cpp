#include "foundation/platform/Registry.h"

#include "foundation/platform/Win32.h"

#include <memory>
#include <string>

namespace kx::platform {

using namespace win32;

std::optional<std::u16string> ReadLocalMachineString(std::u16string_view key, std::u16string_view value) {
  HKEY opened = nullptr;
  const LSTATUS status =
      RegOpenKeyExW(HKEY_LOCAL_MACHINE, ToWide(key).c_str(), 0, KEY_READ | KEY_WOW64_32KEY, &opened);
  if (status != ERROR_SUCCESS) return std::nullopt;
  const std::unique_ptr<HKEY__, decltype(&RegCloseKey)> owner(opened, &RegCloseKey);
  std::wstring text(MAX_PATH, L'\0');
  for (;;) {
    auto size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    // Texts with variables (REG_EXPAND_SZ) come with their values in place.
    const LSTATUS read =
        RegGetValueW(opened, nullptr, ToWide(value).c_str(), RRF_RT_REG_SZ, nullptr, text.data(), &size);
    if (read == ERROR_SUCCESS) return FromWide(text.c_str());
    if (read != ERROR_MORE_DATA) return std::nullopt;
    text.resize(text.size() * 2);
  }
}

} // namespace kx::platform
