// The base of loop actions.
#pragma once

#include "contract/Actions.h"

#include <optional>
#include <string>
#include <vector>

namespace kx {

// Letters, digits, "_" and ".": what expressions can refer to.
bool IsVariableName(std::u16string_view name);

// One pass of a loop, as it can be told beforehand.
struct TKxPass {
  std::u16string Value;           // of the loop variable
  std::vector<std::size_t> Needs; // the passes, from 0, that it must follow; all before it in the list
};

// Runs its child actions once a pass; on each pass the loop variable holds the current value. The first pass
// that fails and a stop request end the loop. A loop without a pass is a breach of the rule EmptyLoop.
class TKxBaseIterator : public TCustomKxAction {
public:
  bool Execute() override;
  void LookAhead(IKxActionValidationError& errors) override; // call it first in an override

  const std::u16string& GetLoopVariable() const { return loopVariable_; }
  void SetLoopVariable(std::u16string name) { loopVariable_ = std::move(name); }

  // What one pass stands for, as a status line counts them: "project 3 of 17".
  virtual std::u16string GetPassUnit() const { return u"pass"; }
  int GetIterationCount() const { return count_; }
  int GetCurrentIteration() const { return current_; } // from 1 while the loop runs, 0 outside it

  // The passes that Execute would make, in its order; nothing when they cannot be told. Says nothing in the
  // log; raises nothing.
  virtual std::optional<std::vector<TKxPass>> Passes() { return std::nullopt; }
  // Execute makes this pass alone, from 1; 0: all of them. It fails when there is no such pass.
  void SetOnlyPass(int pass) { onlyPass_ = pass; }

protected:
  virtual bool BeforeFirstIteration() = 0; // sets the count; False ends the loop as failed
  virtual std::u16string GetCurrentValue() = 0;
  // Why there was no pass, and what to do about it.
  virtual std::u16string GetEmptyMessage() const {
    return u"The loop has no pass: there is nothing to go through.";
  }
  void SetIterationCount(int count) { count_ = count; }

private:
  std::u16string loopVariable_;
  int count_ = 0;
  int current_ = 0;
  int onlyPass_ = 0;
};

} // namespace kx
