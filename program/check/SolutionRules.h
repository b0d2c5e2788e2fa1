// What is looked at in solutions: one function a rule of the table (CheckRules.cpp).
#pragma once

#include "program/check/CheckRule.h"
#include "program/check/DiskNames.h"
#include "program/check/ProjectFacts.h"
#include "program/check/SolutionFacts.h"
#include "program/check/VersionFacts.h"

#include <memory>

namespace kx::check {

struct TKnownProject {
  TProjectFacts Facts;
  TVersionFacts Versions;
};

struct TCheckedSolution {
  const TSolutionFacts& Facts;
  std::vector<const TNamedFile*> Files; // of its projects, in their order; null for what has no file
  std::vector<std::shared_ptr<const TKnownProject>> Projects; // the same; null where there is nothing to read
};

void FindUnreadableSolution(const TCheckedSolution& solution, TRuleReport& report);
void FindContradictingHeaders(const TCheckedSolution& solution, TRuleReport& report);
void FindNewFormat(const TCheckedSolution& solution, TRuleReport& report);
void FindDoubtfulEncoding(const TCheckedSolution& solution, TRuleReport& report);
void FindOpenSections(const TCheckedSolution& solution, TRuleReport& report);
void FindMergeMarks(const TCheckedSolution& solution, TRuleReport& report);
void FindTextBehindEnd(const TCheckedSolution& solution, TRuleReport& report);

void FindCycles(const TCheckedSolution& solution, TRuleReport& report);
void FindUnknownNeeds(const TCheckedSolution& solution, TRuleReport& report);
void FindOldNeeds(const TCheckedSolution& solution, TRuleReport& report);

void FindSharedIds(const TCheckedSolution& solution, TRuleReport& report);
void FindSharedNames(const TCheckedSolution& solution, TRuleReport& report);
void FindSharedFiles(const TCheckedSolution& solution, TRuleReport& report);

void FindMissingProjects(const TCheckedSolution& solution, TRuleReport& report);
void FindNoProjects(const TCheckedSolution& solution, TRuleReport& report);
void FindOtherSpellings(const TCheckedSolution& solution, TRuleReport& report);
void FindStrangeProjects(const TCheckedSolution& solution, TRuleReport& report);

void FindUnmapped(const TCheckedSolution& solution, TRuleReport& report);
void FindHalfMapped(const TCheckedSolution& solution, TRuleReport& report);
void FindNeverBuilt(const TCheckedSolution& solution, TRuleReport& report);
void FindUnknownMappings(const TCheckedSolution& solution, TRuleReport& report);

// Between its projects.
void FindReferencesOutside(const TCheckedSolution& solution, TRuleReport& report);
void FindReferencesNotOrdered(const TCheckedSolution& solution, TRuleReport& report);
void FindNewFrameworks(const TCheckedSolution& solution, TRuleReport& report);
void FindDifferentVersions(const TCheckedSolution& solution, TRuleReport& report);

} // namespace kx::check
