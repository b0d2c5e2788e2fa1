#include "foundation/platform/System.h"

#include "foundation/platform/Win32.h"
#include "foundation/text/Encoding.h"

#include <array>
#include <cstdint>
#include <memory>
#include <shellapi.h>

namespace kx::platform {

using namespace win32;

std::u16string MachineName() {
  std::array<wchar_t, MAX_COMPUTERNAME_LENGTH + 1> name{};
  auto size = static_cast<DWORD>(name.size());
  return GetComputerNameW(name.data(), &size) == FALSE ? std::u16string() : FromWide({name.data(), size});
}

std::optional<std::u16string> EnvironmentVariable(std::u16string_view name) {
  const std::wstring wide = ToWide(name);
  SetLastError(ERROR_SUCCESS);
  const auto value = TextOf(
      [&](wchar_t* buffer, DWORD size) { return GetEnvironmentVariableW(wide.c_str(), buffer, size); });
  if (value) return FromWide(*value);
  return GetLastError() == ERROR_SUCCESS ? std::optional(std::u16string()) : std::nullopt;
}

std::vector<std::u16string> EnvironmentNames() {
  std::vector<std::u16string> names;
  const std::unique_ptr<wchar_t, decltype(&FreeEnvironmentStringsW)> block(GetEnvironmentStringsW(),
                                                                           &FreeEnvironmentStringsW);
  const wchar_t* line = block.get();
  for (; line != nullptr && *line != L'\0'; line += std::wstring_view(line).size() + 1) {
    const std::wstring_view entry = line;
    if (entry.front() == L'=') continue; // the current folders of the drives
    names.push_back(FromWide(entry.substr(0, entry.find(L'='))));
  }
  return names;
}

bool IsWindows() {
  return true;
}

Status OpenInBrowser(std::u16string_view address) {
  const auto result = reinterpret_cast<std::intptr_t>(
      ShellExecuteW(nullptr, L"open", ToWide(address).c_str(), nullptr, nullptr, SW_SHOWNORMAL));
  if (result <= 32) return Failure{u"Windows knows no browser."}; // what the function gives on failure
  return Done{};
}

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

Result<EntryPoint> LoadLibraryEntry(std::u16string_view path, std::string_view entry) {
  const auto fail = [&](std::u16string_view reason) { return FileFailure(u"load library", path, reason); };
  const Result<std::wstring> native = ToNative(path);
  if (!native) return fail(native.Message());
  DWORD mode = 0;
  SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &mode); // no message boxes
  // What it needs is looked for beside it, beside this program and in the system's folder.
  const HMODULE library = LoadLibraryExW(native->c_str(), nullptr,
                                         LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
  const DWORD error = GetLastError();
  SetThreadErrorMode(mode, nullptr);
  if (library == nullptr) return fail(Reason(error));
  const FARPROC symbol = GetProcAddress(library, std::string(entry).c_str());
  if (symbol == nullptr) return fail(u"It has no entry " + text::FromUtf8(entry));
  return reinterpret_cast<EntryPoint>(reinterpret_cast<void*>(symbol));
}

} // namespace kx::platform
