#include "package/solution/VSNETSLN.Order.h"

#include "contract/Process.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <optional>
#include <unordered_map>

namespace kx {

namespace {

using TNumber = std::uint32_t;
using TProjects = std::span<const std::shared_ptr<IVSDotNetProject>>;

// Several short lists in one block of memory.
class TLists {
public:
  // Pairs (list, item); sorts them and drops those that are there twice.
  TLists(std::size_t count, std::vector<std::pair<TNumber, TNumber>> pairs) : starts_(count + 1) {
    std::ranges::sort(pairs);
    pairs.erase(std::unique(pairs.begin(), pairs.end()), pairs.end());
    items_.reserve(pairs.size());
    for (const auto& [list, item] : pairs) {
      ++starts_[list + 1];
      items_.push_back(item);
    }
    std::partial_sum(starts_.begin(), starts_.end(), starts_.begin());
  }

  std::span<const TNumber> operator[](std::size_t list) const {
    return std::span(items_).subspan(starts_[list], starts_[list + 1] - starts_[list]);
  }

private:
  std::vector<TNumber> starts_;
  std::vector<TNumber> items_;
};

// Who depends on whom, by numbers. Projects that share an identifier share its number.
struct TGraph {
  explicit TGraph(TProjects projects) : IdOf(projects.size()) {
    std::unordered_map<std::u16string_view, TNumber, text::IgnoreCaseHash, text::IgnoreCaseEqual> numbers;
    numbers.reserve(projects.size());
    std::vector<std::pair<TNumber, TNumber>> members;
    members.reserve(projects.size());
    for (TNumber p = 0; p < projects.size(); ++p) {
      IdOf[p] = numbers.try_emplace(projects[p]->GetProjectID(), static_cast<TNumber>(numbers.size()))
                    .first->second;
      members.emplace_back(IdOf[p], p);
    }
    std::vector<std::pair<TNumber, TNumber>> dependsOn;
    std::vector<std::pair<TNumber, TNumber>> dependents;
    for (TNumber p = 0; p < projects.size(); ++p) {
      for (const std::u16string& id : projects[p]->GetDependancies()->GetList()) {
        const auto known = numbers.find(id);
        if (known == numbers.end()) continue;
        dependsOn.emplace_back(p, known->second);
        dependents.emplace_back(known->second, p);
      }
    }
    ProjectsOf = TLists(numbers.size(), std::move(members));
    DependsOn = TLists(projects.size(), std::move(dependsOn));
    Dependents = TLists(numbers.size(), std::move(dependents));
  }

  bool Depends(TNumber project, TNumber on) const {
    return std::ranges::binary_search(DependsOn[project], IdOf[on]);
  }

  std::vector<TNumber> IdOf; // by project: its identifier
  TLists ProjectsOf{0, {}};  // by identifier
  TLists DependsOn{0, {}};   // by project: identifiers
  TLists Dependents{0, {}};  // by identifier: projects
};

// Finds the groups of projects that can stand in one order only: nothing outside needs them or is needed by
// them, and each needs the one before it directly. No exchange moves a project out of the places of its
// group, and in the end none is left to be made; so the exchanges lead to that order, in a time that grows
// with the square of the group.
class TOnlyOrders {
public:
  explicit TOnlyOrders(const TGraph& graph) : graph_(graph), seen_(graph.IdOf.size()), needs_(seen_.size()) {}

  // Calls visit(the projects of a group in their order) for each group of several.
  void ForEach(const auto& visit) {
    for (TNumber p = 0; p < seen_.size(); ++p) {
      if (seen_[p]) continue;
      const auto group = GroupOf(p);
      if (group.size() < 2) continue;
      const auto order = OrderOf(group);
      if (order.size() == group.size()) visit(order);
    }
  }

private:
  std::vector<TNumber> GroupOf(TNumber first) {
    std::vector<TNumber> group{first};
    seen_[first] = true;
    const auto add = [&](TNumber project) {
      if (!seen_[project]) group.push_back(project);
      seen_[project] = true;
    };
    for (std::size_t next = 0; next < group.size();) { // it grows
      const TNumber project = group[next++];
      std::ranges::for_each(graph_.Dependents[graph_.IdOf[project]], add);
      for (const TNumber id : graph_.DependsOn[project])
        std::ranges::for_each(graph_.ProjectsOf[id], add);
    }
    return group;
  }

