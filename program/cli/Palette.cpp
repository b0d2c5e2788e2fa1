#include "program/cli/Palette.h"

#include "contract/Actions.h"
#include "foundation/platform/Console.h"
#include "foundation/platform/System.h"

#include <array>

namespace kx::cli {

std::string TPalette::Wrap(const char* code, std::string_view text) const {
  return enabled_ ? std::string("\x1b[") + code + "m" + std::string(text) + "\x1b[0m" : std::string(text);
}

std::string TPalette::Bold(std::string_view text) const {
  return Wrap("1", text);
}
std::string TPalette::Dim(std::string_view text) const {
  return Wrap("2", text);
}

std::string TPalette::Paint(std::string_view text, TStatusTag status) const {
  static constexpr std::array<const char*, 4> codes{"0", "32", "33", "31"};
  return status == TStatusTag::stNormal ? std::string(text)
                                        : Wrap(codes[static_cast<std::size_t>(status)], text);
}

bool CanSteerTerminal() {
  const auto terminal = platform::EnvironmentVariable(u"TERM"); // Windows has none
  const bool refused = !platform::EnvironmentVariable(u"NO_COLOR").value_or(u"").empty() ||
                       (terminal && (terminal->empty() || *terminal == u"dumb"));
  return !refused && platform::IsTerminal(platform::ConsoleStream::Output);
}

TPalette ChoosePalette(TColorChoice choice) {
  return TPalette(choice == TColorChoice::Auto ? CanSteerTerminal() : choice == TColorChoice::Always);
}

} // namespace kx::cli
