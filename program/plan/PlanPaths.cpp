// The ways along the needs of a plan.
#include "program/plan/Plan.h"

#include "program/runner/Messages.h"
#include "program/runner/NeedsOrder.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace kx {

namespace {

// Answers which of two parts waits for the other.
class TWays {
public:
  explicit TWays(const TPlan& plan) : plan_(plan), rank_(plan.Parts.size()), seen_(plan.Parts.size()) {
    const auto order = InOrder(plan);
    for (std::size_t i = 0; i < order.size(); ++i)
      rank_[order[i]] = i;
  }

  bool IsBefore(std::size_t a, std::size_t b) const { return rank_[a] < rank_[b]; }

  // Whether `later` waits for `earlier`, which is before it.
  bool WaitsFor(std::size_t later, std::size_t earlier) {
    ++search_;
    std::vector<std::size_t> waiting{later};
    while (!waiting.empty()) {
      const std::size_t part = waiting.back();
      waiting.pop_back();
      for (const TActionNeed& need : plan_.Parts[part].Needs) {
        if (need.Action == earlier) return true;
        if (rank_[need.Action] < rank_[earlier] || seen_[need.Action] == search_) continue;
        seen_[need.Action] = search_;
        waiting.push_back(need.Action);
      }
    }
    return false;
  }

private:
  const TPlan& plan_;
  std::vector<std::size_t> rank_;
  std::vector<std::size_t> seen_; // by part: the last search that came there
  std::size_t search_ = 0;
};

using TLength = std::pair<std::chrono::milliseconds, std::size_t>; // of a way: its time, then its parts

struct TWritten {
  std::u16string File;
  std::vector<std::size_t> Parts;
};
using TWriters = TByName<TWritten>;

TWriters WritersOf(const TPlan& plan) {
  TWriters writers;
  for (std::size_t i = 0; i < plan.Parts.size(); ++i)
    for (const auto& file : plan.Parts[i].Outputs) {
      TWritten& written = writers[text::ReplaceAll(file, u"/", u"\\")];
      written.File = file;
      if (written.Parts.empty() || written.Parts.back() != i) written.Parts.push_back(i);
    }
  return writers;
}

} // namespace

std::vector<std::size_t> InOrder(const TPlan& plan) {
  return OrderByNeeds(plan.Parts.size(), [&plan](std::size_t i) { return std::span(plan.Parts[i].Needs); });
}

std::vector<std::size_t> CriticalPath(const TPlan& plan) {
  constexpr std::size_t none = static_cast<std::size_t>(-1);
  std::vector<TLength> lengths(plan.Parts.size());
  std::vector<std::size_t> before(plan.Parts.size(), none);
  std::size_t last = none;
  for (const std::size_t i : InOrder(plan)) {
    for (const TActionNeed& need : plan.Parts[i].Needs)
      if (before[i] == none || lengths[before[i]] < lengths[need.Action]) before[i] = need.Action;
    if (before[i] != none) lengths[i] = lengths[before[i]];
    lengths[i].first += plan.Parts[i].Usual.value_or(std::chrono::milliseconds(0));
    ++lengths[i].second;
    if (last == none || lengths[last] < lengths[i]) last = i;
  }
  std::vector<std::size_t> path;
  for (; last != none; last = before[last])
    path.push_back(last);
  std::ranges::reverse(path);
  return path;
}

// Of parts in order, all wait for each other when each waits for the one before it.
std::vector<TClash> FindClashes(const TPlan& plan) {
  TWays ways(plan);
  std::vector<TClash> clashes;
  for (const auto& [key, written] : WritersOf(plan)) {
    auto ordered = written.Parts;
    std::ranges::sort(ordered, [&ways](std::size_t a, std::size_t b) { return ways.IsBefore(a, b); });
    for (std::size_t i = 1; i < ordered.size(); ++i)
      if (!ways.WaitsFor(ordered[i], ordered[i - 1])) {
        const auto [first, second] = std::minmax(ordered[i - 1], ordered[i]);
        clashes.push_back({first, second, written.File});
      }
  }
  std::ranges::sort(clashes, {},
                    [](const TClash& clash) { return std::tie(clash.Second, clash.First, clash.File); });
  return clashes;
}

std::u16string DescribeClash(const TPlan& plan, const TClash& clash) {
  const auto name = [&plan](std::size_t part) { return Quoted(plan.Parts[part].Id); };
  return name(clash.First) + u" and " + name(clash.Second) + u" both write " + clash.File +
         u", and neither waits for the other. Say in the Needs of one that it needs the other, or let them "
         u"write "
         u"different files.";
}

} // namespace kx
