#include "package/KxVSDotNetReg.h"

#include "build/KxVSDotNetAction.h"
#include "build/KxVSDotNetOptions.h"
#include "iterator/KxVSDotNetSolutionIterator.h"
#include "mstest/KxMSTestAction.h"
#include "package/Images.h"
#include "versioninfo/KxVersionInfoUpdaterAction.h"

namespace kx {

namespace {

void RegisterBuildAction() {
  const TKxActionClass& action = TKxVSDotNetAction::Class();
  ActionService().RegisterAction(u"DEVENV", u"Compilers", action);
  IKxCoreScriptingService& scripting = CoreScriptingService();
  scripting.RegisterFunction(action, u"GetProjectID", &TKxVSDotNetAction::GetProjectIDFunction);
  scripting.RegisterFunction(action, u"GetProjectName", &TKxVSDotNetAction::GetProjectNameFunction);
  scripting.RegisterFunction(action, u"GetProjectPath", &TKxVSDotNetAction::GetProjectPathFunction);
}

void RegisterImages() {
  for (const auto& image : PackageImages)
    ActionService().RegisterImage(image.Name, image.Svg);
}

void RegisterScriptConstants() {
  const TKxEnumeration& actions = VSDotNetBuildActionEnumeration();
  for (std::size_t i = 0; i < actions.Values.size(); ++i)
    CoreScriptingService().RegisterConstant(actions.Values[i], static_cast<std::int32_t>(i));
}

} // namespace

void RegisterVisualStudioDotNet(const IKxRegistrationContext& context) {
  RegisterImages();
  RegisterBuildAction();
  RegisterOptions();
  ActionService().RegisterAction(u"MSTEST", u"Testing Tools", TKxMSTestAction::Class());
  ActionService().RegisterAction(u"VERSIONINFO", u"Compilers", TKxVersionInfoUpdaterAction::Class());
  ActionService().RegisterAction(u"SOLUTIONITERATOR", u"Compilers", TKxVSSolutionIterator::Class());
  if (!context.HasDesignEnvironment()) return;
  RegisterScriptConstants();
}

} // namespace kx
