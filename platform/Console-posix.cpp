#include "platform/Console.h"

#include "platform/Posix.h"
#include "text/Encoding.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace kx::platform {

namespace {

int DescriptorOf(ConsoleStream stream) {
  return stream == ConsoleStream::Output ? STDOUT_FILENO : STDERR_FILENO;
}

// Error numbers, by stream.
std::array<std::atomic<int>, 2> failures{};

std::atomic<int>& FailureOf(ConsoleStream stream) {
  return failures[stream == ConsoleStream::Output ? 0 : 1];
}

} // namespace

bool IsTerminal(ConsoleStream stream) {
  return isatty(DescriptorOf(stream)) == 1;
}

int TerminalWidth(ConsoleStream stream) {
  winsize size{};
  const bool known = ioctl(DescriptorOf(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return known ? size.ws_col : 80;
}

void WriteConsole(ConsoleStream stream, std::string_view utf8) {
  const int fd = DescriptorOf(stream);
  while (!utf8.empty()) {
    const ssize_t count = write(fd, utf8.data(), utf8.size());
    if (count > 0) {
      utf8.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno == EAGAIN) { // a stream that another program has made non-blocking
      pollfd writable{fd, POLLOUT, 0};
      poll(&writable, 1, -1);
    } else if (errno != EINTR) {
      if (errno != EPIPE) FailureOf(stream) = errno;
      return;
    }
  }
}

std::u16string WriteFailure(ConsoleStream stream) {
  const int error = FailureOf(stream);
  return error == 0 ? std::u16string() : posix::Reason(error);
}

void IgnoreBrokenPipes() {
  std::signal(SIGPIPE, SIG_IGN);
}

std::vector<std::u16string> CommandLineArguments(int argc, char** argv) {
  std::vector<std::u16string> arguments;
  arguments.reserve(static_cast<std::size_t>(argc));
  for (int i = 0; i < argc; ++i)
    arguments.push_back(text::FromUtf8(argv[i]));
  return arguments;
}

} // namespace kx::platform
