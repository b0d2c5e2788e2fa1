// Names of which no two are the same but for letter case.
#pragma once

#include "program/runner/Project.h"

namespace kx {

class TUniqueNames {
public:
  // The name, or with the next free number: Take(u"Build", u" (", u")") gives "Build (2)" the second time.
  std::u16string Take(const std::u16string& name, std::u16string_view before, std::u16string_view behind) {
    if (numbers_.emplace(name, 1).second) return name;
    std::u16string numbered;
    do {
      numbered = name + std::u16string(before) + text::FromInteger(++numbers_[name]) + std::u16string(behind);
    } while (!numbers_.emplace(numbered, 1).second);
    return numbered;
  }

private:
  TByName<int> numbers_; // the last one of each name
};

} // namespace kx
