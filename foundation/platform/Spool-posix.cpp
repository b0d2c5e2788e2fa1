#include "foundation/platform/Posix.h"
#include "foundation/platform/SpoolFile.h"
#include "foundation/text/Encoding.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace kx::platform {

using namespace posix;

struct Spool::File::State {
  Descriptor Handle;
};

Spool::File::File(std::unique_ptr<State> state) : state_(std::move(state)) {}
Spool::File::~File() = default;

// Some file systems have no files without a name; there it has one for a moment.
Result<std::unique_ptr<Spool::File>> Spool::File::Make(std::u16string_view folder) {
  const Result<std::string> native = NativeForWriting(folder);
  if (!native) return FileFailure(u"create a file in", folder, native.Message());
  Descriptor file(open(native->c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
  while (!file.IsOpen() && (errno == EOPNOTSUPP || errno == EISDIR || errno == EEXIST || errno == EINVAL)) {
    const std::string path = *native + "/" + kTemporaryFiles.New();
    file = Descriptor(open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (file.IsOpen())
      unlink(path.c_str());
    else if (errno != EEXIST)
      break;
  }
  if (!file.IsOpen()) return FileFailure(u"create a file in", folder, Reason(errno));
  return std::unique_ptr<File>(new File(std::make_unique<State>(State{std::move(file)})));
}

Status Spool::File::Append(std::string_view bytes) {
  const int error = WriteAll(state_->Handle.Get(), bytes);
  return error == 0 ? Status(Done{}) : Failure{Reason(error)};
}

Status Spool::File::Read(std::uint64_t from, char* buffer, std::size_t size) const {
  while (size > 0) {
    const ssize_t count = pread(state_->Handle.Get(), buffer, size, static_cast<off_t>(from));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return Failure{Reason(count < 0 ? errno : EIO)};
    buffer += count;
    size -= static_cast<std::size_t>(count);
    from += static_cast<std::uint64_t>(count);
  }
  return Done{};
}

} // namespace kx::platform
