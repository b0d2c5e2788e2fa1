// The values that expressions find by name, apart from an action's own.
#pragma once

#include "foundation/text/Text.h"
#include "program/runner/Project.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

struct TVariableValue {
  std::u16string Text;
  bool MayHoldReferences = false; // written by the user, so references in it are meant
};

// Looked up in this order: what actions have set in this run (variables of loops under way), what the command
// line sets, the project's variables, the host's own (ProjectDir, ProjectFile), the environment. Letter case
// is ignored.
class TVariables {
public:
  TVariables(const TProject& project, std::vector<TProjectVariable> commandLine); // project: outlives it

  std::optional<TVariableValue> Find(std::u16string_view name) const; // without the environment
  static std::optional<std::u16string> FindInEnvironment(std::u16string_view name);
  std::vector<std::u16string> Names() const; // those of the environment too

  void Set(std::u16string_view name, std::u16string_view value); // as an action does
  void ForgetRun() { run_.clear(); }

  // While it lives, a loop may set its variable; then the variable is what it was before: that of an outer
  // loop, or none of the run's, so that the command line and the project are seen again.
  class TLoopScope {
  public:
    TLoopScope(TVariables& variables, std::u16string_view name); // variables: outlives it
    ~TLoopScope();
    TLoopScope(const TLoopScope&) = delete;
    TLoopScope& operator=(const TLoopScope&) = delete;

  private:
    TVariables& variables_;
    std::u16string name_;
    std::optional<std::u16string> before_;
  };

private:
  const TProject& project_;
  TProjectVariables commandLine_;
  std::map<std::u16string, std::u16string, text::IgnoreCaseLess> run_;
};

} // namespace kx
