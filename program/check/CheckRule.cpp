#include "program/check/CheckRule.h"

#include "foundation/text/Exceptions.h"
#include "program/runner/Messages.h"

#include <algorithm>
#include <array>

namespace kx::check {

namespace {

constexpr std::array<TCheckLevel, 4> Levels{TFindingSeverity::Error, TFindingSeverity::Warning,
                                            TFindingSeverity::Note, std::nullopt};

TCheckLevel ParseLevel(std::u16string_view rule, std::u16string_view text) {
  const auto* found = std::ranges::find_if(
      Levels, [text](TCheckLevel level) { return text::EqualsIgnoreCase(LevelName(level), text); });
  if (found != Levels.end()) return *found;
  std::vector<std::u16string> words;
  words.reserve(Levels.size());
  for (const TCheckLevel level : Levels)
    words.emplace_back(LevelName(level));
  throw EKxException(u"The rule " + Quoted(rule) + u" takes error, warning, note or off, not " +
                     Quoted(text) + u"." + DidYouMean(text, words));
}

} // namespace

std::u16string_view LevelName(TCheckLevel level) {
  if (!level) return u"off";
  switch (*level) {
  case TFindingSeverity::Note:
    return u"note";
  case TFindingSeverity::Warning:
    return u"warning";
  default:
    return u"error";
  }
}

const TCheckRule& RequireCheckRule(std::u16string_view name) {
  std::vector<std::u16string> names;
  names.reserve(CheckRules().size());
  for (const TCheckRule& rule : CheckRules()) {
    if (text::EqualsIgnoreCase(rule.Name, name)) return rule;
    names.emplace_back(rule.Name);
  }
  throw EKxException(u"There is no rule " + Quoted(name) + u"." + DidYouMean(name, names));
}

void TCheckLevels::Set(std::u16string_view assignment) {
  const std::size_t equals = assignment.find(u'=');
  if (equals == std::u16string_view::npos)
    throw EKxException(Quoted(assignment) +
                       u" sets no rule: expected NAME=error, NAME=warning, NAME=note or NAME=off.");
  const TCheckRule& rule = RequireCheckRule(text::Trim(assignment.substr(0, equals)));
  levels_[&rule] = ParseLevel(rule.Name, text::Trim(assignment.substr(equals + 1)));
}

TCheckLevel TCheckLevels::Of(const TCheckRule& rule) const {
  const auto set = levels_.find(&rule);
  return set == levels_.end() ? rule.Default : set->second;
}

void TRuleReport::Say(int line, std::u16string message, TFindingDetails details) {
  findings_.push_back(
      {.Rule = std::u16string(rule_.Name),
       .Severity = severity_,
       .Message = std::move(message),
       .Place = {.File = details.File.empty() ? file_ : std::move(details.File), .Line = line},
       .Project = std::move(details.Project),
       .Advice = std::u16string(rule_.Advice),
       .Steps = std::move(details.Steps)});
}

TFindingStep TRuleReport::Step(int line, std::u16string message, const std::u16string& file) const {
  return {.Place = {.File = file.empty() ? file_ : file, .Line = line}, .Message = std::move(message)};
}

} // namespace kx::check
