// What is wrong with the actions of a project, found without running them.
#pragma once

#include "program/runner/Expressions.h"
#include "program/runner/Project.h"

#include <string>
#include <vector>

namespace kx {

struct TValidationEntry {
  std::u16string Action; // its name in the project
  std::u16string Page;
  std::u16string Message;
  const TKxOptionsClass* Options = nullptr; // the options that mend it, when the action knows
  const TActionNode* Node = nullptr;        // the action; null where it is the project's own
};

using TValidationEntries = std::vector<TValidationEntry>;

// A file that an action would change when it is run, but could not.
struct TValidationNote {
  std::u16string Action; // its name in the project
  std::u16string Message;
};

// What the action says against its own settings: an entry as well when it throws, or gives no reason.
void ValidateAction(const TServiceRegistry& services, const TActionNode& node, TValidationEntries& entries);

// Everything that a run would stumble over, as far as it can be told beforehand: the settings of every
// action, what the actions foresee, names in texts that mean nothing, variables that refer to themselves,
// a project or a loop without actions.
TValidationEntries ValidateProject(const TProject& project, const TExpressionEngine& expressions);

// What stands in the way of the files that the actions would change.
std::vector<TValidationNote> CheckFilesToChange(const TProject& project);
// The files themselves, in the order of the actions.
text::TStringList FilesToChange(const TProject& project);

} // namespace kx
