#include "package/mstest/KxMSTestAction.h"

#include "foundation/text/WindowsPath.h"
#include "package/buildaction/KxVSDotNetOptions.h"

#include <algorithm>

namespace kx {

TKxMSTestAction::TKxMSTestAction(TReadResults readResults) : readResults_(readResults) {
  // Earlier versions of Visual Studio have no MSTest.
  if (const auto* options = VSDotNetOptions())
    run_.VisualStudioVer = std::max(options->GetDefaultVSVersion(), TVSDotNetVersion::vs2005);
  team_.Platform = u"Any CPU";
  team_.Flavor = u"Tandemor";
}

const TKxActionClass& TKxMSTestAction::Class() {
  static constexpr TKxActionClass actionClass{u"TKxMSTestAction", []() -> std::unique_ptr<TCustomKxAction> {
                                                return std::make_unique<TKxMSTestAction>();
                                              }};
  return actionClass;
}

std::u16string TKxMSTestAction::GetFormattedDescription() const {
  const auto& tested = input_.UseMetadataFile ? input_.MetadataFile : input_.AssemblyFileName;
  return GetActionName() + u" [ " + tested + u" ]";
}

std::u16string TKxMSTestAction::ToolFolder() const {
  const auto* options = VSDotNetOptions();
  if (options == nullptr) return {};
  return run_.UseStandaloneMSTest ? options->GetStandaloneMSTestDir()
                                  : options->GetDevEnvLocation(run_.VisualStudioVer);
}

std::u16string TKxMSTestAction::GetExecutable() {
  const std::u16string folder = ToolFolder();
  return folder.empty() ? folder : text::IncludeTrailingPathDelimiter(folder) + u"MSTest.exe";
}

bool TKxMSTestAction::Validate(IKxActionValidationError& errors) {
  bool valid = TKxExecuteAbstractAction::Validate(errors);
  const auto refuse = [&](std::u16string_view page, std::u16string_view message,
                          TKxOptionsObject* options = nullptr) {
    errors.Add(page, message, options);
    valid = false;
  };
  if (ToolFolder().empty() && run_.UseStandaloneMSTest) {
    refuse(u"Standalone MSTest Path", u"No path to a standalone MSTest installation was found",
           VSDotNetOptions());
  } else if (ToolFolder().empty()) {
    refuse(u"VisualStudio.NET Options", u"Path to " + GetVSName(run_.VisualStudioVer) + u" not set",
           VSDotNetOptions());
  }
  if (input_.UseMetadataFile && input_.MetadataFile.empty())
    refuse(u"Metadata File", u"A metadata file must be specified.");
  if (!input_.UseMetadataFile && input_.AssemblyFileName.empty())
    refuse(u"Assembly Filename", u"Assembly Filename is blank");
  return valid;
}

} // namespace kx
