// What the POSIX sources of this room share: owned descriptors, native paths, messages.
#pragma once

#include "foundation/platform/Result.h"
#include "foundation/platform/Shared.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace kx::platform::posix {

// Owns a file descriptor.
class Descriptor {
public:
  explicit Descriptor(int fd = -1) : fd_(fd) {}
  Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~Descriptor() { Close(); }

  int Get() const { return fd_; }
  bool IsOpen() const { return fd_ >= 0; }
  // The system's error number, for those whose data is only safe after a clean close; else 0.
  int Close() noexcept {
    const int fd = std::exchange(fd_, -1);
    return fd >= 0 && close(fd) != 0 ? errno : 0;
  }

private:
  int fd_;
};

// Again while a signal interrupts it: what a call gives that says -1 when it has failed.
template <typename TCall>
auto Uninterrupted(TCall call) {
  for (;;) {
    const auto result = call();
    if (result >= 0 || errno != EINTR) return result;
  }
}

// What a folder holds, one entry after the other, also where there is no memory left: the iterators of
// std::filesystem end the program then.
class FolderWalk {
public:
  explicit FolderWalk(const std::string& native) : FolderWalk(AT_FDCWD, native.c_str(), 0) {}
  // The name as it is seen from another open folder, with more flags to open it.
  FolderWalk(int above, const char* name, int flags) noexcept;

  int Error() const { return error_; } // why there is nothing, or nothing more, to see; else 0
  int Handle() const { return dirfd(list_.get()); }
  // Without "." and ".."; nothing behind the last one.
  const dirent* Next() noexcept;

private:
  struct Closed {
    void operator()(DIR* list) const { closedir(list); }
  };
  std::unique_ptr<DIR, Closed> list_;
  int error_ = 0;
};

// All of it, in as many calls as it takes. The error number, or 0.
int WriteAll(int fd, std::string_view bytes);

// Takes the lock that a process holds on a file or folder until it ends, however it ends. False when another
// one has it, or has removed the name meanwhile; true, too, on a file system that knows no locks.
bool TakeForLife(const std::string& native, const Descriptor& file);

// The system's words for an error number.
std::u16string Reason(int error);

// Windows leaves out blanks and dots at the end of a name; files are found as it would find them.
std::u16string_view NameOnWindows(std::u16string_view name);

// The path with "/" and its drive replaced; nothing is looked up. A failure's message is the bare reason.
Result<std::string> ToNative(std::u16string_view path);
// The existing file or folder of that name; without regard to letter case where the exact one is missing.
std::optional<std::string> FindNative(std::u16string_view path);
// The same for the part of the path that exists; the rest as written.
Result<std::string> NativeForWriting(std::u16string_view path);

// The same, behind all links: where the file is that a writer replaces or makes. A link that leads nowhere
// gives the place where it leads.
Result<std::string> RealPathForWriting(std::u16string_view path);

// A small file for its owner's eyes only. Reading refuses one that others may read.
Result<std::string> ReadPrivateFile(std::u16string_view path);
// Makes the file and its folder; when it exists already, it stays as it is and that is no failure.
Status CreatePrivateFile(std::u16string_view path, std::string_view bytes);

} // namespace kx::platform::posix
