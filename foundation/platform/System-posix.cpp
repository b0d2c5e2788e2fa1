#include "foundation/platform/System.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/Posix.h"
#include "foundation/text/Encoding.h"

#include <array>
#include <cstdlib>
#include <spawn.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kx::platform {

std::u16string MachineName() {
  std::array<char, 256> name{};
  if (gethostname(name.data(), name.size() - 1) != 0) return {};
  return text::FromUtf8(name.data());
}

std::u16string SystemName() {
  if (const auto release = ReadFile(u"/etc/os-release")) {
    constexpr std::string_view key = "PRETTY_NAME=";
    const std::string lines = "\n" + *release;
    const std::size_t at = lines.find("\n" + std::string(key));
    if (at != std::string::npos) {
      const std::size_t begin = at + 1 + key.size();
      std::u16string name = text::FromUtf8(lines.substr(begin, lines.find('\n', begin) - begin));
      std::erase_if(name, [](char16_t c) { return c == u'"' || c == u'\''; });
      return name;
    }
  }
  utsname system{};
  return uname(&system) != 0 ? std::u16string()
                             : text::FromUtf8(std::string(system.sysname) + " " + system.release);
}

std::optional<std::u16string> EnvironmentVariable(std::u16string_view name) {
  const char* value = getenv(text::ToUtf8(name).c_str());
  return value == nullptr ? std::nullopt : std::optional(text::FromUtf8(value));
}

void ForgetEnvironmentVariable(std::u16string_view name) {
  unsetenv(text::ToUtf8(name).c_str());
}

std::vector<std::u16string> EnvironmentNames() {
  std::vector<std::u16string> names;
  for (char** line = environ; line != nullptr && *line != nullptr; ++line) {
    const std::string_view entry = *line;
    names.push_back(text::FromUtf8(entry.substr(0, entry.find('='))));
  }
  return names;
}

bool IsWindows() {
  return false;
}

// A session of its own, so that Ctrl-C in the terminal ends the program and not the browser.
Status OpenInBrowser(std::u16string_view address) {
  if (!FindProgram(u"xdg-open")) return Failure{u"There is no program xdg-open."};
  std::string url = text::ToUtf8(address);
  std::array<std::string, 4> words{"sh", "-c", "xdg-open \"$1\" </dev/null >/dev/null 2>&1 &", "sh"};
  std::array<char*, 6> arguments{words[0].data(), words[1].data(), words[2].data(),
                                 words[3].data(), url.data(),      nullptr};
  posix_spawnattr_t attributes{};
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
  pid_t shell = 0;
  const int error = posix_spawn(&shell, "/bin/sh", nullptr, &attributes, arguments.data(), environ);
  posix_spawnattr_destroy(&attributes);
  if (error != 0) return Failure{u"Cannot start xdg-open."};
  waitpid(shell, nullptr, 0);
  return Done{};
}

} // namespace kx::platform