  // Shorter than the group when there is none, or several, or when projects share an identifier.
  std::vector<TNumber> OrderOf(std::span<const TNumber> group) {
    std::vector<TNumber> order;
    for (const TNumber project : group) {
      if (graph_.ProjectsOf[graph_.IdOf[project]].size() > 1) return {};
      needs_[project] = graph_.DependsOn[project].size() - (graph_.Depends(project, project) ? 1 : 0);
      if (needs_[project] == 0) order.push_back(project);
    }
    if (order.size() != 1) return {};
    for (std::size_t i = 0; i < order.size(); ++i) {
      for (const TNumber dependent : graph_.Dependents[graph_.IdOf[order[i]]])
        if (dependent != order[i] && --needs_[dependent] == 0) order.push_back(dependent);
      if (order.size() > i + 2) return {}; // any of them could be the next
    }
    return order;
  }

  const TGraph& graph_;
  std::vector<bool> seen_;
  std::vector<std::size_t> needs_; // by project: how many it needs that are not in the order yet
};

class TOrdering {
public:
  TOrdering(TProjects projects, const TKxEvent* stop)
      : projects_(projects), stop_(stop), graph_(projects), at_(projects.size()),
        positionOf_(projects.size()) {
    std::iota(at_.begin(), at_.end(), TNumber{0});
    std::iota(positionOf_.begin(), positionOf_.end(), TNumber{0});
  }

  std::vector<std::size_t> Run() {
    for (TNumber i = 1; i < at_.size(); ++i) {
      auto earlier = FirstDependent(i);
      if (earlier && !onlyOrdersAreSettled_) { // most solutions need no exchange
        SettleOnlyOrders();
        earlier = FirstDependent(i);
      }
      if (earlier) Settle(i, *earlier);
    }
    return {at_.begin(), at_.end()};
  }

private:
  void SettleOnlyOrders() {
    onlyOrdersAreSettled_ = true;
    TOnlyOrders(graph_).ForEach([this](std::span<const TNumber> order) {
      std::vector<TNumber> places;
      places.reserve(order.size());
      for (const TNumber project : order)
        places.push_back(positionOf_[project]);
      std::ranges::sort(places);
      for (std::size_t i = 0; i < order.size(); ++i) {
        at_[places[i]] = order[i];
        positionOf_[order[i]] = places[i];
      }
    });
  }

  // Positions Low and before have nobody before them who depends on them; in those between Low and High only
  // Suspect, which stands before them, can; about High nothing is known.
  struct TRange {
    TNumber Low;
    TNumber High;
    TNumber Suspect;
  };

  // Makes all positions up to `i` right, of which only the last one is wrong. An exchange of positions m and
  // j puts a project at j that its followers were never compared with, and at m one that nobody was compared
  // with. What is still to be done behind m waits on the stack; it is not touched by exchanges before it, as
  // they only move projects that stood before it anyway.
  void Settle(TNumber i, TNumber earlier) {
    std::vector<TRange> open{Exchange(i, earlier)};
    while (!open.empty()) {
      TRange& range = open.back();
      if (const auto wrong = FirstNeededBySuspect(range)) {
        range.Low = *wrong;
        open.push_back(Exchange(*wrong, positionOf_[range.Suspect]));
      } else if (const auto dependent = FirstDependent(range.High)) {
        range = Exchange(range.High, *dependent);
      } else {
        open.pop_back();
      }
    }
  }

  std::optional<TNumber> FirstDependent(TNumber position) {
    PollStop();
    TNumber first = position;
    for (const TNumber project : graph_.Dependents[graph_.IdOf[at_[position]]])
      first = std::min(first, positionOf_[project]);
    return first < position ? std::optional(first) : std::nullopt;
  }

  std::optional<TNumber> FirstNeededBySuspect(const TRange& range) const {
    TNumber first = range.High;
    for (const TNumber id : graph_.DependsOn[range.Suspect]) {
      for (const TNumber project : graph_.ProjectsOf[id]) {
        if (positionOf_[project] > range.Low) first = std::min(first, positionOf_[project]);
      }
    }
    return first < range.High ? std::optional(first) : std::nullopt;
  }

