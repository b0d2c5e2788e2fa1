#include "program/runner/ActionGraph.h"

#include "foundation/text/Exceptions.h"
#include "program/runner/Messages.h"
#include "program/runner/NeedsOrder.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <numeric>
#include <utility>

namespace kx {

namespace {

using TNodes = std::vector<std::unique_ptr<TActionNode>>;
using TPlaces = std::vector<std::size_t>;
using TNeeds = std::vector<std::vector<TActionNeed>>;

// What a name of an action or a group stands for.
struct TNamed {
  TPlaces Actions;
  int Line;
  int OtherLine = 0; // of a second thing of that name
};

class TNamesOfGraph {
public:
  explicit TNamesOfGraph(const TProject& project) : project_(project) {
    std::map<const TActionGroup*, TPlaces> members;
    const TNodes& nodes = project.Actions();
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      if (!nodes[i]->Name().empty()) Add(nodes[i]->Name(), {i}, nodes[i]->Line());
      if (nodes[i]->Group() != nullptr) members[nodes[i]->Group()].push_back(i);
    }
    for (const auto& group : project.Groups())
      Add(group->Name, std::move(members[group.get()]), group->Line);
  }

  // Raises EKxException.
  const TPlaces& Require(std::u16string_view name) const {
    const auto found = named_.find(name);
    if (found == named_.end()) throw EKxException(Missing(name));
    if (found->second.OtherLine > 0)
      throw EKxException(Quoted(name) + u" stands for two things: one in line " +
                         text::FromInteger(found->second.Line) + u" and one in line " +
                         text::FromInteger(found->second.OtherLine) + u". Give one of them another name.");
    return found->second.Actions;
  }

private:
  void Add(const std::u16string& name, TPlaces actions, int line) {
    const auto [place, isNew] = named_.try_emplace(name, TNamed{std::move(actions), line});
    if (!isNew) place->second.OtherLine = std::max(line, 1);
  }

  std::u16string Missing(std::u16string_view name) const {
    const TActionNode* inner = project_.FindNamed(name);
    if (inner != nullptr && !inner->Name().empty())
      return Quoted(name) + u" stands in a loop: only what stands outside loops can be named; name the loop.";
    std::vector<std::u16string> known;
    for (const auto& [known_name, named] : named_)
      known.push_back(known_name);
    return u"No action outside loops and no group is named " + Quoted(name) + u"." + DidYouMean(name, known);
  }

  const TProject& project_;
  std::map<std::u16string, TNamed, text::IgnoreCaseLess> named_;
};

class TGraphMaker {
public:
  explicit TGraphMaker(const TProject& project)
      : project_(project), nodes_(project.Actions()), names_(project) {}

  TNeeds Make() const {
    TNeeds needs;
    std::vector<TActionNeed> ofRow;
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
      const TActionGroup* group = nodes_[i]->Group();
      const bool isFirst = i == 0 || group == nullptr || group != nodes_[i - 1]->Group();
      if (isFirst) ofRow = group != nullptr && group->Needs ? Named(*group->Needs, group->Line) : Before(i);
      needs.push_back(NeedsOf(i, isFirst, ofRow));
    }
    RefuseCircle(needs);
    return needs;
  }

private:
  [[noreturn]] void Refuse(int line, std::u16string_view message) const {
    RefuseFile(project_.FileName, line, message);
  }

  std::u16string NameOf(std::size_t action) const { return Quoted(nodes_[action]->DisplayName()); }

  std::vector<TActionNeed> Named(const TNeededNames& names, int line) const {
    std::vector<TActionNeed> needs;
    for (const auto& name : names) {
      try {
        for (const std::size_t action : names_.Require(name))
          needs.push_back({action, true});
      } catch (const EKxException& error) {
        Refuse(line, error.Message());
      }
    }
    return needs;
  }

  // What stands in front of this action: another one, or a whole group.
  std::vector<TActionNeed> Before(std::size_t action) const {
    std::vector<TActionNeed> needs;
    const auto goesOn = [&](std::size_t before) {
      return needs.empty() ||
             (nodes_[before]->Group() != nullptr && nodes_[before]->Group() == nodes_[action - 1]->Group());
    };
    for (std::size_t before = action; before-- > 0 && goesOn(before);)
      needs.push_back({before, false});
    return needs;
  }

