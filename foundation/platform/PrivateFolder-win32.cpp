#include "foundation/platform/PrivateFolder.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/Win32.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/WindowsPath.h"

namespace kx::platform {

using namespace win32;

static Handle OpenFolder(const std::wstring& path, DWORD access, DWORD share) {
  return Handle(
      CreateFileW(path.c_str(), access, share, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

Result<PrivateFolder> PrivateFolder::Create() {
  const std::u16string folder = TemporaryDirectory();
  for (;;) {
    std::u16string path = text::JoinPath(folder, text::FromAscii(kPrivateFolders.New()));
    const Result<std::wstring> native = ToNative(path);
    if (!native) return FileFailure(u"create a folder in", folder, native.Message());
    if (CreateDirectoryW(native->c_str(), nullptr) != FALSE) {
      constexpr DWORD sharedButForRemoval = FILE_SHARE_READ | FILE_SHARE_WRITE;
      auto life = std::make_shared<Handle>(OpenFolder(*native, GENERIC_READ, sharedButForRemoval));
      return PrivateFolder(std::move(path), std::move(life));
    }
    if (GetLastError() != ERROR_ALREADY_EXISTS)
      return FileFailure(u"create a folder in", folder, Reason(GetLastError()));
  }
}

// A folder whose owner lives no more.
static bool IsAbandoned(const WIN32_FIND_DATAW& found, const std::wstring& path) {
  if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0 || !IsOld(found.ftLastWriteTime)) return false;
  const Handle folder = OpenFolder(path, DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
  if (!folder.IsOpen()) return false;
  const std::wstring mark = path + L"\\" + ToWide(text::FromAscii(kKept));
  // A mark that cannot be looked for may be there.
  return GetFileAttributesW(mark.c_str()) == INVALID_FILE_ATTRIBUTES &&
         GetLastError() == ERROR_FILE_NOT_FOUND;
}

void PrivateFolder::RemoveAbandoned() {
  const std::u16string folder = TemporaryDirectory();
  const Result<std::wstring> pattern = ToNative(text::JoinPath(folder, u"kx-*"));
  if (!pattern) return;
  ForEachEntry(*pattern, [&folder](const WIN32_FIND_DATAW& found) {
    const std::u16string name = FromWide(found.cFileName);
    const Result<std::wstring> path = ToNative(text::JoinPath(folder, name));
    if (path && kPrivateFolders.Has(text::ToUtf8(name)) && IsAbandoned(found, *path)) RemoveTree(*path);
  });
}

} // namespace kx::platform
