// What the process of a run and those that run its parts say to each other: JSON text sequences (RFC 7464),
// of which a record begins with U+001E, a character that no message and no file's text holds as it stands.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kx {

// A part by its id, and the file that its events go to.
struct TPartTask {
  std::u16string Id;
  std::u16string Log;
};

// A line of UTF-8 on the standard input of a process that runs parts. Nothing for what is none.
std::string TaskLine(const TPartTask& task);
std::optional<TPartTask> ReadTask(std::string_view line);

// The answer, a line of UTF-8 on its standard error, behind everything that it wrote there about the part.
// Nothing for a line that holds none; `before` is what stands in front of it in its line.
struct TPartAnswer {
  int ExitCode = 0; // as that of a run of the part alone
  std::u16string Before = {};
};
std::string AnswerLine(int exitCode);
std::optional<TPartAnswer> ReadAnswer(std::u16string_view line);

} // namespace kx
