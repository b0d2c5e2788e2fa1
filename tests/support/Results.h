// Results of configurations and projects in a line each.
#pragma once

#include "program/runner/Results.h"

namespace kx::tests {

inline TProjectResult ProjectResult(const char16_t* name, TResultKind result, int began, int elapsed,
                                    TProblemCounts counts = {}) {
  using std::chrono::milliseconds;
  return {name, u"", result, counts, milliseconds(began), milliseconds(elapsed)};
}

inline TConfigurationResult ConfigurationResult(const char16_t* name, TResultKind result,
                                                TProblemCounts counts, int began, int elapsed,
                                                std::vector<TProjectResult> projects = {}) {
  using std::chrono::milliseconds;
  return {name, result, u"", counts, milliseconds(began), milliseconds(elapsed), std::move(projects)};
}

} // namespace kx::tests
