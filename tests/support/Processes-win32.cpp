#include "tests/support/Processes.h"

#include "foundation/platform/Win32.h"
#include "foundation/text/CommandLine.h"
#include "foundation/text/Text.h"

namespace kx::tests {

namespace {

platform::win32::Handle Open(std::u16string_view process, DWORD access) {
  return platform::win32::Handle(
      OpenProcess(access, FALSE, static_cast<DWORD>(text::ToInteger(process).value())));
}

} // namespace

std::int64_t OwnProcess() {
  return GetCurrentProcessId();
}

std::u16string OwnCommandLine() {
  return platform::win32::FromWide(GetCommandLineW());
}

void IgnoreRequestsToEnd() {
  SetConsoleCtrlHandler([](DWORD) -> BOOL { return TRUE; }, TRUE);
}

std::int64_t Start(const std::u16string& program, const std::vector<std::u16string_view>& arguments) {
  std::u16string commandLine = text::QuoteArgument(program);
  for (const auto argument : arguments)
    commandLine.append(u" ").append(text::QuoteArgument(argument));
  std::wstring wide = platform::win32::ToWide(commandLine);
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION info{};
  CreateProcessW(nullptr, wide.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &info);
  const platform::win32::Handle child(info.hProcess), thread(info.hThread);
  return info.dwProcessId;
}

bool IsRunning(std::u16string_view process) {
  const auto handle = Open(process, SYNCHRONIZE);
  return handle.IsOpen() && WaitForSingleObject(handle.Get(), 0) == WAIT_TIMEOUT;
}

void EndProcess(std::u16string_view process) {
  TerminateProcess(Open(process, PROCESS_TERMINATE).Get(), 1);
}

} // namespace kx::tests
