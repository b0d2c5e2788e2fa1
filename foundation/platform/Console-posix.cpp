#include "foundation/platform/Console.h"

#include "foundation/platform/Posix.h"
#include "foundation/text/Encoding.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
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

// While it lives, the terminal neither shows what is typed nor makes signals of it: a program that ended then
// would leave it so.
class HiddenInput {
public:
  HiddenInput() : isOn_(tcgetattr(STDIN_FILENO, &before_) == 0) {
    if (!isOn_) return;
    termios hidden = before_;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO | ICANON | ISIG);
    isOn_ = tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden) == 0;
  }
  ~HiddenInput() {
    if (isOn_) tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
  }
  HiddenInput(const HiddenInput&) = delete;
  HiddenInput& operator=(const HiddenInput&) = delete;
  bool IsOn() const { return isOn_; }

private:
  termios before_{};
  bool isOn_;
};

void RemoveLastCharacter(std::string& utf8) {
  while (!utf8.empty() && (static_cast<unsigned char>(utf8.back()) & 0xC0U) == 0x80U)
    utf8.pop_back();
  if (!utf8.empty()) utf8.pop_back();
}

std::optional<std::string> ReadHiddenLine() {
  constexpr char interrupt = 0x03;
  constexpr char endOfInput = 0x04;
  constexpr char clearLine = 0x15;
  std::string line;
  for (char c = 0; c != '\n' && c != '\r';) {
    const ssize_t count = read(STDIN_FILENO, &c, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0 || c == interrupt || c == endOfInput) return std::nullopt;
    if (c == clearLine) {
      line.clear();
    } else if (c == '\b' || c == 0x7F) {
      RemoveLastCharacter(line);
    } else if (c != '\n' && c != '\r') {
      line += c;
    }
  }
  return line;
}

} // namespace

bool IsTerminal(ConsoleStream stream) {
  return isatty(DescriptorOf(stream)) == 1;
}

TerminalSize SizeOfTerminal(ConsoleStream stream) {
  winsize size{};
  const bool known =
      ioctl(DescriptorOf(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0 && size.ws_row > 0;
  return known ? TerminalSize{size.ws_col, size.ws_row} : TerminalSize{};
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

bool IsInputTerminal() {
  return isatty(STDIN_FILENO) == 1;
}

std::optional<std::string> AskForSecret(std::string_view prompt) {
  const HiddenInput hidden;
  if (!hidden.IsOn()) return std::nullopt;
  WriteConsole(ConsoleStream::Error, prompt);
  auto line = ReadHiddenLine();
  WriteConsole(ConsoleStream::Error, "\n");
  return line;
}

Result<std::string> ReadStandardInput(std::size_t most) {
  std::string bytes;
  std::array<char, 4096> buffer{};
  for (;;) {
    const ssize_t count = read(STDIN_FILENO, buffer.data(), buffer.size());
    if (count == 0) return bytes;
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return Failure{u"Standard input cannot be read. " + posix::Reason(errno)};
    bytes.append(buffer.data(), static_cast<std::size_t>(count));
    if (bytes.size() > most) return Failure{u"Standard input holds more than is expected."};
  }
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
