// The user's own editor, opened at a line by an address that it has registered with the system.
#pragma once

#include "program/runner/OptionsStore.h"

#include <string>
#include <string_view>

namespace kx {

// "scheme://file/{file}:{line}:{column}"; nothing is opened where it is not set.
inline TOptionName OpenFileOption() {
  return {u"Editor", u"OpenFile"};
}

// Raises EKxException for what is no address of another program with a {file} in it: what a browser would
// open itself, or run, is none.
void RequireFileLink(std::u16string_view link);

// The address for a place; `file` is a full path of this machine. What would mean something in an address is
// written as %XX. A line or column that is not known is the first.
std::string FileLink(std::u16string_view link, std::u16string_view file, int line, int column);

} // namespace kx
