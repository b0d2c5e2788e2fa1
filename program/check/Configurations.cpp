#include "program/check/Configurations.h"

#include "foundation/text/Exceptions.h"
#include "package/buildaction/ConfigurationNames.h"
#include "package/buildaction/ProjectSearch.h"

namespace kx::check {

TConfigurationMatch MatchConfigurations(const std::u16string& file, const std::u16string& wanted) {
  TConfigurationMatch match;
  try {
    const auto solution = OpenSolutionWithCircles(file, true);
    match.Names = kx::MatchConfigurations(*solution, wanted, true, match.Problem);
    if (match.Names.empty() && match.Problem.empty()) match.Problem = MissingConfiguration(*solution, wanted);
  } catch (const EKxException& error) {
    match.Problem = error.Message();
  }
  return match;
}

void FindNoConfiguration(const TConfigurationMatch& match, TRuleReport& report) {
  if (match.Names.empty()) report.Say(0, match.Problem);
}

} // namespace kx::check
