#include "platform/FileLock.h"

#include "platform/Posix.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace kx::platform {

using namespace posix;

// Removed while it is still held, so that nobody who comes next holds a file that has lost its name.
struct FileLock::State {
  State(std::string path, Descriptor file) : Path(std::move(path)), File(std::move(file)) {}
  State(const State&) = delete;
  State& operator=(const State&) = delete;
  ~State() { unlink(Path.c_str()); }

  std::string Path;
  Descriptor File;
};

FileLock::FileLock(std::unique_ptr<State> state) : state_(std::move(state)) {}
FileLock::FileLock(FileLock&&) noexcept = default;
FileLock& FileLock::operator=(FileLock&&) noexcept = default;
FileLock::~FileLock() = default;

namespace {

// Whether the name still leads to this file: its last owner removes it.
bool IsStillNamed(const std::string& path, int file) {
  struct stat named {};
  struct stat opened {};
  return lstat(path.c_str(), &named) == 0 && fstat(file, &opened) == 0 && named.st_dev == opened.st_dev &&
         named.st_ino == opened.st_ino;
}

// Not open when somebody else has it; then errno is EWOULDBLOCK.
Descriptor TryToLock(const std::string& path) {
  Descriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!file.IsOpen() || flock(file.Get(), LOCK_EX | LOCK_NB) != 0) return Descriptor();
  if (IsStillNamed(path, file.Get())) return file;
  errno = EWOULDBLOCK;
  return Descriptor();
}

} // namespace

Result<FileLock> FileLock::Acquire(std::u16string_view path, std::chrono::milliseconds time) {
  constexpr std::chrono::milliseconds again(5);
  const Result<std::string> native = NativeForWriting(path);
  if (!native) return FileFailure(u"lock file", path, native.Message());
  const auto end = std::chrono::steady_clock::now() + time;
  for (;;) {
    Descriptor file = TryToLock(*native);
    if (file.IsOpen()) return FileLock(std::make_unique<State>(*native, std::move(file)));
    if (errno != EWOULDBLOCK && errno != EINTR) return FileFailure(u"lock file", path, Reason(errno));
    if (std::chrono::steady_clock::now() >= end)
      return FileFailure(u"lock file", path, u"Another program holds it");
    std::this_thread::sleep_for(again);
  }
}

} // namespace kx::platform
