#include "foundation/platform/PrivateFolder.h"

#include "foundation/platform/Posix.h"
#include "foundation/text/Encoding.h"

#include <cerrno>
#include <sys/file.h>
#include <sys/stat.h>

namespace kx::platform {

using namespace posix;

static Descriptor OpenFolder(const std::string& path) {
  return Descriptor(
      Uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); }));
}

Result<PrivateFolder> PrivateFolder::Create() {
  const std::u16string folder = TemporaryDirectory();
  const Result<std::string> native = NativeForWriting(folder);
  if (!native) return FileFailure(u"create a folder in", folder, native.Message());
  for (;;) {
    const std::string path = *native + "/" + kPrivateFolders.New();
    PrivateFolder made(text::FromUtf8(path), std::make_shared<Descriptor>()); // before there is one to lose
    if (mkdir(path.c_str(), 0700) != 0) {
      const int error = errno;
      made.path_.clear();
      if (error == EEXIST) continue;
      return FileFailure(u"create a folder in", folder, Reason(error));
    }
    Descriptor& life = *std::static_pointer_cast<Descriptor>(made.life_);
    life = OpenFolder(path);
    if (!life.IsOpen() && errno != ENOENT) return FileFailure(u"create a folder in", folder, Reason(errno));
    // Else somebody who cleans up has been quicker than the lock.
    if (life.IsOpen() && TakeForLife(path, life)) return made;
  }
}

// A folder of this user's, and nobody else's to enter, whose owner lives no more.
static bool IsAbandoned(const std::string& path) {
  const Descriptor folder = OpenFolder(path);
  struct stat info {};
  if (!folder.IsOpen() || fstat(folder.Get(), &info) != 0) return false;
  const bool isPrivate = info.st_uid == geteuid() && (info.st_mode & 077) == 0;
  if (!isPrivate || flock(folder.Get(), LOCK_EX | LOCK_NB) != 0) return false;
  // A mark that cannot be looked for may be there.
  return faccessat(folder.Get(), kKept, F_OK, AT_SYMLINK_NOFOLLOW) != 0 && errno == ENOENT;
}

void PrivateFolder::RemoveAbandoned() {
  const auto folder = FindNative(TemporaryDirectory());
  if (!folder) return;
  FolderWalk walk(*folder);
  while (const dirent* entry = walk.Next())
    if (const std::string path = *folder + "/" + entry->d_name;
        kPrivateFolders.Has(entry->d_name) && IsAbandoned(path))
      RemoveTree(path);
}

} // namespace kx::platform