  TRange Exchange(TNumber later, TNumber earlier) {
    PollStop();
    const TNumber moved = at_[later];
    if (graph_.Depends(moved, at_[earlier])) RaiseCircle(*projects_[moved], *projects_[at_[earlier]]);
    std::swap(at_[later], at_[earlier]);
    positionOf_[at_[later]] = later;
    positionOf_[moved] = earlier;
    return {earlier, later, moved};
  }

  [[noreturn]] static void RaiseCircle(const IVSDotNetProject& later, const IVSDotNetProject& earlier) {
    throw EKxParseError(u"Solution has invalid circular dependancies between : " + later.GetName() +
                        u" and " + earlier.GetName());
  }

  void PollStop() {
    constexpr unsigned often = 4096;
    if (++steps_ % often == 0) RaiseIfStopped(stop_);
  }

  TProjects projects_;
  const TKxEvent* stop_;
  TGraph graph_;
  std::vector<TNumber> at_;         // the project at a position
  std::vector<TNumber> positionOf_; // the position of a project
  unsigned steps_ = 0;
  bool onlyOrdersAreSettled_ = false;
};

// Takes away projects that need nobody who is left, and then those that needed only them. What stays needs
// somebody who stays, so any way along it ends in a circle.
class TCircleSearch {
public:
  explicit TCircleSearch(TProjects projects)
      : graph_(projects), needs_(projects.size()), left_(projects.size()) {
    for (TNumber p = 0; p < projects.size(); ++p)
      ForEachNeeded(p, [&](TNumber) { ++needs_[p]; });
    for (TNumber p = 0; p < projects.size(); ++p)
      if (needs_[p] == 0) done_.push_back(p);
  }

  std::vector<std::vector<std::size_t>> Run() {
    std::vector<std::vector<std::size_t>> circles;
    left_.assign(left_.size(), true);
    TakeAwayDone();
    for (TNumber first = 0; first < left_.size(); ++first) {
      while (left_[first]) { // it may lead to circles without being part of them
        circles.push_back(WalkFrom(first));
        for (const std::size_t project : circles.back())
          TakeAway(static_cast<TNumber>(project));
        TakeAwayDone();
      }
    }
    return circles;
  }

private:
  void ForEachNeeded(TNumber project, const auto& visit) const {
    for (const TNumber id : graph_.DependsOn[project])
      for (const TNumber needed : graph_.ProjectsOf[id])
        if (needed != project) visit(needed);
  }

  void TakeAwayDone() {
    while (!done_.empty()) {
      const TNumber project = done_.back();
      done_.pop_back();
      TakeAway(project);
    }
  }

  void TakeAway(TNumber project) {
    if (!left_[project]) return;
    left_[project] = false;
    for (const TNumber dependent : graph_.Dependents[graph_.IdOf[project]])
      if (dependent != project && --needs_[dependent] == 0) done_.push_back(dependent);
  }

  std::vector<std::size_t> WalkFrom(TNumber project) const {
    std::vector<std::size_t> way;
    std::unordered_map<TNumber, std::size_t> placeOf;
    while (placeOf.try_emplace(project, way.size()).second) {
      way.push_back(project);
      std::optional<TNumber> next;
      ForEachNeeded(project, [&](TNumber needed) {
        if (left_[needed] && !next) next = needed;
      });
      project = *next;
    }
    way.erase(way.begin(), way.begin() + static_cast<std::ptrdiff_t>(placeOf[project]));
    return way;
  }

  TGraph graph_;
  std::vector<std::size_t> needs_; // by project: how many of those left it needs
  std::vector<bool> left_;
  std::vector<TNumber> done_; // left, and needing nobody who is
};

bool HaveDependancies(TProjects projects) {
  return std::ranges::any_of(
      projects, [](const auto& project) { return !project->GetDependancies()->GetList().IsEmpty(); });
}

} // namespace

std::vector<std::vector<std::size_t>> CirclesAmong(TProjects projects) {
  if (!HaveDependancies(projects)) return {};
  return TCircleSearch(projects).Run();
}

std::vector<std::size_t> OrderByDependancies(TProjects projects, const TKxEvent* stop) {
  if (HaveDependancies(projects)) return TOrdering(projects, stop).Run();
  std::vector<std::size_t> asTheyAre(projects.size());
  std::iota(asTheyAre.begin(), asTheyAre.end(), std::size_t{0});
  return asTheyAre;
}

} // namespace kx
