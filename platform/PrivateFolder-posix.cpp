#include "platform/PrivateFolder.h"

#include "platform/Files.h"
#include "platform/Posix.h"
#include "text/Encoding.h"

#include <cerrno>
#include <sys/stat.h>

namespace kx::platform {

using namespace posix;

Result<PrivateFolder> PrivateFolder::Create() {
  const std::u16string folder = TemporaryDirectory();
  const Result<std::string> native = NativeForWriting(folder);
  if (!native) return FileFailure(u"create a folder in", folder, native.Message());
  for (;;) {
    const std::string path = *native + "/kx-" + RandomLetters(12);
    if (mkdir(path.c_str(), 0700) == 0) return PrivateFolder(text::FromUtf8(path));
    if (errno != EEXIST) return FileFailure(u"create a folder in", folder, Reason(errno));
  }
}

} // namespace kx::platform
