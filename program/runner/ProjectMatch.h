// Two texts of one project: where an action of the one stands in the other.
#pragma once

#include "program/runner/ProjectXml.h"

#include <string_view>

namespace kx {

// `action` is an element of `root`. An action is known by its type and name: by its place when the actions of
// both texts are the same, else as the only one of its kind in each. Null when it is not there, or when it
// cannot be told which it is.
const TProjectElement* FindCounterpart(const TProjectElement& action, const TProjectElement& root,
                                       const TProjectElement& other);

// The element of the action's property; null when the text does not state it.
const TProjectElement* PropertyElement(const TProjectElement& action, std::u16string_view property);

} // namespace kx
