// A tool for tests: does what its arguments say, in their order; those in a file beside it, one a line, when
// there is such a file (tool.exe.script).
//   out:TEXT, err:TEXT   written as it stands, after \r, \n and \xHH are replaced
//   flood:N              N long lines on each stream
//   pid                  the number of this process, on a line
//   args                 the arguments that follow, each on a line; nothing after it is done
//   folder, env:NAME     the current folder, a variable, on a line
//   input                reads standard input to its end; each line is written as it comes
//   record:FILE          folder and command line, exactly as they came, into a file beside it
//   deaf                 ignores requests to end
//   child:A,B            starts itself with the arguments A and B, and does not wait for it
//   server:A,B           the same, and writes its number to standard error
//   wait, wait:N         for ten minutes, for N milliseconds
//   exit:N
#include "foundation/platform/Console.h"
#include "foundation/platform/Files.h"
#include "foundation/platform/System.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "tests/support/Processes.h"

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <thread>

namespace kx::tests {
namespace {

using platform::ConsoleStream;

void Write(ConsoleStream stream, std::string_view text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char escape = text[i] == '\\' && i + 1 < text.size() ? text[i + 1] : '\0';
    if (escape == 'r' || escape == 'n') {
      bytes.push_back(escape == 'r' ? '\r' : '\n');
      ++i;
    } else if (escape == 'x') {
      bytes.push_back(static_cast<char>(std::stoi(std::string(text.substr(i + 2, 2)), nullptr, 16)));
      i += 3;
    } else {
      bytes.push_back(text[i]);
    }
  }
  platform::WriteConsole(stream, bytes);
}

void WriteLine(std::u16string_view line) {
  platform::WriteConsole(ConsoleStream::Output, text::ToUtf8(line) + "\n");
}

void Flood(int lines) {
  for (int i = 0; i < lines; ++i) {
    platform::WriteConsole(ConsoleStream::Output, std::string(200, 'o') + "\n");
    platform::WriteConsole(ConsoleStream::Error, std::string(300, 'e') + "\n");
  }
}

class Tool {
public:
  explicit Tool(std::u16string program) : program_(std::move(program)) {}

  void Do(const std::vector<std::u16string>& commands) {
    for (std::size_t i = 0; i < commands.size(); ++i) {
      const std::u16string& command = commands[i];
      const std::size_t colon = std::min(command.find(u':'), command.size());
      const std::u16string name = command.substr(0, colon);
      if (name == u"args") {
        for (++i; i < commands.size(); ++i)
          WriteLine(u"[" + commands[i] + u"]");
        return;
      }
      Do(name, colon < command.size() ? command.substr(colon + 1) : u"");
    }
  }

private:
  void Do(const std::u16string& name, const std::u16string& value) {
    if (name == u"out") Write(ConsoleStream::Output, text::ToUtf8(value));
    if (name == u"err") Write(ConsoleStream::Error, text::ToUtf8(value));
    if (name == u"flood") Flood(text::ToIntegerOr(value, 0));
    if (name == u"pid") WriteLine(text::FromInteger(OwnProcess()));
    if (name == u"folder") WriteLine(platform::CurrentDirectory());
    if (name == u"env") WriteLine(platform::EnvironmentVariable(value).value_or(u"missing"));
    if (name == u"input")
      for (std::string line; std::getline(std::cin, line);)
        WriteLine(text::FromUtf8(line));
    if (name == u"record") Record(value);
    if (name == u"deaf") IgnoreRequestsToEnd();
    if (name == u"child" || name == u"server") {
      const std::u16string order = u"do," + value;
      const std::int64_t process = Start(program_, text::Split(order, u','));
      if (name == u"server") Write(ConsoleStream::Error, std::to_string(process) + "\n");
    }
    if (name == u"wait")
      std::this_thread::sleep_for(std::chrono::milliseconds(text::ToIntegerOr(value, 600'000)));
    if (name == u"exit") std::exit(text::ToIntegerOr(value, 0));
  }

  void Record(const std::u16string& file) {
    const std::u16string path = text::JoinPath(text::ExtractFileDir(program_), file);
    const std::string before = platform::FileExists(path) ? *platform::ReadFile(path) : "";
    const std::u16string call = platform::CurrentDirectory() + u"\n" + OwnCommandLine() + u"\n";
    (void)platform::SaveFile(path, before + text::ToUtf8(call));
  }

  std::u16string program_;
};

} // namespace
} // namespace kx::tests

int main(int argc, char** argv) {
  using namespace kx;
  std::vector<std::u16string> commands = platform::CommandLineArguments(argc, argv);
  const std::u16string program =
      text::JoinPath(platform::ProgramDirectory(), text::ExtractFileName(commands[0]));
  commands.erase(commands.begin());
  const bool told = !commands.empty() && commands[0] == u"do";
  const auto script = platform::ReadFile(program + u".script");
  if (script && !told) {
    const std::u16string text = text::FromUtf8(*script);
    const auto lines = text::SplitLines(text);
    commands.assign(lines.begin(), lines.end());
  }
  tests::Tool(program).Do(commands);
}
