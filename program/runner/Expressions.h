// Expressions in the texts of actions.
//
//   %Name%  $(Name)                       a variable, a constant or an enumeration's name (its ordinal)
//   $(GetProjectPath("App"))              a script function of the current action
//   $(Build.GetProjectPath("App"))        the same of the action named Build
//   %%  $$                                one of them
//
// Names are letters, digits, "_" and "."; their letter case is ignored. A "%" or "$" that opens none of these
// stands for itself. The argument of a function may hold references; a doubled quote in it stands for one.
#pragma once

#include "program/runner/Project.h"
#include "program/runner/Variables.h"

#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace kx {

using TVariableNames = std::set<std::u16string, text::IgnoreCaseLess>;

// The value of a name that only a run has: a loop variable, an action's own variable.
class EKnownInRunOnly : public EExpressionError {
public:
  using EExpressionError::EExpressionError;
};
// A variable that cannot be expanded wherever it is used.
class ESelfReference : public EExpressionError {
public:
  explicit ESelfReference(TVariableNames circle, const std::u16string& message)
      : EExpressionError(message), circle_(std::move(circle)) {}
  const TVariableNames& Circle() const { return circle_; } // those that refer to each other

private:
  TVariableNames circle_;
};

// What the expansions of one engine have in common.
struct TExpressionTally {
  int Calls = 0;                 // script functions under way: they may expand texts in turn
  std::size_t NamesCompared = 0; // for suggestions
};

// A name is looked up in the action (its hook ActionExpandExpression, then its local variables), in the
// variables, among the registered constants, in the environment. What the user wrote as a variable's value is
// expanded in turn.
class TExpressionEngine {
public:
  TExpressionEngine(const TProject& project, const TVariables& variables); // both outlive it

  // Raises EExpressionError with a sentence for the user: an unknown name and the nearest known one (unless
  // too many were looked for already), a variable that refers to itself, a text that grows beyond all
  // measure.
  std::u16string Expand(TCustomKxAction& action, std::u16string_view text) const;
  // The expanded value of a variable, as `action` sees it (null: nobody); nothing for an unknown name. Raises
  // as Expand.
  std::optional<std::u16string> VariableValue(TCustomKxAction* action, std::u16string_view name) const;

private:
  friend class TForesight;
  const TProject& project_;
  const TVariables& variables_;
  mutable const TVariableNames* loopVariables_ = nullptr; // while nothing runs
  mutable TExpressionTally tally_;
};

// While it lives nothing runs: these loop variables and the own variables of actions raise EKnownInRunOnly.
class TForesight {
public:
  TForesight(const TExpressionEngine& expressions, TVariableNames loopVariables);
  ~TForesight();
  TForesight(const TForesight&) = delete;
  TForesight& operator=(const TForesight&) = delete;

private:
  const TExpressionEngine& expressions_;
  TVariableNames loopVariables_;
};

} // namespace kx
