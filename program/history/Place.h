// Where a build project's runs are remembered.
#pragma once

#include <string>

namespace kx::history {

// As the command line says it.
struct TPlace {
  bool Off = false;
  std::u16string File = {}; // empty: one in the user's state folder for each build project

  // The full path; empty when nothing is remembered: there is no project, or nowhere to do so.
  std::u16string FileFor(const std::u16string& project) const;
  // Whether it is this program's alone, whatever it holds.
  bool IsOwn() const { return File.empty(); }
};

} // namespace kx::history
