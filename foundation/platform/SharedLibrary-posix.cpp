#include "foundation/platform/SharedLibrary.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/Posix.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/WindowsPath.h"

#include <dlfcn.h>

namespace kx::platform {

Result<EntryPoint> LoadLibraryEntry(std::u16string_view path, std::string_view entry) {
  const auto fail = [&] {
    const char* reason = dlerror();
    return FileFailure(u"load library", path, text::FromUtf8(reason == nullptr ? "" : reason));
  };
  const Result<std::string> native = posix::NativeForWriting(path);
  if (!native) return FileFailure(u"load library", path, native.Message());
  // Without a separator the loader would search the system's folders instead.
  const std::string file = native->find('/') == std::string::npos ? "./" + *native : *native;
  void* library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) return fail();
  void* symbol = dlsym(library, std::string(entry).c_str());
  if (symbol == nullptr) return fail();
  return reinterpret_cast<EntryPoint>(symbol);
}

std::u16string LibraryBesideProgram(std::u16string_view name) {
  return text::JoinPath(ProgramDirectory(), std::u16string(name) + u".so");
}

} // namespace kx::platform
