#pragma once

#include "program/findings/Finding.h"

namespace kx::tests {

// With everything but its steps and where the log says it.
inline TFinding FullFinding(TFindingPlace place) {
  return {.Rule = u"C1",
          .Severity = TFindingSeverity::Error,
          .Message = u"m",
          .Place = std::move(place),
          .Code = u"c",
          .Project = u"App",
          .Configuration = u"Debug",
          .Action = u"Build",
          .Occurrences = 3,
          .Fingerprint = u"f",
          .Advice = u"mend it"};
}

} // namespace kx::tests
