// Stands between a program and the system (LD_PRELOAD) and lets one call fail, so that a test can try every
// call of a run in turn. Counted are the program's own calls, from main on, never those of the tools it
// starts:
//   - on files below KX_FAULT_FOLDER (relative names are taken for such), on pipes, and writing to standard
//   output,
//   - starts of processes and threads,
//   - with KX_FAULT_MODE=memory only allocations by operator new.
// KX_FAULT_MODE says how a call fails:
//   refuse     with the error of the table below
//   interrupt  with EINTR, where a call may be interrupted
//   shorten    not at all, but a read or write moves one byte only
//   full       as refuse, but only what needs room, and from then on all of that
//   memory     operator new throws
// KX_FAULT_AT is the number of the call, from 1; with 0 none fails. KX_FAULT_TRACE names a file that gets a
// line for the call that failed (with 0 for each): number, name, path. In memory mode it gets the count of
// allocations at the end.
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <new>
#include <string_view>

namespace {

enum class TMode { Off, Refuse, Interrupt, Shorten, Full, Memory };

// How a call can fail. Without an error it can only be interrupted.
struct TCall {
  const char* Name;
  int Error;
  bool MayBeInterrupted = false;
  bool NeedsRoom = false;
};
constexpr TCall Open{"open", EACCES, true};
constexpr TCall Read{"read", EIO, true};
constexpr TCall Write{"write", ENOSPC, true, true};
constexpr TCall Sync{"fsync", EIO, true};
constexpr TCall Close{"close", EIO};
constexpr TCall Rename{"rename", EACCES};
constexpr TCall Link{"link", EPERM};
constexpr TCall Unlink{"unlink", EACCES};
constexpr TCall MakeFolder{"mkdir", ENOSPC, false, true};
constexpr TCall Look{"stat", EIO};
constexpr TCall List{"readdir", EIO};
constexpr TCall Truncate{"ftruncate", EIO, true};
constexpr TCall Mode{"fchmod", EPERM};
constexpr TCall Owner{"fchown", EPERM};
constexpr TCall Times{"futimens", EPERM};
constexpr TCall ReadAttribute{"getxattr", EIO};
constexpr TCall WriteAttribute{"setxattr", ENOSPC, false, true};
constexpr TCall Lock{"flock", ENOLCK, true};
constexpr TCall MakePipe{"pipe", EMFILE};
constexpr TCall MakeEvent{"eventfd", EMFILE};
constexpr TCall StartProcess{"spawn", EAGAIN};
constexpr TCall StartThread{"thread", EAGAIN};
constexpr TCall Wait{"wait", 0, true};
constexpr TCall Allocate{"allocate", ENOMEM};

class TFaults {
public:
  TFaults() {
    folder_ = Setting("KX_FAULT_FOLDER");
    trace_ = Setting("KX_FAULT_TRACE");
    at_ = std::strtol(Setting("KX_FAULT_AT"), nullptr, 10);
    mode_ = ModeOf(Setting("KX_FAULT_MODE"));
    unsetenv("LD_PRELOAD"); // the tools it starts are none of this test's business
    pthread_atfork(nullptr, nullptr, [] { armed = false; });
  }
  TFaults(const TFaults&) = delete;
  TFaults& operator=(const TFaults&) = delete;
  ~TFaults() {
    if (mode_ == TMode::Memory) Note(count_.load(), "allocations", "");
  }

  void Arm() const { armed = mode_ != TMode::Off; }

  // Nothing fails on this thread while there is one of these.
  class TPause {
  public:
    TPause() { paused = true; }
    TPause(const TPause&) = delete;
    TPause& operator=(const TPause&) = delete;
    ~TPause() { paused = false; }
  };

