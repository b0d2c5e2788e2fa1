#include "platform/Files.h"
#include "platform/Posix.h"
#include "platform/Spool.h"

#include "text/Encoding.h"
#include "text/Text.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace kx::platform {

namespace posix {

int Descriptor::Close() noexcept {
  const int fd = std::exchange(fd_, -1);
  return fd >= 0 && close(fd) != 0 ? errno : 0;
}

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

// The error number, or 0.
int WriteAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(fd, bytes.data(), bytes.size());
    if (count < 0 && errno != EINTR) return errno;
    if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return 0;
}

void SyncFolder(const std::string& folder) {
  const Descriptor handle(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (handle.IsOpen()) fsync(handle.Get()); // some file systems cannot; the file itself is safe by now
}

// A new file beside the one it is for; it vanishes again unless it was put in place.
class TemporaryFile {
public:
  TemporaryFile(const std::string& folder, mode_t mode) {
    do {
      path_ = folder + "/.kx-" + RandomLetters(12) + ".tmp";
      file_ = Descriptor(open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    } while (!file_.IsOpen() && errno == EEXIST);
    if (!file_.IsOpen()) error_ = errno;
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    if (!placed_ && error_ == 0) unlink(path_.c_str());
  }

  int Error() const { return error_; }
  int Handle() const { return file_.Get(); }

  int Write(std::string_view bytes) { return WriteAll(file_.Get(), bytes); }

  // Makes all of it durable.
  int Finish() {
    const int error = fsync(file_.Get()) == 0 ? 0 : errno;
    return error != 0 ? error : file_.Close();
  }

  int RenameTo(const std::string& target) {
    if (rename(path_.c_str(), target.c_str()) != 0) return errno;
    placed_ = true;
    return 0;
  }

  // Unlike a rename this never replaces a file.
  int LinkAs(const std::string& target) { return link(path_.c_str(), target.c_str()) == 0 ? 0 : errno; }

private:
  std::string path_;
  Descriptor file_;
  int error_ = 0;
  bool placed_ = false;
};

// Where a chain of symbolic links ends, even when nothing is there yet.
std::string FollowLinks(std::string native) {
  std::error_code error;
  for (int depth = 0; depth < 40; ++depth) {
    const std::filesystem::path target = std::filesystem::read_symlink(native, error);
    if (error) break;
    native = (std::filesystem::path(FolderOf(native)) / target).string();
  }
  return native;
}

// Why an existing file must not be replaced; 0 when it may. The superuser passes every access check, so a
// file that nobody may write is told by its mode.
int RefusalToReplace(const std::string& native, const struct stat& info) {
  if (S_ISDIR(info.st_mode)) return EISDIR;
  if (!S_ISREG(info.st_mode)) return EINVAL;
  if ((info.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0) return EACCES;
  return faccessat(AT_FDCWD, native.c_str(), W_OK, AT_EACCESS) == 0 ? 0 : errno;
}

// Owner first: changing it takes special mode bits away. Only the superuser can give files to others.
int TakeOverOwnerAndMode(int fd, const struct stat& old) {
  const bool owned = fchown(fd, old.st_uid, old.st_gid) == 0;
  if (!owned && geteuid() == 0) return errno;
  if (!owned && fchown(fd, static_cast<uid_t>(-1), old.st_gid) != 0) errno = 0;
  return fchmod(fd, old.st_mode & 07777) == 0 ? 0 : errno;
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
  if (const int refusal = exists ? RefusalToReplace(target, old) : 0; refusal != 0) return Reason(refusal);

  TemporaryFile temporary(FolderOf(target), exists ? 0600 : 0666);
  int error = temporary.Error();
  if (error == 0 && exists) error = TakeOverOwnerAndMode(temporary.Handle(), old);
  if (error != 0) return Reason(error);
  if (!content) return {};
  if (const auto written = WriteTo(temporary, content); !written) return written.Message();
  error = temporary.Finish();
  if (error == 0) error = temporary.RenameTo(target);
  if (error != 0) return Reason(error);
  SyncFolder(FolderOf(target));
  return {};
}

int MakeFolders(const std::string& native) {
  for (std::size_t end = native.find('/', 1);; end = native.find('/', end + 1)) {
    if (mkdir(native.substr(0, end).c_str(), 0777) != 0 && errno != EEXIST) {
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

std::u16string FromEnvironment(const char* name) {
  const char* value = getenv(name);
  return value == nullptr ? std::u16string() : text::FromUtf8(value);
}

} // namespace

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
  if (error == 0) error = temporary.LinkAs(*native);
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
  Descriptor file(open(native.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file.IsOpen() || fstat(file.Get(), &info) != 0) return fail(Reason(errno));
  if (!S_ISREG(info.st_mode)) return fail(u"It is not a regular file");
  return FileReader(std::make_unique<State>(
      State{std::move(file), std::u16string(path), static_cast<std::uint64_t>(info.st_size)}));
}

std::uint64_t FileReader::Size() const {
  return state_->Size;
}

Result<std::size_t> FileReader::Read(char* buffer, std::size_t size) {
  ssize_t count = 0;
  do {
    count = read(state_->File.Get(), buffer, size);
  } while (count < 0 && errno == EINTR);
  if (count < 0) return FileFailure(u"read file", state_->Path, Reason(errno));
  return static_cast<std::size_t>(count);
}

Status FileReader::Rewind() {
  if (lseek(state_->File.Get(), 0, SEEK_SET) == 0) return Done{};
  return FileFailure(u"read file", state_->Path, Reason(errno));
}

Status SaveFileInPieces(std::u16string_view path, const WriteContent& content) {
  const Result<std::string> native = NativeForWriting(path);
  if (!native) return FileFailure(u"write file", path, native.Message());
  const std::u16string refusal = Replace(FollowLinks(*native), content);
  if (!refusal.empty()) return FileFailure(u"write file", path, refusal);
  return Done{};
}

Status SaveFile(std::u16string_view path, std::string_view bytes) {
  return SaveFileInPieces(path, [bytes](const PutBytes& put) { return put(bytes); });
}

Status CheckSaveFile(std::u16string_view path) {
  return SaveFileInPieces(path, {});
}

Status CreateDirectories(std::u16string_view path) {
  const Result<std::string> native = NativeForWriting(path);
  if (!native) return FileFailure(u"create folder", path, native.Message());
  const int error = MakeFolders(*native);
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
    const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (file.IsOpen()) return text::FromUtf8(path);
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

std::u16string ProgramDirectory() {
  std::error_code error;
  return text::FromUtf8(std::filesystem::read_symlink("/proc/self/exe", error).parent_path().string());
}

std::u16string ConfigDirectory() {
  std::u16string named = FromEnvironment("XDG_CONFIG_HOME");
  if (named.starts_with(u'/')) return named; // a relative one is to be ignored
  const std::u16string home = FromEnvironment("HOME");
  return home.empty() ? home : home + u"/.config";
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
