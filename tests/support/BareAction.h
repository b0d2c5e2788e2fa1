#pragma once

#include "contract/Actions.h"

namespace kx::tests {

// An action of a kind, without properties.
template <class TKind>
class TBareAction : public TKind {
public:
  const TKxPropertyTable& PublishedProperties() const override {
    static const TKxPropertyTable none;
    return none;
  }
  std::u16string GetActionName() const override { return u"Bare"; }
};

} // namespace kx::tests
