#include "platform/FileLock.h"

#include "platform/Win32.h"

namespace kx::platform {

using namespace win32;

// Nobody else can open the file while this handle is, and the system removes it with the handle.
struct FileLock::State {
  Handle File;
};

FileLock::FileLock(std::unique_ptr<State> state) : state_(std::move(state)) {}
FileLock::FileLock(FileLock&&) noexcept = default;
FileLock& FileLock::operator=(FileLock&&) noexcept = default;
FileLock::~FileLock() = default;

Result<FileLock> FileLock::Acquire(std::u16string_view path, std::chrono::milliseconds time) {
  constexpr DWORD again = 5; // milliseconds
  const Result<std::wstring> native = ToNative(path);
  if (!native) return FileFailure(u"lock file", path, native.Message());
  const auto end = std::chrono::steady_clock::now() + time;
  for (;;) {
    Handle file(CreateFileW(native->c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                            FILE_ATTRIBUTE_HIDDEN | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (file.IsOpen()) return FileLock(std::make_unique<State>(State{std::move(file)}));
    const DWORD error = GetLastError();
    // A file that is just being removed cannot be opened for a moment.
    const bool held = error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED;
    if (!held) return FileFailure(u"lock file", path, Reason(error));
    if (std::chrono::steady_clock::now() >= end)
      return FileFailure(u"lock file", path,
                         error == ERROR_SHARING_VIOLATION ? u"Another program holds it" : Reason(error));
    Sleep(again);
  }
}

} // namespace kx::platform
