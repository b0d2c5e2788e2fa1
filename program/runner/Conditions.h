// Conditions: texts that hold or do not.
//
//   %Branch% == "main" and not (%Retry% > 2 or $(Quick))
//
// Values are references, texts in single or double quotes (a doubled quote in one stands for itself) and bare
// words; == != < <= > >= compare them, as numbers when both are, else as texts without regard to letter case.
// A value by itself is true or false: "true", "yes" and numbers but 0 are true, "false", "no", "0" and
// nothing are false. "not" binds closest, "and" before "or"; nothing is left out when the result is clear
// already, so that a fault is always told.
#pragma once

#include "program/runner/References.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

class TCondition {
public:
  // Raises EExpressionError with a sentence that says behind what something is wrong.
  explicit TCondition(std::u16string_view text);
  ~TCondition();
  TCondition(const TCondition&) = delete;
  TCondition& operator=(const TCondition&) = delete;

  using TExpand = std::function<std::u16string(std::u16string_view reference)>;
  // `expand` gives the value of a reference; what it raises passes. Raises EExpressionError for a value that
  // is neither true nor false where one must be.
  bool Holds(const TExpand& expand) const;

private:
  struct TNode;
  class TParser;
  static std::u16string ValueOf(const TNode& node, const TExpand& expand);
  static bool Holds(const TNode& node, const TExpand& expand);

  std::u16string text_; // which the references view
  std::unique_ptr<TNode> root_;
};

} // namespace kx
