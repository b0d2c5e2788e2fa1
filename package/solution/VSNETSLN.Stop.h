// How the work on a solution ends when the user asks for it.
#pragma once

#include "contract/Process.h"
#include "foundation/text/Exceptions.h"

namespace kx {

inline void RaiseIfStopped(const TKxEvent* stop) {
  if (stop != nullptr && stop->IsRaised()) throw EKxException(u"Action Terminated by User.");
}

} // namespace kx
