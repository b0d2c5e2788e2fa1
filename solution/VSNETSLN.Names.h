// The values that the first lines "name = value" of a file give to a set of names.
#pragma once

#include "text/Text.h"

#include <array>
#include <bitset>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kx {

// First all names are wanted, then all lines offered. The name of a line is what stands before its first "=",
// blanks included; letter case is ignored. Names and lines are UTF-8.
class TNamedValues {
public:
  void Want(std::string_view name);
  bool IsComplete() const { return found_ == values_.size(); } // further lines change nothing
  void Offer(std::string_view line);

  std::size_t Count() const { return wanted_.size(); } // names wanted, each as often as it was
  // Trimmed; empty when no line had the name.
  std::u16string ValueOf(std::size_t index) const;

private:
  bool MayBeWanted(std::string_view line) const;

  std::unordered_map<std::u16string, std::size_t, text::IgnoreCaseHash, text::IgnoreCaseEqual> names_;
  std::vector<std::size_t> wanted_;                   // the value's number
  std::vector<std::optional<std::u16string>> values_; // of different names
  std::size_t found_ = 0;
  // Which bytes a line of a wanted name can begin with. Nearly all lines of a file are told apart by these
  // few.
  std::array<std::bitset<256>, 4> beginnings_;
};

} // namespace kx
