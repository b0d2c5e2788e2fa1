#include "foundation/platform/SharedLibrary.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/Win32.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/WindowsPath.h"

namespace kx::platform {

using namespace win32;

Result<EntryPoint> LoadLibraryEntry(std::u16string_view path, std::string_view entry) {
  const auto fail = [&](std::u16string_view reason) { return FileFailure(u"load library", path, reason); };
  const Result<std::wstring> native = ToNative(path);
  if (!native) return fail(native.Message());
  DWORD mode = 0;
  SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &mode); // no message boxes
  // What it needs is looked for beside it, beside this program and in the system's folder.
  const HMODULE library = LoadLibraryExW(native->c_str(), nullptr,
                                         LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
  const DWORD error = GetLastError();
  SetThreadErrorMode(mode, nullptr);
  if (library == nullptr) return fail(Reason(error));
  const FARPROC symbol = GetProcAddress(library, std::string(entry).c_str());
  if (symbol == nullptr) return fail(u"It has no entry " + text::FromUtf8(entry));
  return reinterpret_cast<EntryPoint>(reinterpret_cast<void*>(symbol));
}

std::u16string LibraryBesideProgram(std::u16string_view name) {
  return text::JoinPath(ProgramDirectory(), std::u16string(name) + u".dll");
}

} // namespace kx::platform
