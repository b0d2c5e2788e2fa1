#include "contract/Options.h"

namespace kx {

const TKxPropertyTable& TKxOptionsObject::PublishedProperties() const {
  static const TKxPropertyTable none;
  return none;
}

void TKxOptionsObject::LoadOptions(const IKxOptionsReader& /*reader*/) {
  modified_ = false;
}
void TKxOptionsObject::SaveOptions(IKxOptionsWriter& /*writer*/) {
  modified_ = false;
}

} // namespace kx
