#include "program/runner/VerdictRules.h"

#include "foundation/text/Exceptions.h"
#include "program/runner/Messages.h"

#include <algorithm>
#include <array>
#include <vector>

namespace kx {

namespace {

constexpr auto Rules = std::to_array<TVerdictRule>({
    {KxVerdictRules::NothingBuilt, TRuleSeverity::Error, true,
     u"No tool ran, or it built no project and found none up to date"},
    {KxVerdictRules::ErrorsCounted, TRuleSeverity::Error, true,
     u"Errors were counted although the tool reports success"},
    {KxVerdictRules::FailedConfiguration, TRuleSeverity::Error, true,
     u"A configuration failed, but a later one of the same action succeeded"},
    {KxVerdictRules::NoConfiguration, TRuleSeverity::Error, false,
     u"The solution has no configuration of the name that an action builds"},
    {KxVerdictRules::EmptySelection, TRuleSeverity::Error, false,
     u"A selection of projects to stamp means none of the solution's"},
    {KxVerdictRules::NoTests, TRuleSeverity::Error, true, u"A run of tests executed none"},
    {KxVerdictRules::ResultsMissing, TRuleSeverity::Error, true,
     u"A run of tests left no results file, or one that cannot be read"},
    {KxVerdictRules::EmptyLoop, TRuleSeverity::Error, false, u"A loop has no pass, or no actions in it"},
    {KxVerdictRules::NoActions, TRuleSeverity::Error, false, u"The project holds no actions"},
});

// In the order of TRuleSeverity.
constexpr auto Severities = std::to_array<std::u16string_view>({u"error", u"warning", u"off"});

template <typename TRange, typename TName>
std::vector<std::u16string> NamesOf(const TRange& range, const TName& name) {
  std::vector<std::u16string> names;
  names.reserve(range.size());
  for (const auto& row : range)
    names.emplace_back(name(row));
  return names;
}

TRuleSeverity ParseSeverity(std::u16string_view rule, std::u16string_view text) {
  const auto found = std::ranges::find_if(
      Severities, [text](std::u16string_view name) { return text::EqualsIgnoreCase(name, text); });
  if (found != Severities.end()) return static_cast<TRuleSeverity>(found - Severities.begin());
  throw EKxException(u"The rule " + Quoted(rule) + u" takes error, warning or off, not " + Quoted(text) +
                     u"." + DidYouMean(text, NamesOf(Severities, [](auto name) { return name; })));
}

} // namespace

std::span<const TVerdictRule> VerdictRules() {
  return Rules;
}

const TVerdictRule* FindVerdictRule(std::u16string_view name) {
  const auto found = std::ranges::find_if(
      Rules, [name](const TVerdictRule& rule) { return text::EqualsIgnoreCase(rule.Name, name); });
  return found == Rules.end() ? nullptr : &*found;
}

std::u16string_view SeverityName(TRuleSeverity severity) {
  return Severities.at(static_cast<std::size_t>(severity));
}

void TRuleSettings::Set(std::u16string_view rule, std::u16string_view severity) {
  rule = text::Trim(rule);
  if (FindVerdictRule(rule) == nullptr)
    throw EKxException(u"There is no rule " + Quoted(rule) + u"." +
                       DidYouMean(rule, NamesOf(Rules, [](const auto& row) { return row.Name; })));
  severities_.insert_or_assign(std::u16string(rule), ParseSeverity(rule, text::Trim(severity)));
}

void TRuleSettings::Set(std::u16string_view assignment) {
  const std::size_t equals = assignment.find(u'=');
  if (equals == std::u16string_view::npos)
    throw EKxException(Quoted(assignment) + u" sets no rule: expected NAME=error, NAME=warning or NAME=off.");
  Set(assignment.substr(0, equals), assignment.substr(equals + 1));
}

std::optional<TRuleSeverity> TRuleSettings::Find(std::u16string_view rule) const {
  const auto found = severities_.find(rule);
  return found == severities_.end() ? std::nullopt : std::optional(found->second);
}

} // namespace kx
