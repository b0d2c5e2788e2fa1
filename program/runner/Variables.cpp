#include "program/runner/Variables.h"

#include "foundation/platform/System.h"

#include <algorithm>

namespace kx {

namespace {

constexpr std::u16string_view ProjectDirName = u"ProjectDir";
constexpr std::u16string_view ProjectFileName = u"ProjectFile";

} // namespace

TVariables::TVariables(const TProject& project, std::vector<TProjectVariable> commandLine)
    : project_(project) {
  for (auto& variable : commandLine)
    commandLine_.Set(std::move(variable)); // the last word holds
}

std::optional<TVariableValue> TVariables::Find(std::u16string_view name) const {
  if (const auto set = run_.find(name); set != run_.end()) return TVariableValue{set->second, false};
  for (const auto* variables : {&commandLine_, &project_.Variables})
    if (const auto* variable = variables->Find(name)) return TVariableValue{variable->Value, true};
  if (text::EqualsIgnoreCase(name, ProjectDirName)) return TVariableValue{project_.Directory(), false};
  if (text::EqualsIgnoreCase(name, ProjectFileName)) return TVariableValue{project_.FileName, false};
  return std::nullopt;
}

std::optional<std::u16string> TVariables::FindInEnvironment(std::u16string_view name) {
  if (auto exact = platform::EnvironmentVariable(name)) return exact;
  const auto names = platform::EnvironmentNames();
  const auto found =
      std::ranges::find_if(names, [name](const auto& known) { return text::EqualsIgnoreCase(known, name); });
  return found == names.end() ? std::nullopt : platform::EnvironmentVariable(*found);
}

std::vector<std::u16string> TVariables::Names() const {
  std::vector<std::u16string> names;
  for (const auto& [name, value] : run_)
    names.push_back(name);
  for (const auto* variables : {&commandLine_, &project_.Variables})
    for (const auto& variable : *variables)
      names.push_back(variable.Name);
  names.insert(names.end(), {std::u16string(ProjectDirName), std::u16string(ProjectFileName)});
  const auto environment = platform::EnvironmentNames();
  names.insert(names.end(), environment.begin(), environment.end());
  return names;
}

TVariables::TLoopScope::TLoopScope(TVariables& variables, std::u16string_view name)
    : variables_(variables), name_(name) {
  if (const auto outer = variables.run_.find(name); outer != variables.run_.end()) before_ = outer->second;
}

TVariables::TLoopScope::~TLoopScope() {
  if (before_) {
    variables_.Set(name_, *before_);
  } else if (const auto own = variables_.run_.find(name_); own != variables_.run_.end()) {
    variables_.run_.erase(own);
  }
}

void TVariables::Set(std::u16string_view name, std::u16string_view value) {
  run_.insert_or_assign(std::u16string(name), std::u16string(value));
}

} // namespace kx
