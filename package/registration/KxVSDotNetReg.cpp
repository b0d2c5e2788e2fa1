#include "package/registration/KxVSDotNetReg.h"

#include "package/buildaction/KxVSDotNetAction.h"
#include "package/buildaction/KxVSDotNetOptions.h"
#include "package/iterator/KxVSDotNetSolutionIterator.h"
#include "package/mstest/KxMSTestAction.h"
#include "package/pages/KxMSTestFrame.h"
#include "package/pages/KxMSTestPublishFrame.h"
#include "package/pages/KxMSTestSettingsFrame.h"
#include "package/pages/KxVSDotNetFrames.h"
#include "package/pages/KxVSDotNetSolutionIteratorFrame.h"
#include "package/pages/KxVSDotNetWebProjectDetectionFrame.h"
#include "package/pages/KxVersionInfoUpdaterFrame.h"
#include "package/registration/Images.h"
#include "package/versioninfo/KxVersionInfoUpdaterAction.h"

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

// Older projects know some of these properties; the action publishes the first three.
void RegisterPropertyEditors() {
  const auto edit = [](std::u16string_view property, const TKxPropertyEditorClass& editor) {
    ActionService().RegisterPropertyEditor(TKxPropertyKind::String, TKxVSDotNetAction::Class(), property,
                                           editor);
  };
  edit(u"Solution", TSolutionEditor::Class());
  edit(u"SolutionConfiguration", TSolutionEditor::Class());
  edit(u"AssemblyInfo", TShowActionPropertiesEditor::Class());
  edit(u"Win32VersionInfo", TShowActionPropertiesEditor::Class());
  edit(u"NSolution", TSolutionEditor::Class());
  edit(u"NSolutionConfiguration", TSolutionEditor::Class());
}

void RegisterPages(const TKxActionClass& action, std::initializer_list<const TKxPageClass*> pages) {
  ActionService().RegisterPropertyPages(action, pages);
}

void RegisterPropertyPages() {
  RegisterPages(TKxVSDotNetAction::Class(),
                {&TVSDotNetProjectFrame::Class(), &TVSDotNetPathsFrame::Class(),
                 &TVSDotNetBuildFrame::Class(), &TVSDotNetAssemblyFrame::Class(),
                 &TVC7VersionInfoFrame::Class(), &TVSDotNetWebProjectLocationFrame::Class()});
  RegisterPages(TKxVSSolutionIterator::Class(), {&TSolutionIteratorFrame::Class()});
  OptionsService().RegisterOptionsPage(TVSDotNetOptions::Class(), TVSDotNetOptionsFrame::Class());
  RegisterPages(TKxMSTestAction::Class(),
                {&TMSTestFrame::Class(), &TMSTestSettingsFrame::Class(), &TMSTestPublishFrame::Class()});
  RegisterPropertyPage(); // that of the version info updater
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
  RegisterPropertyEditors();
  RegisterPropertyPages();
  RegisterScriptConstants();
}

} // namespace kx
