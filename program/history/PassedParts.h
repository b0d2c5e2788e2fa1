// What parts of a run have done, for a run that passes them over.
#pragma once

#include <map>
#include <string>

namespace kx::history {

// By the ids of the parts: what they were made of, in a form that only its writer knows (UTF-8).
using TPassedParts = std::map<std::u16string, std::string>;

// What the last run had done by its end, if it did not succeed. Empty where nothing is known; raises nothing.
TPassedParts ReadPassedParts(const std::u16string& file);
// Takes the place of what was known; a run that succeeds is recorded with nothing (TRunRecorder). Gives what
// is to be said of a failure, in one line, or nothing.
std::u16string RememberPassedParts(const std::u16string& file, const TPassedParts& parts);

} // namespace kx::history
