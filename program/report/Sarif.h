// Findings as SARIF 2.1.0 (OASIS, "Static Analysis Results Interchange Format"), for code scanning and
// readers of results.
#pragma once

#include "foundation/platform/Spool.h"
#include "program/findings/Finding.h"

#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace kx {

struct TSarifSettings {
  std::u16string Root = {}; // a folder: files below it are written as seen from there; empty: as they are
  // What a rule means, in one or a few sentences; may be empty, as for the codes of tools.
  std::function<std::u16string(std::u16string_view rule)> Explain = {};
  // Stands for the file of findings that have none, since readers refuse a result without a place.
  std::u16string FallbackFile = {};
};

// Writes UTF-8 piece by piece; fails as `put` does. Findings want their fingerprints set (SetFingerprints);
// steps become a code flow. Of more than 25 000, as many as GitHub takes, the most severe are written.
platform::Status WriteSarif(std::span<const TFinding> findings, const TSarifSettings& settings,
                            const platform::PutBytes& put);

// "src/a%20b.cs", "file:///C:/x.cs": a file as RFC 3986 writes it.
std::string UriOf(std::u16string_view root, std::u16string_view file);

} // namespace kx
