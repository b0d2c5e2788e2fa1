#include "platform/Console.h"

#include "platform/Win32.h"
#include "text/Encoding.h"

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

int TerminalWidth(ConsoleStream stream) {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  const bool known = GetConsoleScreenBufferInfo(HandleOf(stream), &info) != FALSE;
  const int width = info.srWindow.Right - info.srWindow.Left + 1;
  return known && width > 1 ? width : 80;
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
