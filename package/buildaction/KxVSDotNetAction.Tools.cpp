#include "package/buildaction/KxVSDotNetAction.h"

#include "foundation/platform/Files.h"
#include "foundation/text/WindowsPath.h"
#include "package/buildaction/KxVSDotNetOptions.h"

namespace kx {

namespace {

// As the host's framework information knows it; empty for a version without MSBuild.
std::u16string NetFrameworkOf(TVSDotNetVersion version) {
  const std::u16string_view framework = FrameworkOf(version);
  return framework.empty() ? std::u16string() : u"v" + std::u16string(framework);
}

std::u16string MSBuildOf(TVSDotNetVersion version) {
  const std::u16string framework = NetFrameworkOf(version);
  if (framework.empty()) return {};
  const auto folder = KxDotNetInfo().GetFrameworkDirectory(framework);
  return folder ? text::IncludeTrailingPathDelimiter(*folder) + u"MSBuild.exe" : std::u16string();
}

} // namespace

std::u16string TKxCustomVSDotNetAction::GetExecutable(bool useMSBuild) {
  if (useMSBuild) return MSBuildOf(solution_.VStudioVersion);
  const auto* options = VSDotNetOptions();
  if (options == nullptr) return {};
  std::u16string folder;
  if (!TryExpandExpression(u"devenv.com location", options->GetDevEnvLocation(solution_.VStudioVersion),
                           false, folder))
    return {};
  return folder.empty() ? std::u16string() : text::IncludeTrailingPathDelimiter(folder) + u"devenv.com";
}

std::optional<std::u16string> TKxCustomVSDotNetAction::ForeseeExecutable(bool useMSBuild) {
  if (useMSBuild) return MSBuildOf(solution_.VStudioVersion);
  const auto* options = VSDotNetOptions();
  if (options == nullptr) return u"";
  auto folder = ForeseeExpression(options->GetDevEnvLocation(solution_.VStudioVersion));
  if (!folder || folder->empty()) return folder;
  return text::IncludeTrailingPathDelimiter(*folder) + u"devenv.com";
}

std::u16string TKxCustomVSDotNetAction::HowToFindTool(bool useMSBuild) const {
  const std::u16string framework = NetFrameworkOf(solution_.VStudioVersion);
  const std::u16string option = useMSBuild ? (framework.empty() ? framework : u"DotNetFramework." + framework)
                                           : TVSDotNetOptions::GetLocationOption(solution_.VStudioVersion);
  if (option.empty()) return {};
  return u"The option " + option + u" names no folder of " + (useMSBuild ? u"MSBuild.exe" : u"devenv.com") +
         u". Set it: kxhost options set " + option + u" FOLDER";
}

void TKxCustomVSDotNetAction::ExplainMissingTool(bool useMSBuild) {
  if (const auto advice = HowToFindTool(useMSBuild); !advice.empty())
    SendMessage(u"Warning : " + advice, TStatusTag::stWarning);
}

bool TKxCustomVSDotNetAction::VerifyExecutable(bool useMSBuild) {
  const std::u16string executable = GetExecutable(useMSBuild);
  if (executable.empty()) {
    SendMessage(useMSBuild ? u".NET Framework not found."
                           : u"Path to Visual Studio installation not set in Options.",
                TStatusTag::stError);
    ExplainMissingTool(useMSBuild);
    return false;
  }
  if (!platform::FileExists(executable)) throw EFailAction(u"Executable not found : " + executable);
  return true;
}

bool TKxCustomVSDotNetAction::Validate(IKxActionValidationError& errors) {
  bool valid = TKxMultiExecAction::Validate(errors);
  if (solution_.Solution.empty()) {
    errors.Add(u"Solution file", u"A solution file has not been set");
    valid = false;
  }
  if (!GetExecutable(UsingMSBuild()).empty()) return valid;
  ExplainMissingTool(UsingMSBuild());
  if (UsingMSBuild()) {
    errors.Add(u".NET Framework Settings", u"The selected version of the .NET Framework was not found.");
  } else {
    errors.Add(u"VisualStudio.NET Options", u"Path to devenv.com has not been set", VSDotNetOptions());
  }
  return false;
}

} // namespace kx
