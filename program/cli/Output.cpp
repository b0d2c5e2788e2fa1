#include "program/cli/Output.h"

#include "foundation/platform/Console.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "program/report/CiGuard.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <optional>

namespace kx::cli {

namespace {

constexpr std::size_t PieceSize = 256 * 1024;
constexpr std::size_t LongestMessage = 2000;

using platform::ConsoleStream;

// One a stream, once a CI system reads; they outlive whatever prints.
std::array<std::optional<TCiGuard>, 2>& Guards() {
  static std::array<std::optional<TCiGuard>, 2> guards;
  return guards;
}

std::optional<TCiGuard>& GuardOf(ConsoleStream stream) {
  return Guards()[stream == ConsoleStream::Output ? 0 : 1];
}

std::shared_ptr<const TSecretMask>& Secrets() {
  static std::shared_ptr<const TSecretMask> secrets;
  return secrets;
}

void PrintTo(ConsoleStream stream, std::string_view utf8) {
  std::string masked;
  if (Secrets()) utf8 = masked = Secrets()->Masked(utf8);
  auto& guard = GuardOf(stream);
  guard ? platform::WriteConsole(stream, guard->Pass(utf8)) : platform::WriteConsole(stream, utf8);
}

} // namespace

void Print(std::string_view utf8) {
  PrintTo(ConsoleStream::Output, utf8);
}

void PrintError(std::string_view utf8) {
  PrintTo(ConsoleStream::Error, utf8);
}

void MaskOutput(std::shared_ptr<const TSecretMask> secrets) {
  Secrets() = std::move(secrets);
}

void PrintOutOfMemory() noexcept {
  platform::WriteConsole(ConsoleStream::Error, "kxhost: Out of memory\n");
}

void GuardForCi() {
  for (auto& guard : Guards())
    guard.emplace();
}

void PrintCommand(const TCiCommand& command) {
  const auto& guard = GuardOf(ConsoleStream::Output);
  if (guard && !guard->IsAtLineStart()) Print("\n");
  platform::WriteConsole(ConsoleStream::Output, std::string(command.Line()) + "\n");
}

void PrintAnswer(std::string_view line) {
  platform::WriteConsole(ConsoleStream::Error, line);
}

void TOutput::Write(std::string_view utf8) {
  buffer_ += utf8;
  if (buffer_.size() >= PieceSize) Flush();
}

void TOutput::Flush() {
  if (!buffer_.empty()) put_(buffer_);
  buffer_.clear();
}

std::string ToText(const nlohmann::ordered_json& object) {
  return object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

std::string ToLine(const nlohmann::ordered_json& object) {
  return ToText(object) + "\n";
}

void WriteError(std::u16string_view message) {
  PrintError(ForTerminal(message) + "\n");
}

std::u16string Shortened(const std::u16string& message) {
  if (message.size() <= LongestMessage) return message;
  return message.substr(0, LongestMessage) + u"... (" +
         text::FromInteger(static_cast<std::int64_t>(message.size())) + u" characters)";
}

std::string ForTerminal(std::u16string_view text) {
  return text::ToUtf8(text::VisibleControls(text));
}

std::string NameForTerminal(std::u16string_view name) {
  std::u16string shown = text::VisibleControls(name);
  std::ranges::replace(shown, u'\n', u'\u240A');
  std::ranges::replace(shown, u'\r', u'\u240D');
  return text::ToUtf8(shown);
}

} // namespace kx::cli
