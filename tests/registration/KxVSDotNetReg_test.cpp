#include "package/registration/KxVSDotNetReg.h"

#include "tests/support/RecordingHost.h"

#include <gmock/gmock.h>

namespace kx::tests {
namespace {

class TContext : public IKxRegistrationContext {
public:
  explicit TContext(bool design) : design_(design) {}
  bool HasDesignEnvironment() const override { return design_; }

private:
  bool design_;
};

TEST(Registration, AnnouncesEverythingInOrderAndConstantsOnlyToAnEditor) {
  const std::string always =
      "image DEVENV; image MSTEST; image VERSIONINFO; image SOLUTIONITERATOR; "
      "action DEVENV Compilers TKxVSDotNetAction; function TKxVSDotNetAction GetProjectID; "
      "function TKxVSDotNetAction GetProjectName; function TKxVSDotNetAction GetProjectPath; "
      "options DEVENV Compilers Visual Studio.Net; enumeration TVSDotNetVersion; "
      "action MSTEST Testing Tools TKxMSTestAction; "
      "action VERSIONINFO Compilers TKxVersionInfoUpdaterAction; "
      "action SOLUTIONITERATOR Compilers TKxVSSolutionIterator; ";
  const std::string forEditors =
      "editor TKxVSDotNetAction Solution TSolutionEditor; "
      "editor TKxVSDotNetAction SolutionConfiguration TSolutionEditor; "
      "editor TKxVSDotNetAction AssemblyInfo TShowActionPropertiesEditor; "
      "editor TKxVSDotNetAction Win32VersionInfo TShowActionPropertiesEditor; "
      "editor TKxVSDotNetAction NSolution TSolutionEditor; "
      "editor TKxVSDotNetAction NSolutionConfiguration TSolutionEditor; "
      "page TKxVSDotNetAction TVSDotNetProjectFrame; page TKxVSDotNetAction TVSDotNetPathsFrame; "
      "page TKxVSDotNetAction TVSDotNetBuildFrame; page TKxVSDotNetAction TVSDotNetAssemblyFrame; "
      "page TKxVSDotNetAction TVC7VersionInfoFrame; "
      "page TKxVSDotNetAction TVSDotNetWebProjectLocationFrame; "
      "page TKxVSSolutionIterator TSolutionIteratorFrame; "
      "options page Visual Studio.Net TVSDotNetOptionsFrame; page TKxMSTestAction TMSTestFrame; "
      "page TKxMSTestAction TMSTestSettingsFrame; page TKxMSTestAction TMSTestPublishFrame; "
      "page TKxVersionInfoUpdaterAction TKxVersionInfoUpdaterFrame; constant baBuild 0; "
      "constant baRebuild 1; constant baClean 2; constant baDeploy 3; ";
  for (const bool design : {false, true}) {
    TFakeServices services;
    RegisterVisualStudioDotNet(TContext(design));
    std::string registered;
    for (const auto& line : services.Registered)
      registered += line + "; ";
    EXPECT_EQ(registered, design ? always + forEditors : always);
  }
}

} // namespace
} // namespace kx::tests
