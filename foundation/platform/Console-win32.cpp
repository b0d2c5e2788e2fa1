#include "foundation/platform/Console.h"

#include "foundation/platform/Win32.h"
#include "foundation/text/Encoding.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <shellapi.h>

namespace kx::platform {

namespace {

HANDLE HandleOf(ConsoleStream stream) {
  return GetStdHandle(stream == ConsoleStream::Output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
}

// Error codes, by stream.
std::array<std::atomic<DWORD>, 2> failures{};

std::atomic<DWORD>& FailureOf(ConsoleStream stream) {
  return failures[stream == ConsoleStream::Output ? 0 : 1];
}

void KeepFailure(ConsoleStream stream, DWORD error) {
  const bool nobodyReads = error == ERROR_BROKEN_PIPE || error == ERROR_NO_DATA;
  if (!nobodyReads) FailureOf(stream) = error;
}

bool IsConsole(HANDLE handle) {
  DWORD mode = 0;
  return GetConsoleMode(handle, &mode) != FALSE;
}

// So that colours and the movements of the cursor are obeyed; false where only older consoles are to be had.
bool EnableEscapeSequences(HANDLE handle) {
  constexpr DWORD wanted = ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING;
  DWORD mode = 0;
  if (GetConsoleMode(handle, &mode) == FALSE) return false;
  return (mode & wanted) == wanted || SetConsoleMode(handle, mode | wanted) != FALSE;
}

bool WriteText(HANDLE console, std::wstring_view text) {
  constexpr std::size_t most = 8192; // a console's buffer is small
  while (!text.empty()) {
    std::size_t size = std::min(text.size(), most);
    if (size < text.size() && IS_HIGH_SURROGATE(text[size - 1])) --size;
    DWORD written = 0;
    const BOOL done = WriteConsoleW(console, text.data(), static_cast<DWORD>(size), &written, nullptr);
    if (done == FALSE || written == 0) return false;
    text.remove_prefix(written);
  }
  return true;
}

bool WriteBytes(HANDLE file, std::string_view bytes) {
  constexpr std::size_t most = std::size_t{1} << 20;
  while (!bytes.empty()) {
    DWORD written = 0;
    const auto size = static_cast<DWORD>(std::min(bytes.size(), most));
    if (WriteFile(file, bytes.data(), size, &written, nullptr) == FALSE) return false;
    if (written == 0) Sleep(1); // a pipe that another program has made non-blocking
    bytes.remove_prefix(written);
  }
  return true;
}

} // namespace

bool IsTerminal(ConsoleStream stream) {
  return EnableEscapeSequences(HandleOf(stream));
}

TerminalSize SizeOfTerminal(ConsoleStream stream) {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (GetConsoleScreenBufferInfo(HandleOf(stream), &info) == FALSE) return {};
  const TerminalSize size{info.srWindow.Right - info.srWindow.Left + 1,
                          info.srWindow.Bottom - info.srWindow.Top + 1};
  return size.Columns > 1 ? size : TerminalSize{};
}

void WriteConsole(ConsoleStream stream, std::string_view utf8) {
  const HANDLE handle = HandleOf(stream);
  bool written = false;
  if (IsConsole(handle)) {
    EnableEscapeSequences(handle);
    written = WriteText(handle, win32::ToWide(text::FromUtf8(utf8)));
  } else {
    written = WriteBytes(handle, utf8);
  }
  if (!written) KeepFailure(stream, GetLastError());
}

std::u16string WriteFailure(ConsoleStream stream) {
  const DWORD error = FailureOf(stream);
  return error == ERROR_SUCCESS ? std::u16string() : win32::Reason(error);
}

bool IsInputTerminal() {
  return IsConsole(GetStdHandle(STD_INPUT_HANDLE));
}

std::optional<std::string> AskForSecret(std::string_view prompt) {
  constexpr wchar_t interrupt = 0x03;
  const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
  DWORD before = 0;
  // Without "processed input" Ctrl-C is a character: a program that ended then would leave the console so.
  if (GetConsoleMode(input, &before) == FALSE || SetConsoleMode(input, ENABLE_LINE_INPUT) == FALSE)
    return std::nullopt;
  WriteConsole(ConsoleStream::Error, prompt);
  std::array<wchar_t, 4096> line{};
  DWORD count = 0;
  const BOOL read = ReadConsoleW(input, line.data(), static_cast<DWORD>(line.size()), &count, nullptr);
  SetConsoleMode(input, before);
  WriteConsole(ConsoleStream::Error, "\n");
  const std::wstring_view typed(line.data(), count);
  if (read == FALSE || typed.empty() || typed.find(interrupt) != std::wstring_view::npos) return std::nullopt;
  return text::ToUtf8(win32::FromWide(typed.substr(0, typed.find_first_of(L"\r\n"))));
}

Result<std::string> ReadStandardInput(std::size_t most) {
  const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
  std::string bytes;
  std::array<char, 4096> buffer{};
  for (;;) {
    DWORD count = 0;
    if (::ReadFile(input, buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr) == FALSE) {
      const DWORD error = GetLastError();
      if (error == ERROR_BROKEN_PIPE) return bytes; // its end
      return Failure{u"Standard input cannot be read. " + win32::Reason(error)};
    }
    if (count == 0) return bytes;
    bytes.append(buffer.data(), count);
    if (bytes.size() > most) return Failure{u"Standard input holds more than is expected."};
  }
}

void IgnoreBrokenPipes() {} // here writing to one only fails

std::vector<std::u16string> CommandLineArguments(int /*argc*/, char** /*argv*/) {
  std::vector<std::u16string> arguments;
  int count = 0;
  wchar_t** texts = CommandLineToArgvW(GetCommandLineW(), &count);
  for (int i = 0; texts != nullptr && i < count; ++i)
    arguments.push_back(win32::FromWide(texts[i]));
  LocalFree(texts);
  return arguments;
}

} // namespace kx::platform