  // `ofRow`: those of the group; of an action outside groups, what stands before it.
  std::vector<TActionNeed> NeedsOf(std::size_t action, bool isFirst,
                                   const std::vector<TActionNeed>& ofRow) const {
    const TActionNode& node = *nodes_[action];
    const auto& own = node.Terms().Needs;
    std::vector<TActionNeed> needs = node.Group() != nullptr || !own ? ofRow : std::vector<TActionNeed>();
    if (own)
      std::ranges::copy(Named(*own, node.Line()), std::back_inserter(needs));
    else if (!isFirst)
      needs.push_back({action - 1, false});
    return Tidy(std::move(needs));
  }

  // In order, each once.
  static std::vector<TActionNeed> Tidy(std::vector<TActionNeed> needs) {
    std::ranges::sort(needs, [](const TActionNeed& one, const TActionNeed& other) {
      return std::pair(one.Action, !one.MustSucceed) < std::pair(other.Action, !other.MustSucceed);
    });
    const auto isSame = [](const TActionNeed& one, const TActionNeed& other) {
      return one.Action == other.Action;
    };
    needs.erase(std::unique(needs.begin(), needs.end(), isSame), needs.end());
    return needs;
  }

  void RefuseCircle(const TNeeds& needs) const {
    std::vector<bool> left(needs.size(), true); // in circles, and behind them
    for (const std::size_t action :
         OrderByNeeds(needs.size(), [&needs](auto i) { return std::span(needs[i]); }))
      left[action] = false;
    const auto first = std::ranges::find(left, true);
    if (first == left.end()) return;
    TPlaces chain{static_cast<std::size_t>(first - left.begin())};
    for (;;) {
      const auto& next = *std::ranges::find_if(
          needs[chain.back()], [&left](const TActionNeed& need) { return left[need.Action]; });
      const auto begin = std::ranges::find(chain, next.Action);
      if (begin != chain.end()) RefuseCircle({begin, chain.end()}, needs);
      chain.push_back(next.Action);
    }
  }

  [[noreturn]] void RefuseCircle(TPlaces circle, const TNeeds& needs) const {
    std::rotate(circle.begin(), std::min_element(circle.begin(), circle.end()), circle.end());
    const auto described = [this](std::size_t action) {
      return NameOf(action) + u" (line " + text::FromInteger(nodes_[action]->Line()) + u")";
    };
    std::u16string text = u"No action of a circle of needs can begin: " + described(circle.front());
    bool isImplied = false;
    for (std::size_t i = 0; i < circle.size(); ++i) {
      const std::size_t next = circle[(i + 1) % circle.size()];
      text += (i == 0 ? u" needs " : u", which needs ") +
              (i + 1 == circle.size() ? NameOf(next) : described(next));
      const auto need = std::ranges::find(needs[circle[i]], next, &TActionNeed::Action);
      isImplied = isImplied || !need->MustSucceed;
    }
    text += isImplied ? u". An action without Needs needs the one before it." : u".";
    Refuse(nodes_[circle.front()]->Line(), text);
  }

  const TProject& project_;
  const TNodes& nodes_;
  const TNamesOfGraph names_;
};

bool HasTermsOfItsOwn(const TProject& project) {
  return !project.Groups().empty() || std::ranges::any_of(project.Actions(), [](const auto& node) {
    return node->Terms().Needs || node->Terms().IsParallel;
  });
}

} // namespace

std::vector<std::size_t> AllPlaces(const TProject& project) {
  TPlaces places(project.Actions().size());
  std::iota(places.begin(), places.end(), std::size_t{0});
  return places;
}

TActionGraph::TActionGraph(const TProject& project)
    : project_(project), isPlain_(!HasTermsOfItsOwn(project)), needs_(TGraphMaker(project).Make()) {}

std::vector<std::size_t> TActionGraph::Select(std::span<const std::u16string> names) const {
  const TNamesOfGraph named(project_);
  std::vector<bool> selected(needs_.size());
  TPlaces open;
  const auto take = [&](std::size_t action) {
    if (!selected[action]) open.push_back(action);
    selected[action] = true;
  };
  for (const auto& name : names)
    std::ranges::for_each(named.Require(name), take);
  while (!open.empty()) {
    const std::size_t action = open.back();
    open.pop_back();
    for (const auto& need : needs_[action])
      take(need.Action);
  }
  TPlaces places;
  for (std::size_t i = 0; i < selected.size(); ++i)
    if (selected[i]) places.push_back(i);
  return places;
}

} // namespace kx
