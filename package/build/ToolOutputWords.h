// Finds the words that decide what an output line of a build tool means.
#pragma once

#include <string_view>

namespace kx {

// What one line holds, as bits. A word counts between two delimiters (white space, "|", "=", ";", "," or
// "."); letter case is ignored; each English word stands for its French counterpart too.
enum TOutputFinding : unsigned {
  HasError = 1U << 0U,
  HasFailed = 1U << 1U,
  HasZeroFailed = 1U << 2U, // "0 failed"
  HasWarning = 1U << 3U,
  HasSucceeded = 1U << 4U,
  HasZeroSucceeded = 1U << 5U, // "0 succeeded"
  // The piece without which no summary line can be: look closer only where it was seen.
  MayHoldCounts = 1U << 6U,       // "complete --"
  MayHoldErrorCount = 1U << 7U,   // "Error(s)"
  MayHoldWarningCount = 1U << 8U, // "Warning(s)"
};

// One pass over the line. It looks at every sixth character or so where no such word can stand: builds of a
// few hundred megabytes of output are read in less than a second.
unsigned FindOutputWords(std::u16string_view line);

} // namespace kx
