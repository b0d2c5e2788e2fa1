// How the parts of a plan are run by others than this process.
#pragma once

#include "program/plan/Plan.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

// What a run of the whole plan is given. No secret is in it.
struct TRunWords {
  std::u16string Project;              // as the user names it
  std::vector<std::u16string> Options; // one argument each
};

// "kxhost run PROJECT --part ID ...". With a log, its events go there as lines of JSON.
std::vector<std::u16string> CommandOf(const TPart& part, const TRunWords& words,
                                      std::u16string_view log = {});

// What the parts are called where few letters are allowed ("Build_2"): letters, digits and "_", some sixty at
// most; unique without regard to letter case.
std::vector<std::u16string> NarrowNames(const TPlan& plan);
// The file of a part's log, "part-007-Build_2.jsonl"; in the order of the plan when they are sorted.
std::u16string LogOf(const TPlan& plan, std::size_t part, std::u16string_view narrowName);

// One line for the shell (of Windows, cmd.exe), for which every argument stands for itself.
std::u16string ShellLine(std::span<const std::u16string> command, bool forWindows);

} // namespace kx
