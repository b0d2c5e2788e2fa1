#include "foundation/platform/FileTraits-posix.h"
#include "foundation/platform/Files.h"
#include "foundation/platform/Posix.h"
#include "foundation/platform/Spool.h"
#include "foundation/platform/StopSignal.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kx::platform {

namespace posix {

namespace {

bool IsRegular(const std::string& native) {
  struct stat info {};
  return stat(native.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

std::string FolderOf(const std::string& native) {
  const std::size_t slash = native.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : native.substr(0, slash);
}

void SyncFolder(const std::string& folder) {
  const Descriptor handle(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (handle.IsOpen()) fsync(handle.Get()); // some file systems cannot; the file itself is safe by now
}

// Only this user's, and only when the one who made it lives no more.
void RemoveIfAbandoned(int folder, const char* name) {
  const Descriptor file(openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat info {};
  if (!file.IsOpen() || fstat(file.Get(), &info) != 0) return;
  if (!S_ISREG(info.st_mode) || info.st_uid != geteuid()) return;
  if (flock(file.Get(), LOCK_EX | LOCK_NB) == 0) unlinkat(folder, name, 0);
}

void RemoveAbandonedFiles(const std::string& folder) {
  if (!IsFirstVisit(folder)) return;
  FolderWalk walk(folder);
  while (const dirent* entry = walk.Next())
    if (kTemporaryFiles.Has(entry->d_name)) RemoveIfAbandoned(walk.Handle(), entry->d_name);
}

// A new file beside the one it is for; it vanishes again unless it was put in place. It has no name until
// then, so that a killed process leaves nothing behind, where the file system can do that. No signal ends the
// program meanwhile.
class TemporaryFile {
public:
  TemporaryFile(const std::string& folder, mode_t mode) : folder_(folder) {
    MakeNameless(mode);
    if (!file_.IsOpen()) MakeNamed(mode);
    life_ = Descriptor(fcntl(file_.Get(), F_DUPFD_CLOEXEC, 0));
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    if (!placed_ && error_ == 0 && !path_.empty()) unlink(path_.c_str());
  }

  int Error() const { return error_; }
  int Handle() const { return file_.Get(); }

  int Write(std::string_view bytes) { return WriteAll(file_.Get(), bytes); }

  // Makes all of it durable, what stands beside the content too.
  int Finish() {
    return Uninterrupted([&] { return fsync(file_.Get()); }) == 0 ? 0 : errno;
  }

  int RenameTo(const std::string& target) {
    int error = 0;
    while (path_.empty() && error == 0) {
      std::string name = NewName();
      error = LinkAs(name);
      if (error == 0) path_ = std::move(name);
      if (error == EEXIST) error = 0;
    }
    if (error == 0) error = file_.Close();
    if (error == 0 && rename(path_.c_str(), target.c_str()) != 0) error = errno;
    placed_ = error == 0;
    return error;
  }

  // Never replaces anything: EEXIST. File systems of a network have links only.
  int PlaceAsNew(const std::string& target) {
    if (path_.empty()) {
      if (const int error = LinkAs(target); error != 0) return error;
      const int error = file_.Close();
      if (error != 0) unlink(target.c_str());
      return error;
    }
    if (const int error = file_.Close(); error != 0) return error;
    if (renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) {
      placed_ = true;
      return 0;
    }
    if (errno != EINVAL && errno != ENOSYS) return errno;
    return link(path_.c_str(), target.c_str()) == 0 ? 0 : errno;
  }

private:
  // The lock is for the moment in which it has a name of ours.
  void MakeNameless(mode_t mode) {
    file_ = Descriptor(open(folder_.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, mode));
    if (!file_.IsOpen()) return;
    if (access(NameOfHandle().c_str(), F_OK) == 0)
      static_cast<void>(flock(file_.Get(), LOCK_EX | LOCK_NB));
    else
      file_ = Descriptor();
  }
  void MakeNamed(mode_t mode) {
    do {
      path_ = NewName();
      file_ = Descriptor(
          Uninterrupted([&] { return open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode); }));
    } while (file_.IsOpen() ? !TakeForLife(path_, file_) : errno == EEXIST);
    if (!file_.IsOpen()) error_ = errno;
  }

  std::string NewName() const { return folder_ + "/" + kTemporaryFiles.New(); }
  std::string NameOfHandle() const { return "/proc/self/fd/" + std::to_string(file_.Get()); }
  int LinkAs(const std::string& name) const {
    return linkat(AT_FDCWD, NameOfHandle().c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0 ? 0
                                                                                                    : errno;
  }

  SaveScope save_;
  std::string folder_;
  std::string path_; // empty while it has no name
  Descriptor file_;
  Descriptor life_; // keeps what TakeForLife has taken when the file is closed
  int error_ = 0;
  bool placed_ = false;
};

// In a folder that everybody writes to, a link of somebody else's may lead anywhere: the system does not
// follow it either when a file is opened there.
bool IsTrustedLink(const std::string& native) {
  struct stat link {};
  struct stat folder {};
  if (lstat(native.c_str(), &link) != 0 || stat(FolderOf(native).c_str(), &folder) != 0) return false;
  const bool isShared = (folder.st_mode & S_ISVTX) != 0 && (folder.st_mode & S_IWOTH) != 0;
  return !isShared || link.st_uid == geteuid() || link.st_uid == folder.st_uid;
}

constexpr std::u16string_view kForeignLink =
    u"It is a link that another user has made in a folder that everybody writes to";

// Why an existing file must not be replaced; empty when it may. The superuser passes every access check, so a
// file that nobody may write is told by its mode. The other names of a file would go on standing for the old
// content.
std::u16string RefusalToReplace(const std::string& native, const struct stat& info) {
  if (S_ISDIR(info.st_mode)) return Reason(EISDIR);
  if (!S_ISREG(info.st_mode)) return Reason(EINVAL);
  if ((info.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0) return Reason(EACCES);
  if (faccessat(AT_FDCWD, native.c_str(), W_OK, AT_EACCESS) != 0) return Reason(errno);
  return info.st_nlink > 1 ? SeveralNames(info.st_nlink) : std::u16string();
}

Status WriteTo(TemporaryFile& file, const WriteContent& content) {
  return content([&file](std::string_view bytes) -> Status {
    const int error = file.Write(bytes);
    return error == 0 ? Status(Done{}) : Failure{Reason(error)};
  });
}

// Why it failed, or empty. Without content all but the writing is done.
std::u16string Replace(const std::string& target, const WriteContent& content) {
  struct stat old {};
  const bool exists = stat(target.c_str(), &old) == 0;
  if (!exists && errno != ENOENT) return Reason(errno);
  if (auto refusal = exists ? RefusalToReplace(target, old) : std::u16string(); !refusal.empty())
    return refusal;

  const std::string folder = FolderOf(target); // what has been placed is told of, even without memory
  if (content) RemoveAbandonedFiles(folder);
  TemporaryFile temporary(folder, exists ? 0600 : 0666);
  int error = temporary.Error();
  if (error != 0) return Reason(error);
  if (content)
    if (const auto written = WriteTo(temporary, content); !written) return written.Message();
  if (exists)
    if (auto refusal = TakeOverTraits(temporary.Handle(), target, old); !refusal.empty()) return refusal;
  if (!content) return {};
  error = temporary.Finish();
  if (error == 0) error = temporary.RenameTo(target);
  if (error != 0) return Reason(error);
  SyncFolder(folder);
  return {};
}

// The traits of `like` when it exists; then its times, too, when asked.
int MakeNew(const std::string& target, std::string_view bytes, const std::string& like, bool withTimes) {
  struct stat info {};
  const bool isLike = !like.empty() && stat(like.c_str(), &info) == 0;
  const std::string folder = FolderOf(target);
  TemporaryFile temporary(folder, isLike ? 0600 : 0666);
  int error = temporary.Error();
  if (error == 0) error = temporary.Write(bytes);
  if (error != 0) return error;
  if (isLike) TakeOverTraitsOrKeepPrivate(temporary.Handle(), like, info);
  const std::array<timespec, 2> times{info.st_atim, info.st_mtim};
  if (withTimes && isLike && futimens(temporary.Handle(), times.data()) != 0) return errno;
  error = temporary.Finish();
  if (error == 0) error = temporary.PlaceAsNew(target);
  if (error == 0) SyncFolder(folder);
  return error;
}

int MakeFolders(const std::string& native, mode_t lastMode = 0777) {
  for (std::size_t end = native.find('/', 1);; end = native.find('/', end + 1)) {
    const mode_t mode = end == std::string::npos ? lastMode : 0777;
    if (mkdir(native.substr(0, end).c_str(), mode) != 0 && errno != EEXIST) {
      const int error = errno;
      // A folder above may refuse writing, or be read-only as a whole, and yet hold the next one.
      struct stat info {};
      if (end == std::string::npos || stat(native.substr(0, end).c_str(), &info) != 0) return error;
    }
    if (end == std::string::npos) break;
  }
  struct stat info {};
  if (stat(native.c_str(), &info) != 0) return errno;
  return S_ISDIR(info.st_mode) ? 0 : ENOTDIR;
}

// A link that leads nowhere is no folder.
bool IsFolder(int above, const dirent& entry) {
  if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
  struct stat info {};
  return fstatat(above, entry.d_name, &info, 0) == 0 && S_ISDIR(info.st_mode);
}

// Whether it is gone.
bool RemoveEntry(int above, const char* name) noexcept {
  if (unlinkat(above, name, 0) == 0 || errno == ENOENT) return true;
  FolderWalk walk(above, name, O_NOFOLLOW);
  while (const dirent* entry = walk.Next())
    RemoveEntry(walk.Handle(), entry->d_name);
  return unlinkat(above, name, AT_REMOVEDIR) == 0;
}

std::u16string FromEnvironment(const char* name) {
  const char* value = getenv(name);
  return value == nullptr ? std::u16string() : text::FromUtf8(value);
}

// The one that the variable names, else the usual one in the user's home.
std::u16string UserFolder(const char* variable, std::u16string_view usual) {
  std::u16string named = FromEnvironment(variable);
  if (named.starts_with(u'/')) return named; // a relative one is to be ignored
  const std::u16string home = FromEnvironment("HOME");
  return home.empty() ? home : home + std::u16string(usual);
}

} // namespace

FolderWalk::FolderWalk(int above, const char* name, int flags) noexcept {
  const int file =
      Uninterrupted([&] { return openat(above, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags); });
  if (file >= 0) list_.reset(fdopendir(file));
  if (list_ != nullptr) return;
  error_ = errno;
  if (file >= 0) close(file);
}

const dirent* FolderWalk::Next() noexcept {
  while (list_ != nullptr) {
    errno = 0;
    const dirent* entry = readdir(list_.get());
    if (entry == nullptr) {
      error_ = errno;
      break;
    }
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") return entry;
  }
  return nullptr;
}

int WriteAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(fd, bytes.data(), bytes.size());
    if (count < 0 && errno != EINTR) return errno;
    if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return 0;
}

Result<std::string> RealPathForWriting(std::u16string_view path) {
  Result<std::string> native = NativeForWriting(path);
  std::error_code error;
  for (int depth = 0; native && depth < 40; ++depth) {
    const std::filesystem::path target = std::filesystem::read_symlink(*native, error);
    if (error) break;
    if (!IsTrustedLink(*native)) return Failure{std::u16string(kForeignLink)};
    *native = (std::filesystem::path(FolderOf(*native)) / target).string();
  }
  return native;
}

Result<std::string> ReadPrivateFile(std::u16string_view path) {
  const auto native = FindNative(path);
  struct stat info {};
  if (!native || stat(native->c_str(), &info) != 0) return FileFailure(u"open file", path, Reason(ENOENT));
  if ((info.st_mode & 077) != 0)
    return FileFailure(u"use file", path, u"Others than its owner have access to it");
  return ReadFile(path);
}

Status CreatePrivateFile(std::u16string_view path, std::string_view bytes) {
  const Result<std::string> native = NativeForWriting(path);
  if (!native) return FileFailure(u"create file", path, native.Message());
  int error = MakeFolders(FolderOf(*native));
  if (error != 0) return FileFailure(u"create file", path, Reason(error));
  TemporaryFile temporary(FolderOf(*native), 0600);
  error = temporary.Error();
  if (error == 0) error = temporary.Write(bytes);
  if (error == 0) error = temporary.Finish();
  if (error == 0) error = temporary.PlaceAsNew(*native);
  if (error != 0 && error != EEXIST) return FileFailure(u"create file", path, Reason(error));
  return Done{};
}

} // namespace posix

using namespace posix;

struct FileReader::State {
  Descriptor File;
  std::u16string Path;
  std::uint64_t Size = 0;
};

FileReader::FileReader(std::unique_ptr<State> state) : state_(std::move(state)) {}
FileReader::FileReader(FileReader&&) noexcept = default;
FileReader& FileReader::operator=(FileReader&&) noexcept = default;
FileReader::~FileReader() = default;

Result<FileReader> FileReader::Open(std::u16string_view path) {
  const auto fail = [&](std::u16string_view reason) { return FileFailure(u"open file", path, reason); };
  const Result<std::string> lexical = ToNative(path);
  if (!lexical) return fail(lexical.Message());
  std::string native = *lexical;
  struct stat info {};
  // Looked at before it is opened: opening a pipe or a device may wait for others, or do something.
  if (stat(native.c_str(), &info) != 0) {
    native = FindNative(path).value_or(native);
    if (stat(native.c_str(), &info) != 0) return fail(Reason(errno));
  }
  if (S_ISDIR(info.st_mode)) return fail(Reason(EISDIR));
  if (!S_ISREG(info.st_mode)) return fail(u"It is not a regular file");
  Descriptor file(
      Uninterrupted([&] { return open(native.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); }));
  if (!file.IsOpen() || fstat(file.Get(), &info) != 0) return fail(Reason(errno));
  if (!S_ISREG(info.st_mode)) return fail(u"It is not a regular file");
  return FileReader(std::make_unique<State>(
      State{std::move(file), std::u16string(path), static_cast<std::uint64_t>(info.st_size)}));
}

std::uint64_t FileReader::Size() const {
  return state_->Size;
}

Result<std::size_t> FileReader::Read(char* buffer, std::size_t size) {
  const ssize_t count = Uninterrupted([&] { return read(state_->File.Get(), buffer, size); });
  if (count < 0) return FileFailure(u"read file", state_->Path, Reason(errno));
  return static_cast<std::size_t>(count);
}

Status FileReader::Rewind() {
  if (lseek(state_->File.Get(), 0, SEEK_SET) == 0) return Done{};
  return FileFailure(u"read file", state_->Path, Reason(errno));
}

Status SaveFileInPieces(std::u16string_view path, const WriteContent& content) {
  const Result<std::string> native = RealPathForWriting(path);
  const std::u16string refusal = native ? Replace(*native, content) : native.Message();
  if (!refusal.empty()) return FileFailure(u"write file", path, refusal);
  return Done{};
}

Result<bool> SaveNew(std::u16string_view path, std::string_view bytes, std::u16string_view like,
                     bool withTimes) {
  const Result<std::string> native = NativeForWriting(path);
  if (!native) return FileFailure(u"create file", path, native.Message());
  const int error = MakeNew(*native, bytes, FindNative(like).value_or(""), withTimes);
  if (error != 0 && error != EEXIST) return FileFailure(u"create file", path, Reason(error));
  return error == 0;
}

Result<std::vector<FolderEntry>> ListUnsorted(std::u16string_view path) {
  const auto folder = FindNative(path);
  if (!folder) return FileFailure(u"list folder", path, u"It does not exist.");
  std::vector<FolderEntry> entries;
  FolderWalk walk(*folder);
  while (const dirent* entry = walk.Next())
    entries.push_back({text::FromUtf8(entry->d_name), IsFolder(walk.Handle(), *entry)});
  if (walk.Error() != 0) return FileFailure(u"list folder", path, Reason(walk.Error()));
  return entries;
}

// A call may lack a handle that is free a moment later, or another process may make a file meanwhile.
void RemoveTree(const std::filesystem::path& folder) noexcept {
  if (!RemoveEntry(AT_FDCWD, folder.c_str())) RemoveEntry(AT_FDCWD, folder.c_str());
}

Status CreateDirectories(std::u16string_view path) {
  const Result<std::string> native = NativeForWriting(path);
  if (!native) return FileFailure(u"create folder", path, native.Message());
  const int error = MakeFolders(*native, 0700);
  if (error != 0) return FileFailure(u"create folder", path, Reason(error));
  return Done{};
}

Status RemoveFile(std::u16string_view path) {
  const Result<std::string> native = NativeForWriting(path);
  if (!native) return FileFailure(u"delete file", path, native.Message());
  if (unlink(native->c_str()) != 0) return FileFailure(u"delete file", path, Reason(errno));
  return Done{};
}

Result<std::u16string> CreateTemporaryFile(std::u16string_view folder, std::u16string_view prefix,
                                           std::u16string_view extension) {
  const Result<std::string> native = NativeForWriting(folder);
  if (!native) return FileFailure(u"create a file in", folder, native.Message());
  for (;;) {
    const std::string path =
        *native + "/" + text::ToUtf8(prefix) + RandomLetters(10) + text::ToUtf8(extension);
    Result<std::u16string> made = text::FromUtf8(path); // before there is anything to leave behind
    const Descriptor file(
        Uninterrupted([&] { return open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600); }));
    if (file.IsOpen()) return made;
    if (errno != EEXIST) return FileFailure(u"create a file in", folder, Reason(errno));
  }
}

std::u16string TemporaryDirectory() {
  const std::u16string named = FromEnvironment("TMPDIR");
  return named.empty() ? u"/tmp" : named;
}

std::u16string CurrentDirectory() {
  std::error_code error;
  return text::FromUtf8(std::filesystem::current_path(error).string());
}

std::u16string ProgramFile() {
  std::error_code error;
  return text::FromUtf8(std::filesystem::read_symlink("/proc/self/exe", error).string());
}

std::u16string ConfigDirectory() {
  return UserFolder("XDG_CONFIG_HOME", u"/.config");
}

std::u16string StateDirectory() {
  return UserFolder("XDG_STATE_HOME", u"/.local/state");
}

std::optional<std::u16string> FindProgram(std::u16string_view name) {
  if (name.empty() || name.find_first_of(u"/\\") != std::u16string_view::npos) return std::nullopt;
  const std::u16string searchPath = FromEnvironment("PATH");
  for (const std::u16string_view folder : text::Split(searchPath, u':')) {
    if (!folder.starts_with(u'/')) continue; // the current folder is nobody's place for programs
    std::u16string path = std::u16string(folder).append(u"/").append(name);
    const std::string native = text::ToUtf8(path);
    if (IsRegular(native) && access(native.c_str(), X_OK) == 0) return path;
  }
  return std::nullopt;
}

} // namespace kx::platform
