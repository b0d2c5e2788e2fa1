// Findings as JSON, wherever programs read them.
#pragma once

#include "foundation/formats/JsonWriter.h"
#include "program/findings/Finding.h"

#include <nlohmann/json_fwd.hpp>

namespace kx {

// The members of the object that is open: rule, severity ("error", "warning", "note"), message, file, line,
// column (null where unknown), code, project, configuration, action, occurrences, fingerprint, advice, said
// (the message of the run that told it first, from 1; left out where there is none), and steps (file, line,
// column, message) where the finding has some.
void WriteFinding(const TFinding& finding, TJsonWriter& json);
// The reverse: members that are missing or of another type are as in a new finding.
TFinding ReadFinding(const nlohmann::json& object);

} // namespace kx
