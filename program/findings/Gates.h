// What findings may stop although everything was built: a baseline of those that are known, and limits.
#pragma once

#include "foundation/platform/Result.h"
#include "program/findings/Finding.h"

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

enum class TFailOn { Never, Error, Warning, NewWarning }; // each of them at that severity or above

std::span<const std::u16string_view> FailOnWords(); // in the order of TFailOn
// One of them, letter case ignored. Raises EKxException for another word.
TFailOn ReadFailOn(std::u16string_view word);
// A whole number from 0. Raises EKxException for anything else.
std::int64_t ReadMaxWarnings(std::u16string_view text);

struct TGateSettings {
  std::u16string Baseline = {};       // a file; empty: none
  std::optional<TFailOn> FailOn = {}; // nothing: NewWarning with a baseline, else Never
  std::optional<std::int64_t> MaxWarnings = {};

  // What is set here, else what `other` says.
  TGateSettings Or(const TGateSettings& other) const;
};

// The findings that are known: a text file to be kept with the sources, one line for each, its fingerprint
// and a remark for people, sorted, so that versions of it merge easily. Lines that begin with "#" are
// comments.
class TBaseline {
public:
  TBaseline() = default;
  // Warnings and errors; their files are named as seen from `root`.
  TBaseline(std::span<const TFinding> findings, std::u16string_view root);
  // Nothing in it for a file that is not there.
  static platform::Result<TBaseline> Load(std::u16string_view fileName);
  platform::Status Save(std::u16string_view fileName) const;

  bool Holds(const TFinding& finding) const { return remarks_.contains(finding.Fingerprint); }
  bool WasThere() const { return wasThere_; } // the file that was loaded
  std::size_t Size() const { return remarks_.size(); }

private:
  std::map<std::u16string, std::u16string> remarks_; // by fingerprint
  bool wasThere_ = false;
};

struct TGateResult {
  std::vector<TFinding> New = {}; // warnings and errors that the baseline lacks
  std::int64_t Known = 0;
  std::int64_t Fixed = 0;                  // of the baseline, not found any more
  std::vector<std::u16string> Broken = {}; // a sentence for each gate that is not met
};

// `more` findings are in no list. A baseline that is not there holds nothing up. The findings have
// fingerprints.
TGateResult CheckGates(std::span<const TFinding> findings, std::int64_t more, const TGateSettings& settings,
                       const TBaseline& baseline);

} // namespace kx