  // True, with errno set, when this call is to fail.
  bool Fail(const TCall& call, const char* path) {
    if (!armed || !Concerns(call) || !IsOurs(path)) return false;
    if (!IsNext(call, path)) return false;
    errno = mode_ == TMode::Interrupt ? EINTR : call.Error;
    return true;
  }
  bool Fail(const TCall& call, int descriptor) {
    if (!armed || !Concerns(call)) return false;
    std::array<char, 4096> path{};
    return Fail(call, PathOf(descriptor, path));
  }
  // What a read or write may move.
  std::size_t Shorten(const TCall& call, int descriptor, std::size_t size) {
    if (!armed || mode_ != TMode::Shorten || size < 2) return size;
    std::array<char, 4096> path{};
    const char* name = PathOf(descriptor, path);
    return IsOurs(name) && IsNext(call, name) ? 1 : size;
  }

private:
  static const char* Setting(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
  }

  static TMode ModeOf(std::string_view name) {
    constexpr std::array<const char*, 6> names{"", "refuse", "interrupt", "shorten", "full", "memory"};
    for (std::size_t i = 1; i < names.size(); ++i)
      if (name == names[i]) return static_cast<TMode>(i);
    return TMode::Off;
  }

  bool Concerns(const TCall& call) const {
    const bool allocates = call.Error == ENOMEM;
    return !paused && ((mode_ == TMode::Refuse && call.Error != 0 && !allocates) ||
                       (mode_ == TMode::Interrupt && call.MayBeInterrupted) ||
                       (mode_ == TMode::Full && call.NeedsRoom) || (mode_ == TMode::Memory && allocates));
  }

  // An empty path is that of what has none.
  bool IsOurs(const char* path) const {
    const std::string_view name(path == nullptr ? "/" : path);
    return !name.starts_with('/') || name.starts_with(folder_);
  }

  // Where the disk is full, a terminal is not.
  const char* PathOf(int descriptor, std::array<char, 4096>& path) const {
    if (descriptor == STDOUT_FILENO) return mode_ == TMode::Full ? nullptr : "standard output";
    if (descriptor < 0 || descriptor == STDIN_FILENO || descriptor == STDERR_FILENO) return nullptr;
    std::array<char, 64> link{};
    std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", descriptor);
    const int error = errno;
    const long size = syscall(SYS_readlinkat, AT_FDCWD, link.data(), path.data(), path.size() - 1);
    errno = error;
    if (size <= 0) return nullptr;
    const std::string_view name(path.data(), static_cast<std::size_t>(size));
    if (name.starts_with("pipe:")) return "pipe";
    return name.starts_with('/') ? path.data() : nullptr;
  }

  bool IsNext(const TCall& call, const char* path) {
    const long number = ++count_;
    const bool next = mode_ == TMode::Full && at_ > 0 ? number >= at_ : number == at_;
    if (next || (at_ == 0 && mode_ != TMode::Memory)) Note(number, call.Name, path);
    return next;
  }

