#include "host/Options.h"

namespace kx {

void TKxOptionsObject::LoadOptions(const IKxOptionsReader& /*reader*/) {
  modified_ = false;
}
void TKxOptionsObject::SaveOptions(IKxOptionsWriter& /*writer*/) {
  modified_ = false;
}

} // namespace kx
