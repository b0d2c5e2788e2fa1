#include "cli/Output.h"

#include "platform/Console.h"
#include "text/Encoding.h"
#include "text/Text.h"

#include <nlohmann/json.hpp>

namespace kx::cli {

namespace {

constexpr std::size_t PieceSize = 256 * 1024;
constexpr std::size_t LongestMessage = 2000;

} // namespace

void TOutput::Write(std::string_view utf8) {
  buffer_ += utf8;
  if (buffer_.size() >= PieceSize) Flush();
}

void TOutput::Flush() {
  platform::WriteConsole(platform::ConsoleStream::Output, buffer_);
  buffer_.clear();
}

std::string ToText(const nlohmann::ordered_json& object) {
  return object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

std::string ToLine(const nlohmann::ordered_json& object) {
  return ToText(object) + "\n";
}

void WriteError(std::u16string_view message) {
  platform::WriteConsole(platform::ConsoleStream::Error, ForTerminal(message) + "\n");
}

std::u16string Shortened(const std::u16string& message) {
  if (message.size() <= LongestMessage) return message;
  return message.substr(0, LongestMessage) + u"... (" +
         text::FromInteger(static_cast<std::int64_t>(message.size())) + u" characters)";
}

std::string ForTerminal(std::u16string_view text) {
  return text::ToUtf8(text::VisibleControls(text));
}

} // namespace kx::cli
