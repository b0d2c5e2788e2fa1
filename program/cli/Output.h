// What kxhost writes for people and programs: every byte goes through Print, PrintError or PrintCommand. The
// configuration refuses a source of this room that writes to the console by itself.
#pragma once

#include "program/report/CiDialect.h"
#include "program/runner/SecretMask.h"

#include <nlohmann/json_fwd.hpp>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace kx::cli {

void Print(std::string_view utf8); // to standard output
void PrintError(std::string_view utf8);
void PrintOutOfMemory() noexcept; // one line on standard error, for which no memory is needed

// From now on what the mask knows is shown by neither.
void MaskOutput(std::shared_ptr<const TSecretMask> secrets);

// From now on a CI system reads both streams: nothing that is printed is a command to it (TCiGuard), but for
// what PrintCommand prints, in a line of its own.
void GuardForCi();
void PrintCommand(const TCiCommand& command);

// On standard error as it stands: for a program that has asked for it, not for people.
void PrintAnswer(std::string_view line);

// Output in large pieces, to standard output unless said otherwise; what is left is written at the end.
class TOutput {
public:
  using TPut = std::function<void(std::string_view utf8)>;

  explicit TOutput(TPut put = Print) : put_(std::move(put)) {}
  ~TOutput() { Flush(); }
  TOutput(const TOutput&) = delete;
  TOutput& operator=(const TOutput&) = delete;

  void Write(std::string_view utf8);
  void Flush();

private:
  TPut put_;
  std::string buffer_;
};

// An object without line breaks; text that is no UTF-8 is mended, non-ASCII letters stay letters.
std::string ToText(const nlohmann::ordered_json& object);
// The same as a line of its own.
std::string ToLine(const nlohmann::ordered_json& object);

// One line on standard error, control characters made harmless.
void WriteError(std::u16string_view message);

// A message that quotes a whole line of a binary or broken file would fill the terminal.
std::u16string Shortened(const std::u16string& message);

// Text from a tool or a file with its control characters made visible, so that it cannot steer the terminal.
std::string ForTerminal(std::u16string_view text);
// The same for a name, which stays in its line.
std::string NameForTerminal(std::u16string_view name);

} // namespace kx::cli
