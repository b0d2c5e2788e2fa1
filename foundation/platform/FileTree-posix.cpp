#include "foundation/platform/FileTree.h"

#include "foundation/platform/Posix.h"
#include "foundation/platform/Shared.h"
#include "foundation/text/Encoding.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace kx::platform {

using namespace posix;

namespace {

FileStamp StampFrom(std::u16string path, const struct stat& info) {
  const auto time =
      std::chrono::seconds(info.st_mtim.tv_sec) + std::chrono::nanoseconds(info.st_mtim.tv_nsec);
  return {std::move(path), static_cast<std::uint64_t>(info.st_size),
          std::chrono::system_clock::time_point(
              std::chrono::duration_cast<std::chrono::system_clock::duration>(time))};
}

class TreeReader {
public:
  TreeReader(std::span<const std::u16string_view> without, std::vector<FileStamp>& files)
      : without_(without), files_(files) {}

  // The error number, or 0.
  int Read(int above, const char* name, const std::string& path) {
    FolderWalk walk(above, name, above == AT_FDCWD ? 0 : O_NOFOLLOW);
    while (const dirent* entry = walk.Next())
      if (const int error = Take(walk.Handle(), *entry, path + "/" + entry->d_name); error != 0) return error;
    return walk.Error();
  }

private:
  int Take(int folder, const dirent& entry, const std::string& path) {
    struct stat info {};
    if (fstatat(folder, entry.d_name, &info, AT_SYMLINK_NOFOLLOW) != 0) return errno == ENOENT ? 0 : errno;
    if (S_ISLNK(info.st_mode)) { // to a file: that one's content counts
      if (fstatat(folder, entry.d_name, &info, 0) != 0 || S_ISDIR(info.st_mode)) return 0;
    }
    if (S_ISREG(info.st_mode)) files_.push_back(StampFrom(text::FromUtf8(path), info));
    if (!S_ISDIR(info.st_mode) || IsLeftOut(text::FromUtf8(entry.d_name), without_)) return 0;
    return Read(folder, entry.d_name, path);
  }

  std::span<const std::u16string_view> without_;
  std::vector<FileStamp>& files_;
};

} // namespace

Result<std::vector<FileStamp>> ListTreeUnsorted(std::u16string_view folder,
                                                std::span<const std::u16string_view> without) {
  const auto native = FindNative(folder);
  if (!native) return FileFailure(u"list folder", folder, Reason(ENOENT));
  std::vector<FileStamp> files;
  if (const int error = TreeReader(without, files).Read(AT_FDCWD, native->c_str(), *native); error != 0)
    return FileFailure(u"list folder", folder, Reason(error));
  return files;
}

Result<FileStamp> StampOfFile(std::u16string_view path) {
  const auto native = FindNative(path);
  struct stat info {};
  if (!native || stat(native->c_str(), &info) != 0)
    return FileFailure(u"read", path, Reason(native ? errno : ENOENT));
  return StampFrom(text::FromUtf8(*native), info);
}

} // namespace kx::platform
