// What may stand where a command line is being typed.
#pragma once

#include "program/cli/CommonOptions.h"

#include <span>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace kx::cli {

struct TCandidate {
  std::u16string Word; // all of it
  std::u16string Help = {};
};

struct TCompletion {
  std::vector<TCandidate> Candidates = {}; // those that begin as the last word does, letter case ignored
  bool TakesFiles = false;                 // names of files fit as well
};

// `words` are those behind the program's name; the last is being typed. Reads the solution that the line
// names, and the plug-ins. What cannot be read has no candidates.
TCompletion Complete(CLI::App& app, std::span<const std::u16string> words, const TCommonOptions& common);

} // namespace kx::cli
