// What kxhost plan writes: a format is a function and a row.
#pragma once

#include "foundation/formats/JsonWriter.h"
#include "program/plan/PartCommand.h"

#include <span>
#include <string_view>

namespace kx {

using TPlanPut = TJsonWriter::TPut;
using TWritePlan = void (*)(const TPlan& plan, const TRunWords& words, const TPlanPut& put);

struct TPlanFormat {
  std::u16string_view Name; // for the command line
  TWritePlan Write;         // UTF-8; raises EKxException for a plan that the format cannot hold
};
// The first is for people, and the default.
std::span<const TPlanFormat> PlanFormats();

void WritePlanText(const TPlan& plan, const TRunWords& words, const TPlanPut& put);
void WritePlanJson(const TPlan& plan, const TRunWords& words, const TPlanPut& put);
void WritePlanDot(const TPlan& plan, const TRunWords& words, const TPlanPut& put);
void WritePlanMermaid(const TPlan& plan, const TRunWords& words, const TPlanPut& put);
// Each part is an edge whose stamp says that it has succeeded; ninja begins with those that have none.
void WritePlanNinja(const TPlan& plan, const TRunWords& words, const TPlanPut& put);
// What tools/buildbot reads: as the JSON, without the paths of this machine, and with what makes the report.
void WritePlanBuildbot(const TPlan& plan, const TRunWords& words, const TPlanPut& put);
// A job a part, which hands on its log, and one that makes the report of all. What must not happen before a
// part has ended well does not happen; parts that do not wait for a failed one go on.
void WritePlanGitHub(const TPlan& plan, const TRunWords& words, const TPlanPut& put);
void WritePlanGitLab(const TPlan& plan, const TRunWords& words, const TPlanPut& put);
void WritePlanAzure(const TPlan& plan, const TRunWords& words, const TPlanPut& put);

} // namespace kx