  // Without a call that is counted here.
  void Note(long number, const char* name, const char* path) const {
    if (*trace_ == '\0') return;
    const int error = errno;
    std::array<char, 4200> line{};
    const int size = std::snprintf(line.data(), line.size(), "%ld %s %s\n", number, name, path);
    const long file = syscall(SYS_openat, AT_FDCWD, trace_, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    syscall(SYS_write, file, line.data(), size);
    syscall(SYS_close, file);
    errno = error;
  }

  static inline std::atomic<bool> armed = false;
  static inline thread_local bool paused = false;

  const char* folder_ = "";
  const char* trace_ = "";
  long at_ = 0;
  TMode mode_ = TMode::Off;
  std::atomic<long> count_ = 0;
};

TFaults& Faults() {
  static TFaults faults;
  return faults;
}

bool Fails(const TCall& call, const char* path) {
  return Faults().Fail(call, path);
}
bool Fails(const TCall& call, int descriptor) {
  return Faults().Fail(call, descriptor);
}

mode_t ModeIn(va_list& arguments, int flags) {
  return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE ? va_arg(arguments, mode_t) : 0;
}

} // namespace

// The function that stands behind the one being defined.
#define KX_NEXT(name) static const auto next = reinterpret_cast<decltype(&name)>(dlsym(RTLD_NEXT, #name))

void* operator new(std::size_t size) {
  static const auto next = reinterpret_cast<void* (*)(std::size_t)>(dlsym(RTLD_NEXT, "_Znwm"));
  if (Fails(Allocate, "")) throw std::bad_alloc();
  return next(size);
}

extern "C" {

// The program's own static objects are there when its main begins.
using TMain = int (*)(int, char**, char**);
static TMain programMain = nullptr;

static int MainWithFaults(int argc, char** argv, char** environment) {
  Faults().Arm();
  return programMain(argc, argv, environment);
}

int __libc_start_main(TMain main, int argc, char** argv, void (*init)(), void (*fini)(), void (*rtldFini)(),
                      void* stack) {
  KX_NEXT(__libc_start_main);
  programMain = main;
  return next(MainWithFaults, argc, argv, init, fini, rtldFini, stack);
}

// The static objects of a plug-in are made inside the loader, which knows no exceptions.
void* dlopen(const char* file, int flags) noexcept {
  KX_NEXT(dlopen);
  const TFaults::TPause pause;
  return next(file, flags);
}

#define KX_OPEN(name, parameters, ...)                                                                       \
  int name parameters {                                                                                      \
    KX_NEXT(name);                                                                                           \
    va_list arguments;                                                                                       \
    va_start(arguments, flags);                                                                              \
    const mode_t mode = ModeIn(arguments, flags);                                                            \
    va_end(arguments);                                                                                       \
    return Fails(Open, path) ? -1 : next(__VA_ARGS__, mode);                                                 \
  }
KX_OPEN(open, (const char* path, int flags, ...), path, flags)
KX_OPEN(open64, (const char* path, int flags, ...), path, flags)
KX_OPEN(openat, (int folder, const char* path, int flags, ...), folder, path, flags)
KX_OPEN(openat64, (int folder, const char* path, int flags, ...), folder, path, flags)

// What is moved, in one call for all that move bytes.
#define KX_MOVE(call, name, type)                                                                            \
  ssize_t name(int file, type* bytes, std::size_t size) {                                                    \
    KX_NEXT(name);                                                                                           \
    if (Fails(call, file)) return -1;                                                                        \
    return next(file, bytes, Faults().Shorten(call, file, size));                                            \
  }
KX_MOVE(Read, read, void)
KX_MOVE(Write, write, const void)

// Whatever it says, the descriptor is free afterwards.
int close(int file) {
  KX_NEXT(close);
  const bool fails = Fails(Close, file);
  const int error = errno;
  const int result = next(file);
  if (fails) errno = error;
  return fails ? -1 : result;
}

// The calls that say by their result that they have failed: what it is then, its type, what kind of call it
// is, its name, the argument that tells where, what it declares.
#define KX_CALL(bad, type, call, name, where, parameters, arguments, ...)                                    \
  type name parameters __VA_ARGS__ {                                                                         \
    KX_NEXT(name);                                                                                           \
    return Fails(call, where) ? bad : next arguments;                                                        \
  }
#define KX_PLAIN(...) KX_CALL(-1, int, __VA_ARGS__)
KX_PLAIN(Sync, fsync, file, (int file), (file))
KX_PLAIN(Sync, fdatasync, file, (int file), (file))
KX_PLAIN(Rename, rename, to, (const char* from, const char* to), (from, to), noexcept)
KX_PLAIN(Rename, renameat2, to,
         (int fromFolder, const char* from, int toFolder, const char* to, unsigned flags),
         (fromFolder, from, toFolder, to, flags), noexcept)
KX_PLAIN(Link, link, to, (const char* from, const char* to), (from, to), noexcept)
KX_PLAIN(Link, linkat, to, (int fromFolder, const char* from, int toFolder, const char* to, int flags),
         (fromFolder, from, toFolder, to, flags), noexcept)
KX_PLAIN(Unlink, unlink, path, (const char* path), (path), noexcept)
KX_PLAIN(Unlink, remove, path, (const char* path), (path), noexcept)
KX_PLAIN(Unlink, unlinkat, path, (int folder, const char* path, int flags), (folder, path, flags), noexcept)
KX_PLAIN(MakeFolder, mkdir, path, (const char* path, mode_t mode), (path, mode), noexcept)
KX_PLAIN(Look, stat, path, (const char* path, struct stat* info), (path, info), noexcept)
KX_PLAIN(Look, lstat, path, (const char* path, struct stat* info), (path, info), noexcept)
KX_PLAIN(Look, fstat, file, (int file, struct stat* info), (file, info), noexcept)
KX_PLAIN(Look, access, path, (const char* path, int mode), (path, mode), noexcept)
KX_PLAIN(Look, faccessat, path, (int folder, const char* path, int mode, int flags),
         (folder, path, mode, flags), noexcept)
KX_PLAIN(Truncate, ftruncate, file, (int file, off_t size), (file, size), noexcept)
KX_PLAIN(Mode, fchmod, file, (int file, mode_t mode), (file, mode), noexcept)
KX_PLAIN(Owner, fchown, file, (int file, uid_t user, gid_t group), (file, user, group), noexcept)
KX_PLAIN(Times, futimens, file, (int file, const timespec times[2]), (file, times), noexcept)
KX_PLAIN(WriteAttribute, fsetxattr, file,
         (int file, const char* name, const void* value, std::size_t size, int flags),
         (file, name, value, size, flags), noexcept)
KX_PLAIN(WriteAttribute, fremovexattr, file, (int file, const char* name), (file, name), noexcept)
KX_PLAIN(Lock, flock, file, (int file, int operation), (file, operation), noexcept)
KX_PLAIN(MakePipe, pipe2, "", (int ends[2], int flags), (ends, flags), noexcept)
KX_PLAIN(MakeEvent, eventfd, "", (unsigned count, int flags), (count, flags), noexcept)
KX_PLAIN(Wait, poll, "", (pollfd * files, nfds_t count, int time), (files, count, time))
KX_PLAIN(Wait, waitid, "", (idtype_t type, id_t id, siginfo_t* info, int options), (type, id, info, options))

KX_CALL(-1, pid_t, Wait, waitpid, "", (pid_t process, int* status, int options), (process, status, options))
KX_CALL(-1, ssize_t, Write, writev, file, (int file, const iovec* blocks, int count), (file, blocks, count))
KX_CALL(-1, ssize_t, Write, pwrite, file, (int file, const void* bytes, std::size_t size, off_t at),
        (file, bytes, size, at))
KX_CALL(-1, ssize_t, ReadAttribute, getxattr, path,
        (const char* path, const char* name, void* value, std::size_t size), (path, name, value, size),
        noexcept)
KX_CALL(-1, ssize_t, ReadAttribute, fgetxattr, file,
        (int file, const char* name, void* value, std::size_t size), (file, name, value, size), noexcept)
KX_CALL(-1, ssize_t, ReadAttribute, listxattr, path, (const char* path, char* names, std::size_t size),
        (path, names, size), noexcept)

KX_CALL(nullptr, FILE*, Open, fopen64, path, (const char* path, const char* mode), (path, mode))
KX_CALL(nullptr, DIR*, Open, opendir, path, (const char* path), (path))
KX_CALL(nullptr, dirent*, List, readdir, dirfd(folder), (DIR * folder), (folder))
// These two give the error back.
KX_CALL(errno, int, StartProcess, posix_spawn, "",
        (pid_t * process, const char* path, const posix_spawn_file_actions_t* actions,
         const posix_spawnattr_t* attributes, char* const arguments[], char* const environment[]),
        (process, path, actions, attributes, arguments, environment))
KX_CALL(errno, int, StartThread, pthread_create, "",
        (pthread_t * thread, const pthread_attr_t* attributes, void* (*start)(void*), void* argument),
        (thread, attributes, start, argument), noexcept)

} // extern "C"
