// The values that the first lines "name = value" of a file give to a set of names.
#pragma once

#include "package/solution/VSNETSLN.NameIndex.h"

#include <array>
#include <bitset>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

// First all names are wanted, then all lines offered. The name of a line is what stands before its first "=",
// blanks included; letter case is ignored. Names and lines are UTF-8.
class TNamedValues {
public:
  void Want(std::string_view name);
  bool IsComplete() const { return found_ == names_.size(); } // further lines change nothing
  void Offer(std::string_view line);

  std::size_t Count() const { return wanted_.size(); } // names wanted, each as often as it was
  // Trimmed; empty when no line had the name.
  std::u16string_view ValueOf(std::size_t index) const { return values_[wanted_[index]].In(text_); }

private:
  bool MayBeWanted(std::string_view line) const;

  // A piece of one large text, which costs less than a text of its own.
  struct TPiece {
    std::size_t Start = 0;
    std::size_t Length = std::u16string_view::npos;
    bool IsThere() const { return Length != std::u16string_view::npos; }
    std::u16string_view In(std::u16string_view text) const {
      return IsThere() ? text.substr(Start, Length) : std::u16string_view();
    }
  };
  TPiece Keep(std::u16string_view piece);
  std::optional<std::uint32_t> NumberOf(std::u16string_view name) const;

  std::u16string text_;
  std::vector<TPiece> names_; // all different
  std::vector<TPiece> values_;
  TNameIndex index_;
  std::vector<std::uint32_t> wanted_; // numbers of names
  std::size_t found_ = 0;
  // Which bytes a line of a wanted name can begin with. Nearly all lines of a file are told apart by these
  // few.
  std::array<std::bitset<256>, 4> beginnings_;
};

} // namespace kx
