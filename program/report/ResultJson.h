// The results of a run and of its actions as JSON, wherever programs read them.
#pragma once

#include "foundation/formats/JsonWriter.h"
#include "program/runner/Results.h"

#include <nlohmann/json_fwd.hpp>

#include <chrono>
#include <cstdint>

namespace kx {

// The members of the object that is open: name, type, pass, nesting, isLoop, succeeded, result, reason,
// errors, warnings, elapsedMs, beganMs, tests, configurations (configuration, succeeded, result, reason,
// errors, warnings, elapsedMs, beganMs, projects, each as WriteProject has it with elapsedMs and beganMs).
// "beganMs" counts from the beginning of the run, "result" is a word of WordOf; "reason" the rule that was
// broken, or empty.
void WriteResult(const TActionResult& result, TJsonWriter& json);

// Likewise: project, configuration (empty when the tool did not say it), succeeded, result,
// errors, warnings.
void WriteProject(const TProjectResult& result, TJsonWriter& json);

// Likewise: succeeded, result, totals (a line for people), errors, warnings, elapsedMs, tests (passed,
// failed, notRun), moreFindings (how many were too many to be kept; left out for none), file (the build
// project), root (the folder that the findings' files are seen from), machine, system, commit, branch,
// commandLine. Those from file on are left out where they are not known.
void WriteRun(const TRunReport& report, TJsonWriter& json);

// Numbers of logs may be anything, and are added up and shown: these are ones that bear it.
std::int64_t CountMember(const nlohmann::json& object, const char* name);
std::chrono::milliseconds DurationMember(const nlohmann::json& object, const char* name);
int DepthMember(const nlohmann::json& object, const char* name);

// The reverse; members that are missing are as in a new result. The run's actions and findings are none of
// its members.
TActionResult ReadResult(const nlohmann::json& object);
TRunReport ReadRun(const nlohmann::json& object);

} // namespace kx
