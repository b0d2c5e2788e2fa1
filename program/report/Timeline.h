// When what ran, as markup that timeline.css makes a drawing of.
#pragma once

#include "program/runner/Events.h"

#include <string>

namespace kx {

// UTF-8, without styles or scripts. Empty where it would say no more than the time of the run does.
std::string TimelineMarkup(const TRunReport& report);

} // namespace kx
