#include "foundation/platform/StopSignal.h"

#include <algorithm>

namespace kx::platform {

bool AnyRaised(std::span<const StopSignal* const> signals) {
  return std::ranges::any_of(signals, &StopSignal::IsRaised);
}

bool AnyUrgent(std::span<const StopSignal* const> signals) {
  return std::ranges::any_of(signals, &StopSignal::IsUrgent);
}

} // namespace kx::platform
