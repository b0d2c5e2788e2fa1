#include "package/mstest/KxMSTestAction.h"

#include <algorithm>
#include <array>

namespace kx {

namespace {

// One value of a Team Build: the project variable in which Team Build gives it, and the name of the setting
// in messages.
struct TTeamValue {
  std::u16string TTeamBuild::*Member;
  std::u16string_view Variable;
  std::u16string_view Label;
};
constexpr std::array<TTeamValue, 5> TeamValues{{
    {&TTeamBuild::Server, u"_envTeamServer", u"Team Server Name"},
    {&TTeamBuild::Project, u"_envTeamProject", u"Team Project Name"},
    {&TTeamBuild::BuildId, u"_envTeamBuildId", u"Team Build Id"},
    {&TTeamBuild::Platform, u"_envBuildPlatform", u"Build Platform"},
    {&TTeamBuild::Flavor, u"_envBuildFlavor", u"Build Flavor"},
}};

void AddPublishSwitches(ICommandLineBuilder& builder, const TTeamBuild& team) {
  const auto add = [&builder](std::u16string_view name, std::u16string_view value) {
    builder.Add(name, value, TCommandLineOption::QuoteValue);
  };
  add(u"/publish:", team.Server);
  add(u"/teamproject:", team.Project);
  add(u"/publishbuild:", team.BuildId);
  add(u"/flavor:", team.Flavor);
  add(u"/platform:", team.Platform);
}

} // namespace

bool TKxMSTestAction::GetPublishArguments(ICommandLineBuilder& builder) {
  publishedToTeamBuild_ = false;
  TTeamBuild team;
  switch (publishMode_) {
  case TMSTestPublishMode::pbNone:
    return true;
  case TMSTestPublishMode::pbAuto:
    publishedToTeamBuild_ = FindTeamBuild(team);
    if (!publishedToTeamBuild_) return true;
    break;
  case TMSTestPublishMode::pbSpecify:
    // The counts are still reported to the host: only Team Build itself shows them in its place.
    if (!ExpandTeamBuild(team)) return false;
    break;
  }
  SendMessage(u"Results will be published to Team Project " + team.Project + u" on " + team.Server +
              u", Build Id " + team.BuildId + u" (" + team.Flavor + u"/" + team.Platform + u")");
  AddPublishSwitches(builder, team);
  return true;
}

bool TKxMSTestAction::FindTeamBuild(TTeamBuild& team) {
  std::size_t found = 0;
  for (const auto& value : TeamValues) {
    team.*value.Member = GetVariableValue(value.Variable);
    if (!(team.*value.Member).empty()) ++found;
  }
  if (found > 0 && found < TeamValues.size())
    SendMessage(u"Warning : It appears that this project is running under Team Build, but not all Team Build "
                u"parameters are available",
                TStatusTag::stWarning);
  return found == TeamValues.size();
}

void TKxMSTestAction::LookForTeamBuild(IKxActionValidationError& errors) {
  for (const auto& value : TeamValues)
    LookForValue(errors, value.Label, team_.*value.Member);
}

bool TKxMSTestAction::ExpandTeamBuild(TTeamBuild& team) {
  return std::ranges::all_of(TeamValues, [&](const TTeamValue& value) {
    return TryExpandExpression(value.Label, team_.*value.Member, true, team.*value.Member);
  });
}

} // namespace kx
