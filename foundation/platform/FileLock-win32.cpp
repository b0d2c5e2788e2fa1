#include "foundation/platform/FileLock.h"

#include "foundation/platform/System.h"
#include "foundation/platform/Win32.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

#include <array>

namespace kx::platform {

using namespace win32;

// Nobody else can write the file while this handle is open, and the system removes it with the handle.
struct FileLock::State {
  Handle File;
};

FileLock::FileLock(std::unique_ptr<State> state) : state_(std::move(state)) {}
FileLock::FileLock(FileLock&&) noexcept = default;
FileLock& FileLock::operator=(FileLock&&) noexcept = default;
FileLock::~FileLock() = default;

namespace {

// For people; the lock itself is the system's.
void SignWithName(HANDLE lock) {
  const std::string text =
      text::ToUtf8(u"process " + text::FromInteger(GetCurrentProcessId()) + u" on " + MachineName());
  DWORD written = 0;
  WriteFile(lock, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

std::u16string HolderOf(const std::wstring& path) {
  const Handle lock(CreateFileW(path.c_str(), GENERIC_READ,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, 0, nullptr));
  std::array<char, 512> bytes{};
  DWORD count = 0;
  if (!lock.IsOpen() ||
      ::ReadFile(lock.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) == FALSE)
    count = 0;
  return count == 0 ? u"another program" : text::FromUtf8({bytes.data(), count});
}

} // namespace

Result<FileLock> FileLock::Acquire(std::u16string_view file, std::chrono::milliseconds time,
                                   const LockWaiting& waiting) {
  constexpr DWORD again = 5; // milliseconds
  const Result<std::wstring> native = RealPathForWriting(file);
  if (!native) return FileFailure(u"lock file", file, native.Message());
  const std::wstring path = *native + L".lock";
  const auto end = std::chrono::steady_clock::now() + time;
  for (;;) {
    Handle lock(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                            FILE_ATTRIBUTE_HIDDEN | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    const DWORD error = lock.IsOpen() ? ERROR_SUCCESS : GetLastError();
    if (lock.IsOpen()) {
      SignWithName(lock.Get());
      return FileLock(std::make_unique<State>(State{std::move(lock)}));
    }
    // A file that is just being removed cannot be opened for a moment.
    const bool isHeld = error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED;
    if (!isHeld) return FileFailure(u"lock file", file, Reason(error));
    const std::u16string holder = HolderOf(path);
    if (std::chrono::steady_clock::now() >= end || (waiting && !waiting(holder)))
      return FileFailure(u"lock file", file,
                         error == ERROR_SHARING_VIOLATION ? u"It is held by " + holder : Reason(error));
    Sleep(again);
  }
}

} // namespace kx::platform
