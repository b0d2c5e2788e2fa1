// A Build action over a small real solution, fake tools and the recording host.
#pragma once

#include "contract/Utilities.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "package/buildaction/KxVSDotNetAction.h"
#include "package/buildaction/KxVSDotNetOptions.h"
#include "tests/support/Failure.h"
#include "tests/support/Properties.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kx::tests {

// App needs Lib and is named before it; projects are built in Debug only.
inline constexpr const char* SmallSolution = R"(
Microsoft Visual Studio Solution File, Format Version 10.00
# Visual Studio 2008
Project("{FAE04EC0-301F-11D3-BF4B-00C04F79EFBC}") = "App", "App\App.csproj", "{11111111-1111-1111-1111-111111111111}"
	ProjectSection(ProjectDependencies) = postProject
		{22222222-2222-2222-2222-222222222222} = {22222222-2222-2222-2222-222222222222}
	EndProjectSection
EndProject
Project("{FAE04EC0-301F-11D3-BF4B-00C04F79EFBC}") = "Lib", "Lib\Lib.csproj", "{22222222-2222-2222-2222-222222222222}"
EndProject
Project("{54435603-DBB4-11D2-8724-00A0C9A8B90C}") = "Installer", "Setup\Setup.vdproj", "{33333333-3333-3333-3333-333333333333}"
EndProject
Global
	GlobalSection(SolutionConfigurationPlatforms) = preSolution
		Debug|Any CPU = Debug|Any CPU
		Release|Any CPU = Release|Any CPU
	EndGlobalSection
	GlobalSection(ProjectConfigurationPlatforms) = postSolution
		{11111111-1111-1111-1111-111111111111}.Debug|Any CPU.ActiveCfg = Debug|Any CPU
		{22222222-2222-2222-2222-222222222222}.Debug|Any CPU.ActiveCfg = Debug|x86
		{33333333-3333-3333-3333-333333333333}.Debug|Any CPU.ActiveCfg = Debug
	EndGlobalSection
EndGlobal
)";
inline std::string With(std::u16string_view before, std::u16string_view after) {
  return text::ToUtf8(text::ReplaceAll(text::FromUtf8(SmallSolution), before, after));
}
// One identifier for two projects.
inline std::string SolutionWithTwins() {
  return With(u"{33333333-3333-3333-3333-333333333333}", u"{22222222-2222-2222-2222-222222222222}");
}
inline const std::u16string LibId = u"{22222222-2222-2222-2222-222222222222}";

class TBuildActionTest : public testing::Test {
protected:
  TBuildActionTest() {
    folder_.Write("App.sln", SmallSolution);
    folder_.Write("App/App.csproj", "<Project Condition=\"'Debug|AnyCPU'\"/>");
    folder_.Write("Lib/Lib.csproj", "<Project/>");
    for (const auto* name : {"Setup/Setup.vdproj", "MSBuild.exe", "devenv.com"})
      folder_.Write(name, "");
    RegisterOptions();
    services_.Frameworks[u"v3.5"] = folder_.Path();
    VSDotNetOptions()->SetDevEnv2008Location(folder_.Path());
    host_.Variables[u"ProjectDir"] = folder_.Path();
    Begin();
  }
  // A new action with these settings besides its solution, and an empty log.
  void Begin(std::u16string_view settings = {}) {
    action_ = std::make_unique<TKxVSDotNetAction>();
    action_->Attach(host_);
    host_.ClearLog();
    Set(u"VStudioVersion=vs2008&Solution=App.sln&SolutionConfiguration=debug|any cpu");
    Set(settings);
  }

  const TKxPublishedProperty& Row(std::u16string_view name) { return TPropertyTexts(*action_).Row(name); }
  void Set(std::u16string_view settings) { TPropertyTexts(*action_).Set(settings); }
  std::string Get(std::u16string_view name) { return TPropertyTexts(*action_).Get(name); }

  // The result, or the message of the exception that ended the action.
  std::string Execute() {
    bool succeeded = false;
    const std::string failure = FailureOf([&] { succeeded = action_->Execute(); });
    return !failure.empty() ? Plain(failure) : succeeded ? "succeeded" : "failed";
  }
  // Begins and executes: the log and the result.
  std::string Outcome(std::u16string_view settings, const std::vector<TPlayback>& playbacks = {}) {
    Begin(settings);
    for (const auto& playback : playbacks)
      host_.Play(playback);
    const std::string result = Execute();
    return Log() + result;
  }
  // The log as one text; the folders of this machine and of the program are DIR and BIN.
  std::string Log() {
    std::string text;
    for (const auto& line : host_.Log())
      text += line + "\n";
    return Plain(text);
  }
  std::string Plain(const std::string& text) const {
    const std::u16string plain = text::FromUtf8(folder_.Plain(text));
    return text::ToUtf8(text::ReplaceAll(plain, TPathUtils::GetAppPath(), u"BIN/"));
  }
  TTemporaryFolder folder_;
  TFakeServices services_;
  TRecordingHost host_;
  std::unique_ptr<TKxVSDotNetAction> action_;
};

} // namespace kx::tests
