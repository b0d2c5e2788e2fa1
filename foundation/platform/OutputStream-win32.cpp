#include "foundation/platform/OutputStream-win32.h"

#include "foundation/text/Encoding.h"

#include <algorithm>

namespace kx::platform::win32 {

// Of the system's pipes only those with names can be read in the background.
OutputPipe MakeOutputPipe() {
  constexpr DWORD buffer = 65536;
  const std::wstring name = L"\\\\.\\pipe\\kx-" + ToWide(text::FromAscii(RandomLetters(24)));
  OutputPipe pipe;
  pipe.Read = Handle(CreateNamedPipeW(
      name.c_str(), PIPE_ACCESS_INBOUND | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
      PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS, 1, buffer, buffer, 0,
      nullptr));
  if (!pipe.Read.IsOpen()) return pipe;
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  pipe.Write = Handle(CreateFileW(name.c_str(), GENERIC_WRITE, 0, &inherited, OPEN_EXISTING, 0, nullptr));
  return pipe;
}

OutputStream::OutputStream(Handle pipe, const std::function<void(std::u16string_view)>& receiver)
    : pipe_(std::move(pipe)), event_(CreateEventW(nullptr, TRUE, FALSE, nullptr)), receiver_(receiver),
      splitter_([this](std::string_view line) { Deliver(line); }) {
  StartReading(block_.size());
}

OutputStream::~OutputStream() {
  if (!reading_) return;
  CancelIoEx(pipe_.Get(), &read_);
  TakeBlock(true); // the system writes into the block no more
}

void OutputStream::ReadBlock() {
  const std::size_t size = TakeBlock(false);
  if (size == 0) return;
  splitter_.Feed({block_.data(), size});
  StartReading(block_.size());
}

void OutputStream::ReadRest() {
  if (reading_) CancelIoEx(pipe_.Get(), &read_); // without effect on a block that is there
  std::size_t size = TakeBlock(true);
  DWORD waiting = 0;
  if (IsOpen()) PeekNamedPipe(pipe_.Get(), nullptr, 0, nullptr, &waiting, nullptr);
  splitter_.Feed({block_.data(), size});
  for (std::size_t left = waiting; left > 0; left -= size) {
    StartReading(std::min(left, block_.size()));
    size = TakeBlock(true);
    if (size == 0) break;
    splitter_.Feed({block_.data(), size});
  }
  pipe_.Close();
  splitter_.Finish();
}

void OutputStream::StartReading(std::size_t size) {
  if (!IsOpen()) return;
  read_ = {};
  read_.hEvent = event_.Get();
  const BOOL done = ::ReadFile(pipe_.Get(), block_.data(), static_cast<DWORD>(size), nullptr, &read_);
  reading_ = done != FALSE || GetLastError() == ERROR_IO_PENDING;
  if (!reading_) pipe_.Close(); // nobody writes any more
}

std::size_t OutputStream::TakeBlock(bool wait) {
  if (!reading_) return 0;
  DWORD size = 0;
  const BOOL done = GetOverlappedResult(pipe_.Get(), &read_, &size, wait ? TRUE : FALSE);
  const DWORD error = done != FALSE ? ERROR_SUCCESS : GetLastError();
  if (error == ERROR_IO_INCOMPLETE) return 0;
  reading_ = false;
  if (error != ERROR_SUCCESS && error != ERROR_OPERATION_ABORTED) pipe_.Close();
  return size;
}

void OutputStream::Deliver(std::string_view line) {
  if (receiver_) receiver_(decoder_.Decode(line));
}

} // namespace kx::platform::win32
