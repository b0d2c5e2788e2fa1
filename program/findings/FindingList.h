// All that is wrong, each thing once.
#pragma once

#include "program/findings/Finding.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kx {

struct TFindingCounts {
  std::int64_t Errors = 0;
  std::int64_t Warnings = 0;
  std::int64_t Notes = 0;
};
TFindingCounts CountOf(std::span<const TFinding> findings);

// Errors and then warnings, each in their order, so many at most.
std::vector<const TFinding*> MostSevere(std::span<const TFinding> findings, std::size_t most);

class TFindingList {
public:
  // So many are kept; of what comes behind them only how often something came is known.
  static constexpr std::size_t MostKept = 20'000;
  explicit TFindingList(std::size_t most = MostKept) : most_(most) {}

  // What has the same rule, place and text as one before is another occurrence of that; the worse severity of
  // both counts, since one project's warning is another one's error. Errors have room behind all others. A
  // note that says no more than where to look becomes a step of the finding before it.
  void Add(TFinding finding);
  // From now on called with each finding that came, came again or got a step, and its place in Kept().
  using TOnChange = std::function<void(std::size_t place, const TFinding& finding)>;
  void WhenChanged(TOnChange onChange) { onChange_ = std::move(onChange); }

  const std::vector<TFinding>& Kept() const { return kept_; }
  std::vector<TFinding> Take() { return std::move(kept_); } // the list is done with then
  std::int64_t More() const { return more_; }               // that were not kept
  void AddMore(std::int64_t more) { more_ += more; }        // that a list before this one has not kept

private:
  void Tell(std::size_t place) const {
    if (onChange_) onChange_(place, kept_[place]);
  }

  std::size_t most_;
  TOnChange onChange_ = {};
  std::vector<TFinding> kept_;
  std::unordered_map<std::u16string, std::size_t> places_; // in kept_, by what makes two the same
  std::int64_t more_ = 0;
  bool isLastNew_ = false;
};

// Sets the fingerprints: of the rule, the file below `root` (of one elsewhere only its name), the text
// without numbers and paths, the text of the source line where it can be read, and a number for those that
// are equal in all of this. So a finding keeps its own when lines move, and in other folders and on other
// machines.
void SetFingerprints(std::span<TFinding> findings, const std::u16string& root);

// Findings of several runs as those of one: what has the same rule, place below its root and text is one.
class TFindingMerge {
public:
  void Add(std::vector<TFinding> findings, const std::u16string& root); // with their fingerprints
  std::vector<TFinding> Take(); // numbered anew where fingerprints are equal; it is done with then

private:
  std::vector<TFinding> merged_;
  std::unordered_map<std::u16string, std::size_t> places_; // by what makes two the same
};

} // namespace kx
