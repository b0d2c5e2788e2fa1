// The rules of kxhost check: a row each in one table, which the command, "kxhost explain" and docs/rules.md
// show.
#pragma once

#include "foundation/text/Text.h"
#include "program/findings/Finding.h"

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kx::check {

struct TCheckedSolution;
struct TCheckedProject;
struct TBuildProjectFacts;
struct TConfigurationMatch;
class TRuleReport;

// What a rule looks at says which files it is for.
using TSolutionLook = void (*)(const TCheckedSolution& solution, TRuleReport& report);
using TProjectLook = void (*)(const TCheckedProject& project, TRuleReport& report);
using TBuildProjectLook = void (*)(const TBuildProjectFacts& project, TRuleReport& report);
using TConfigurationLook = void (*)(const TConfigurationMatch& match, TRuleReport& report);
using TCheckLook = std::variant<TSolutionLook, TProjectLook, TBuildProjectLook, TConfigurationLook>;

// Nothing: the rule is off.
using TCheckLevel = std::optional<TFindingSeverity>;

struct TCheckRule {
  std::u16string_view Name; // lower-case words with hyphens
  TCheckLevel Default;
  std::u16string_view Summary; // one line: what is found
  std::u16string_view Why;     // what it does to a build
  std::u16string_view Advice;  // what to do about it
  std::u16string_view Example; // lines of a file that has it
  TCheckLook Look;
};

std::span<const TCheckRule> CheckRules(); // by what they look at, those of solutions first
const TCheckRule& RequireCheckRule(std::u16string_view name); // raises EKxException with the nearest name
std::u16string_view LevelName(TCheckLevel level);             // "error", "warning", "note", "off"

// How severe the user wants each rule to be.
class TCheckLevels {
public:
  // "NAME=error", "warning", "note" or "off"; the last one of a name holds. Raises EKxException with the
  // nearest name for what is none.
  void Set(std::u16string_view assignment);
  TCheckLevel Of(const TCheckRule& rule) const;

private:
  std::map<const TCheckRule*, TCheckLevel> levels_;
};

struct TFindingDetails {
  std::u16string Project = {};
  std::vector<TFindingStep> Steps = {};
  std::u16string File = {}; // where it is another than the one that is looked at
};

// What one rule finds in one file.
class TRuleReport {
public:
  TRuleReport(const TCheckRule& rule, TFindingSeverity severity, std::u16string file,
              std::vector<TFinding>& findings)
      : rule_(rule), severity_(severity), file_(std::move(file)), findings_(findings) {}

  void Say(int line, std::u16string message, TFindingDetails details = {});
  // Of the same file unless it says otherwise.
  TFindingStep Step(int line, std::u16string message, const std::u16string& file = {}) const;

private:
  const TCheckRule& rule_;
  TFindingSeverity severity_;
  std::u16string file_;
  std::vector<TFinding>& findings_;
};

} // namespace kx::check
