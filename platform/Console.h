// The user's terminal: UTF-8 text out, and what can be shown there.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kx::platform {

enum class ConsoleStream { Output, Error };

// One that obeys escape sequences, as consoles before Windows 10 do not.
bool IsTerminal(ConsoleStream stream);
int TerminalWidth(ConsoleStream stream); // columns; 80 when unknown
// Writes everything or gives up; silently when nobody reads any more, else WriteFailure tells. A console of
// Windows gets UTF-16, so that its code page does not matter; pipes and files get the bytes.
void WriteConsole(ConsoleStream stream, std::string_view utf8);
// The system's reason for the latest writing that failed (a full disk); empty when there was none. A reader
// that has left is no failure: it has what it wanted.
std::u16string WriteFailure(ConsoleStream stream);

// From now on writing to a pipe that nobody reads any more fails instead of ending the program, which may
// have a tool to look after. Programs started later are not affected.
void IgnoreBrokenPipes();

// The arguments of main as UTF-16, however the system hands them over.
std::vector<std::u16string> CommandLineArguments(int argc, char** argv);

} // namespace kx::platform
