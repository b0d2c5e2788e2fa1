// MSBuild.exe for systems that have none: finds an MSBuild-compatible tool, translates the command line and
// becomes that tool, so that exit code, signals and output are the tool's own.
#include "foundation/platform/Console.h"
#include "foundation/platform/Files.h"
#include "foundation/platform/System.h"
#include "foundation/text/Encoding.h"
#include "tools/launcher/FindTool.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

namespace {

using namespace kx;

int Fail(const std::string& message) {
  platform::WriteConsole(platform::ConsoleStream::Error, "MSBuild.exe: " + message + "\n");
  return 1;
}

std::optional<std::string> FindProgram(std::string_view nameOrPath) {
  const auto name = text::FromUtf8(nameOrPath);
  const bool isPath = nameOrPath.find('/') != std::string_view::npos;
  const auto found = isPath ? platform::ResolveExisting(name) : platform::FindProgram(name);
  if (!found) return std::nullopt;
  return text::ToUtf8(*found);
}

std::string FolderOnDrive(const std::string& folder) {
  return text::ToUtf8(platform::ResolveForWriting(text::FromUtf8(folder)));
}

int NoTool(const std::string& wanted) {
  if (!wanted.empty()) return Fail("The tool '" + wanted + "', named by KX_MSBUILD, was not found.");
  return Fail("No build tool was found: install an SDK with 'dotnet msbuild', or 'msbuild', or 'xbuild' "
              "(Debian: mono-xbuild and mono-mcs).");
}

// Sources written on Windows name files without regard to letter case. Mono's own tools find them all the
// same when they are told to; MSBuild brings its own way.
void FindFilesInAnyCase(launcher::ToolKind kind) {
  constexpr int keepTheUsers = 0;
  if (kind == launcher::ToolKind::XBuild) ::setenv("MONO_IOMAP", "all", keepTheUsers);
}

int Become(const std::vector<std::string>& command) {
  std::vector<char*> pointers;
  pointers.reserve(command.size() + 1);
  for (const auto& argument : command)
    pointers.push_back(const_cast<char*>(argument.c_str()));
  pointers.push_back(nullptr);
  ::execv(pointers.front(), pointers.data());
  return Fail("Cannot run '" + command.front() + "': " + std::strerror(errno) + ".");
}

} // namespace

int main(int argc, char** argv) {
  std::vector<std::string> arguments(argv + 1, argv + argc);
  const auto wanted = text::ToUtf8(platform::EnvironmentVariable(u"KX_MSBUILD").value_or(u""));
  const auto tool = launcher::FindTool(wanted, FindProgram);
  if (!tool) return NoTool(wanted);

  if (const auto index = launcher::FindFileArgument(arguments)) {
    auto& file = arguments[*index];
    const auto resolved = platform::ResolveExisting(text::FromUtf8(file));
    if (!resolved) return Fail("The project or solution file '" + file + "' does not exist.");
    file = text::ToUtf8(*resolved);
  }
  FindFilesInAnyCase(tool->Kind);
  return Become(launcher::ToolCommand(*tool, arguments, FolderOnDrive));
}
