// Regular expressions of Perl's syntax on UTF-16 text (PCRE2:
// https://www.pcre.org/current/doc/html/pcre2syntax.html).
//
// "." never matches a line break; \s, \d and \w are ASCII. Matching is bounded in time and memory, so an
// expression that backtracks for ever ends with an error instead.
#pragma once

#include "foundation/text/Exceptions.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

// Bit set; the ordinals are the contract's (1: case is ignored, 2: "^" and "$" match at line breaks).
enum class TRegExOptions : unsigned { None = 0, IgnoreCase = 1U << 1U, MultiLine = 1U << 2U };
constexpr TRegExOptions operator|(TRegExOptions a, TRegExOptions b) {
  return static_cast<TRegExOptions>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}
constexpr bool Has(TRegExOptions set, TRegExOptions option) {
  return (static_cast<unsigned>(set) & static_cast<unsigned>(option)) != 0;
}

// The expression is wrong, or matching it took more than it may.
class ERegExError : public EKxException {
public:
  using EKxException::EKxException;
};

// Groups of one match; views into the text that was matched. Group 0 is the whole; a group that took no part
// and a bad index are empty.
class IGroupCollection {
public:
  virtual ~IGroupCollection() = default;
  virtual std::size_t GetCount() const = 0;
  virtual std::u16string_view GetItem(std::size_t index) const = 0;
  virtual bool HasItem(std::size_t index) const = 0; // the group took part
};

class TRegExMatch : public IGroupCollection {
public:
  explicit operator bool() const { return !groups_.empty(); }
  bool Success() const { return !groups_.empty(); }
  std::u16string_view Value() const { return GetItem(0); }
  std::size_t Position() const { return position_; } // of group 0 in the text
  std::size_t GetCount() const override { return groups_.size(); }
  std::u16string_view GetItem(std::size_t index) const override;
  bool HasItem(std::size_t index) const override;

private:
  friend class TRegularExpression;
  std::vector<std::optional<std::u16string_view>> groups_;
  std::size_t position_ = 0;
};

// A compiled expression. Not to be used by two threads at once. Matching raises ERegExError beyond its
// limits.
class IRegularExpression {
public:
  virtual ~IRegularExpression() = default;
  virtual TRegExMatch Match(std::u16string_view input, std::size_t from = 0) const = 0;
  virtual bool IsMatch(std::u16string_view input) const = 0;
};

namespace RegEx {
// Raises ERegExError that says what is wrong and where.
std::shared_ptr<const IRegularExpression> NewRegularExpression(std::u16string_view pattern,
                                                               TRegExOptions options = TRegExOptions::None);
// The expression is compiled anew on each call; the match's views point into `input`.
TRegExMatch Match(std::u16string_view input, std::u16string_view pattern,
                  TRegExOptions options = TRegExOptions::None);
bool IsMatch(std::u16string_view input, std::u16string_view pattern,
             TRegExOptions options = TRegExOptions::None);
// The pieces between the matches; the whole input where there is none.
std::vector<std::u16string> Split(std::u16string_view input, std::u16string_view pattern);
} // namespace RegEx

} // namespace kx
