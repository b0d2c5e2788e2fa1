// What is looked at in projects: one function a rule of the table (CheckRules.cpp).
#pragma once

#include "program/check/CheckRule.h"
#include "program/check/DiskNames.h"
#include "program/check/ProjectFacts.h"
#include "program/check/VersionFacts.h"

namespace kx::check {

struct TCheckedProject {
  const TProjectFacts& Facts;
  const TVersionFacts& Versions;
  TDiskNames& Disk;
};

void FindUnreadableProject(const TCheckedProject& project, TRuleReport& report);
void FindMissingSources(const TCheckedProject& project, TRuleReport& report);
void FindSourcesSpelledOtherwise(const TCheckedProject& project, TRuleReport& report);
void FindSourcesListedTwice(const TCheckedProject& project, TRuleReport& report);
void FindMissingHints(const TCheckedProject& project, TRuleReport& report);

void FindNoAssemblyInfo(const TCheckedProject& project, TRuleReport& report);
void FindSeveralAssemblyInfos(const TCheckedProject& project, TRuleReport& report);
void FindAttributesTwice(const TCheckedProject& project, TRuleReport& report);
void FindImpossibleVersions(const TCheckedProject& project, TRuleReport& report);

void FindRefusedScripts(const TCheckedProject& project, TRuleReport& report);
void FindUnseenScripts(const TCheckedProject& project, TRuleReport& report);
void FindLossesOfScripts(const TCheckedProject& project, TRuleReport& report);

} // namespace kx::check
