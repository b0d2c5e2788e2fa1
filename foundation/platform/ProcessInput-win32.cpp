#include "foundation/platform/ProcessInput-win32.h"

namespace kx::platform {

using namespace win32;

ProcessInput::ProcessInput() : ends_(std::make_unique<Pipe>()) {}
ProcessInput::~ProcessInput() = default;

Result<std::shared_ptr<ProcessInput>> ProcessInput::Open() {
  auto input = std::make_shared<ProcessInput>();
  HANDLE read = nullptr, write = nullptr;
  if (CreatePipe(&read, &write, nullptr, 0) == FALSE) return Failure{Reason(GetLastError())};
  input->ends_->Read = Handle(read);
  input->ends_->Write = Handle(write);
  if (SetHandleInformation(read, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT) == FALSE)
    return Failure{Reason(GetLastError())};
  return input;
}

Status ProcessInput::Write(std::string_view bytes) {
  while (!bytes.empty()) {
    DWORD count = 0;
    if (WriteFile(ends_->Write.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) ==
        FALSE)
      return Failure{Reason(GetLastError())};
    bytes.remove_prefix(count);
  }
  return Done{};
}

void ProcessInput::Close() {
  ends_->Write.Close();
}

} // namespace kx::platform
