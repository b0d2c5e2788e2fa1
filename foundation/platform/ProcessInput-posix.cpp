#include "foundation/platform/ProcessInput-posix.h"

#include "foundation/platform/Spawn-posix.h"

#include <array>
#include <sys/socket.h>

namespace kx::platform {

using namespace posix;

ProcessInput::ProcessInput() : ends_(std::make_unique<Pipe>()) {}
ProcessInput::~ProcessInput() = default;

// Sockets, since writing to one that nobody reads any more can be told to fail without a signal.
Result<std::shared_ptr<ProcessInput>> ProcessInput::Open() {
  auto input = std::make_shared<ProcessInput>();
  std::array<int, 2> ends{-1, -1};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) return Failure{Reason(errno)};
  input->ends_->Read = AboveStandardStreams(Descriptor(ends[0]));
  input->ends_->Write = Descriptor(ends[1]);
  if (!input->ends_->Read.IsOpen()) return Failure{Reason(errno)};
  return input;
}

Status ProcessInput::Write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count =
        Uninterrupted([&] { return send(ends_->Write.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL); });
    if (count < 0) return Failure{Reason(errno)};
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return Done{};
}

void ProcessInput::Close() {
  ends_->Write.Close();
}

} // namespace kx::platform
