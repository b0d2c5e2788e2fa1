// What is looked at in build projects: one function a rule of the table (CheckRules.cpp).
#pragma once

#include "program/check/BuildProjectFacts.h"
#include "program/check/CheckRule.h"

namespace kx::check {

void FindRefusedBuildProject(const TBuildProjectFacts& project, TRuleReport& report);
void FindInvalidSettings(const TBuildProjectFacts& project, TRuleReport& report);
void FindUnchangeableFiles(const TBuildProjectFacts& project, TRuleReport& report);
void FindIneffectiveSettings(const TBuildProjectFacts& project, TRuleReport& report);
void FindUnusedVariables(const TBuildProjectFacts& project, TRuleReport& report);
void FindUnusedPropertySets(const TBuildProjectFacts& project, TRuleReport& report);
void FindClearSecrets(const TBuildProjectFacts& project, TRuleReport& report);

} // namespace kx::check
