// What a fuzz target is made of: a name, and a check that takes any bytes as its input.
//
// A check reads its input, does with it what users' files make the product do, and requires the properties
// that the headers promise. An exception that the called function documents is caught; any other one is a
// finding.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace kx::fuzz {

struct TTarget {
  const char* Name;
  void (*Check)(std::string_view input);
};

// Makes a target known to the program that it is linked into: libFuzzer's, which holds one, or the replay,
// which holds all.
class TRegistration {
public:
  explicit TRegistration(TTarget target);
};
const std::vector<TTarget>& Targets();

// Ends the program with the property that does not hold.
void Require(bool holds, const char* property);

// Takes an input apart from its front. Behind its end there are zeros and empty texts.
class TInput {
public:
  explicit TInput(std::string_view bytes) : rest_(bytes) {}

  bool IsEmpty() const { return rest_.empty(); }
  unsigned Below(unsigned limit); // one byte; digits give their value, so that seeds can be read
  bool Flag() { return Below(2) != 0; }
  std::string_view Line() { return Until("\n"); }
  std::string_view Part() { return Until("\n--\n"); } // up to a line "--"
  std::string_view Rest() const { return rest_; }

private:
  std::string_view Until(std::string_view mark);

  std::string_view rest_;
};

} // namespace kx::fuzz
