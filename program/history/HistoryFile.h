// The file that remembers the runs of a build project.
#pragma once

#include "program/history/Database.h"

#include <string>

namespace kx::history {

// What lies in the file, in the newest form; an older one is brought into it. Raises EKxException for one of
// a newer program, and for a file of somebody else.
TDatabase OpenToAdd(const std::u16string& file); // made where there is none
TDatabase OpenToAsk(const std::u16string& file); // raises EKxException where there is none

// Moves a broken file out of the way, where a person finds it; one that is not this program's stays. Gives
// its new name, or nothing.
std::u16string SetAside(const std::u16string& file, bool isOwn);

} // namespace kx::history
