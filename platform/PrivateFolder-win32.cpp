#include "platform/PrivateFolder.h"

#include "platform/Files.h"
#include "platform/Win32.h"
#include "text/Encoding.h"
#include "text/WindowsPath.h"

namespace kx::platform {

using namespace win32;

Result<PrivateFolder> PrivateFolder::Create() {
  const std::u16string folder = TemporaryDirectory();
  for (;;) {
    std::u16string path = text::JoinPath(folder, u"kx-" + text::FromAscii(RandomLetters(12)));
    const Result<std::wstring> native = ToNative(path);
    if (!native) return FileFailure(u"create a folder in", folder, native.Message());
    if (CreateDirectoryW(native->c_str(), nullptr) != FALSE) return PrivateFolder(std::move(path));
    if (GetLastError() != ERROR_ALREADY_EXISTS)
      return FileFailure(u"create a folder in", folder, Reason(GetLastError()));
  }
}

} // namespace kx::platform
