#include "package/buildaction/DevEnvCommandLine.h"

#include "contract/Utilities.h"

namespace kx {

namespace {

std::u16string_view Verb(TVSDotNetBuildAction buildAction) {
  switch (buildAction) {
  case TVSDotNetBuildAction::baBuild:
    return u"/build";
  case TVSDotNetBuildAction::baRebuild:
    return u"/rebuild";
  case TVSDotNetBuildAction::baClean:
    return u"/clean";
  case TVSDotNetBuildAction::baDeploy:
    return u"/deploy";
  }
  return {};
}

} // namespace

std::u16string DevEnvCommandLine(const TSolutionSettings& settings, std::u16string_view configuration,
                                 TVSDotNetBuildAction buildAction) {
  std::u16string line = settings.UseEnv ? u"/useenv " : u"";
  line += Verb(buildAction);
  return line + u" " + DoubleQuoteString(configuration);
}

} // namespace kx
