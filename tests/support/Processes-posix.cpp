#include "tests/support/Processes.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

#include <csignal>
#include <fstream>
#include <spawn.h>
#include <unistd.h>

namespace kx::tests {

std::int64_t OwnProcess() {
  return getpid();
}

std::u16string OwnCommandLine() {
  return {};
}

void IgnoreRequestsToEnd() {
  std::signal(SIGTERM, SIG_IGN);
}

std::int64_t Start(const std::u16string& program, const std::vector<std::u16string_view>& arguments) {
  std::vector<std::string> texts{text::ToUtf8(program)};
  for (const auto argument : arguments)
    texts.push_back(text::ToUtf8(argument));
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts)
    pointers.push_back(text.data());
  pointers.push_back(nullptr);
  pid_t process = 0;
  posix_spawn(&process, pointers[0], nullptr, nullptr, pointers.data(), environ);
  return process;
}

bool IsRunning(std::u16string_view process) {
  std::ifstream status("/proc/" + text::ToUtf8(process) + "/stat");
  std::string text;
  std::getline(status, text);
  const std::size_t name = text.rfind(')');
  return name != std::string::npos && text[name + 2] != 'Z' && text[name + 2] != 'X';
}

void EndProcess(std::u16string_view process) {
  kill(static_cast<pid_t>(text::ToInteger(process).value()), SIGKILL);
}

} // namespace kx::tests
