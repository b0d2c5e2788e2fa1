// Which configurations of a solution a name or an expression means.
#pragma once

#include "program/check/CheckRule.h"

namespace kx::check {

struct TConfigurationMatch {
  std::vector<std::u16string> Names;
  std::u16string Problem; // where there are none: why, and what may have been meant
};

// `file` is a full path. A name counts before an expression, as in the actions that build. A solution that
// cannot be read has no match.
TConfigurationMatch MatchConfigurations(const std::u16string& file, const std::u16string& wanted);

void FindNoConfiguration(const TConfigurationMatch& match, TRuleReport& report);

} // namespace kx::check
