#include "foundation/platform/System.h"

#include "foundation/platform/Win32.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

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

// The function that programs are offered for this says an old version to those that do not name the new one.
std::u16string SystemName() {
  using TGetVersion = LONG(WINAPI*)(OSVERSIONINFOW*);
  const HMODULE library = GetModuleHandleW(L"ntdll.dll");
  if (library == nullptr) return {};
  const auto getVersion =
      reinterpret_cast<TGetVersion>(reinterpret_cast<void*>(GetProcAddress(library, "RtlGetVersion")));
  OSVERSIONINFOW version{};
  version.dwOSVersionInfoSize = sizeof version;
  if (getVersion == nullptr || getVersion(&version) != 0) return {};
  return u"Windows " + text::FromInteger(version.dwMajorVersion) + u"." +
         text::FromInteger(version.dwMinorVersion) + u" (" + text::FromInteger(version.dwBuildNumber) + u")";
}

std::optional<std::u16string> EnvironmentVariable(std::u16string_view name) {
  const std::wstring wide = ToWide(name);
  SetLastError(ERROR_SUCCESS);
  const auto value = TextOf(
      [&](wchar_t* buffer, DWORD size) { return GetEnvironmentVariableW(wide.c_str(), buffer, size); });
  if (value) return FromWide(*value);
  return GetLastError() == ERROR_SUCCESS ? std::optional(std::u16string()) : std::nullopt;
}

void ForgetEnvironmentVariable(std::u16string_view name) {
  SetEnvironmentVariableW(ToWide(name).c_str(), nullptr);
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

} // namespace kx::platform
