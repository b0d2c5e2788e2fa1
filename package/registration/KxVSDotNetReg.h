// Announces to the host everything that the package offers. Classes and names only: no action is made here.
#pragma once

#include "contract/Services.h"

namespace kx {

void RegisterVisualStudioDotNet(const IKxRegistrationContext& context);

} // namespace kx
