// What a run has to show before it is called a success: the rules, and how severe the user wants each to be.
#pragma once

#include "contract/Actions.h"
#include "foundation/text/Text.h"

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kx {

// Those that the host itself looks at, beside the ones that actions report.
namespace KxVerdictRules {
// A configuration failed, but the action returned the result of a later one.
inline constexpr std::u16string_view FailedConfiguration = u"failed-configuration";
// There is nothing to run.
inline constexpr std::u16string_view NoActions = u"no-actions";
} // namespace KxVerdictRules

enum class TRuleSeverity { Error, Warning, Off };

struct TVerdictRule {
  std::u16string_view Name;
  TRuleSeverity Default;
  bool NeedsRun; // a dry run says nothing about it
  std::u16string_view Help;
};

std::span<const TVerdictRule> VerdictRules();
// Null for a name that is none; letter case is ignored.
const TVerdictRule* FindVerdictRule(std::u16string_view name);
std::u16string_view SeverityName(TRuleSeverity severity); // "error", "warning", "off"

// What a project file or a command line says about rules.
class TRuleSettings {
public:
  // Both as the user writes them. Raises EKxException with the nearest name for what is none.
  void Set(std::u16string_view rule, std::u16string_view severity);
  void Set(std::u16string_view assignment); // "NAME=SEVERITY"; the last one of a name holds
  std::optional<TRuleSeverity> Find(std::u16string_view rule) const;

private:
  std::map<std::u16string, TRuleSeverity, text::IgnoreCaseLess> severities_;
};

} // namespace kx
