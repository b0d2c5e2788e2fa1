// Colours on the terminal.
#pragma once

#include "contract/Actions.h"
#include "program/cli/CommonOptions.h"

#include <string>
#include <string_view>

namespace kx::cli {

// Escape sequences, or nothing where there is no colour.
class TPalette {
public:
  explicit TPalette(bool enabled) : enabled_(enabled) {}
  std::string Paint(std::string_view text, TStatusTag status) const;
  std::string Bold(std::string_view text) const;
  std::string Dim(std::string_view text) const;

private:
  std::string Wrap(const char* code, std::string_view text) const;
  bool enabled_;
};

// Standard output is a terminal that understands escape sequences, and the user wants them (NO_COLOR, TERM).
bool CanSteerTerminal();
// By the user's choice, else by CanSteerTerminal.
TPalette ChoosePalette(TColorChoice choice);

} // namespace kx::cli
