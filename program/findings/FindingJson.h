// Findings as JSON, wherever programs read them.
#pragma once

#include "foundation/formats/JsonWriter.h"
#include "program/findings/Finding.h"

namespace kx {

// The members of the object that is open: rule, severity ("error", "warning", "note"), message, file, line,
// column (null where unknown), code, project, configuration, action, occurrences, fingerprint, advice, and
// steps (file, line, column, message) where the finding has some.
void WriteFinding(const TFinding& finding, TJsonWriter& json);

} // namespace kx
