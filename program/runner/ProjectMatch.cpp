#include "program/runner/ProjectMatch.h"

#include "foundation/text/Text.h"
#include "program/runner/ProjectReader.h"

#include <algorithm>
#include <vector>

namespace kx {

namespace {

struct TKnownAction {
  const TProjectElement* Element;
  std::size_t Depth;
};

bool IsAlike(const TProjectElement& one, const TProjectElement& other) {
  return text::EqualsIgnoreCase(one.Attribute(u"Type").value_or(u""),
                                other.Attribute(u"Type").value_or(u"")) &&
         one.Attribute(u"Name") == other.Attribute(u"Name");
}

void Collect(const TProjectElement& holder, std::size_t depth, std::vector<TKnownAction>& actions) {
  for (const auto& [action, list] : ActionElementsOf(holder)) {
    actions.push_back({action, depth});
    Collect(*action, depth + 1, actions);
  }
}

std::vector<TKnownAction> ActionsIn(const TProjectElement& root) {
  std::vector<TKnownAction> actions;
  Collect(root, 0, actions);
  return actions;
}

const TProjectElement* OnlyOneLike(const TProjectElement& action, const std::vector<TKnownAction>& actions) {
  const TProjectElement* found = nullptr;
  for (const auto& known : actions) {
    if (!IsAlike(*known.Element, action)) continue;
    if (found != nullptr) return nullptr;
    found = known.Element;
  }
  return found;
}

} // namespace

const TProjectElement* FindCounterpart(const TProjectElement& action, const TProjectElement& root,
                                       const TProjectElement& other) {
  const auto own = ActionsIn(root), others = ActionsIn(other);
  const bool isSame =
      std::ranges::equal(own, others, [](const TKnownAction& one, const TKnownAction& another) {
        return one.Depth == another.Depth && IsAlike(*one.Element, *another.Element);
      });
  if (isSame) {
    const auto at = std::ranges::find(own, &action, &TKnownAction::Element) - own.begin();
    return others[static_cast<std::size_t>(at)].Element;
  }
  return OnlyOneLike(action, own) == nullptr ? nullptr : OnlyOneLike(action, others);
}

const TProjectElement* PropertyElement(const TProjectElement& action, std::u16string_view property) {
  const auto found = std::ranges::find_if(action.Children, [property](const TProjectElement& child) {
    return text::EqualsIgnoreCase(child.Name, property);
  });
  return found == action.Children.end() ? nullptr : &*found;
}

} // namespace kx
