#include "foundation/platform/SpoolFile.h"
#include "foundation/platform/Win32.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/WindowsPath.h"

#include <utility>

namespace kx::platform {

using namespace win32;

struct Spool::File::State {
  Handle Owned;
};

Spool::File::File(std::unique_ptr<State> state) : state_(std::move(state)) {}
Spool::File::~File() = default;

// It has a name here, but the system takes it away with its last handle.
Result<std::unique_ptr<Spool::File>> Spool::File::Make(std::u16string_view folder) {
  const Result<std::u16string> full = FullPath(folder);
  if (!full) return FileFailure(u"create a file in", folder, full.Message());
  for (;;) {
    const std::u16string path = text::JoinPath(*full, text::FromAscii(kTemporaryFiles.New()));
    Handle file(CreateFileW(WithLongPrefix(path).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                            CREATE_NEW, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (file.IsOpen())
      return std::unique_ptr<File>(new File(std::make_unique<State>(State{std::move(file)})));
    if (GetLastError() != ERROR_FILE_EXISTS)
      return FileFailure(u"create a file in", folder, Reason(GetLastError()));
  }
}

Status Spool::File::Append(std::string_view bytes) {
  LARGE_INTEGER none{};
  if (SetFilePointerEx(state_->Owned.Get(), none, nullptr, FILE_END) == FALSE)
    return Failure{Reason(GetLastError())};
  auto refusal = WriteAll(state_->Owned.Get(), bytes);
  return refusal.empty() ? Status(Done{}) : Failure{std::move(refusal)};
}

Status Spool::File::Read(std::uint64_t from, char* buffer, std::size_t size) const {
  LARGE_INTEGER place{};
  place.QuadPart = static_cast<LONGLONG>(from);
  if (SetFilePointerEx(state_->Owned.Get(), place, nullptr, FILE_BEGIN) == FALSE)
    return Failure{Reason(GetLastError())};
  while (size > 0) {
    DWORD count = 0;
    if (::ReadFile(state_->Owned.Get(), buffer, static_cast<DWORD>(size), &count, nullptr) == FALSE)
      return Failure{Reason(GetLastError())};
    if (count == 0) return Failure{Reason(ERROR_HANDLE_EOF)};
    buffer += count;
    size -= count;
  }
  return Done{};
}

} // namespace kx::platform
