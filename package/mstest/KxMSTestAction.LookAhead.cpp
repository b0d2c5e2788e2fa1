#include "package/mstest/KxMSTestAction.h"
#include "contract/LookAhead.h"
#include "foundation/platform/Files.h"
#include "foundation/text/WindowsPath.h"
#include "package/buildaction/KxVSDotNetOptions.h"

namespace kx {

// A text that is empty as it is written is found by Validate.
void TKxMSTestAction::LookAhead(IKxActionValidationError& errors) {
  if (const std::u16string tool = GetExecutable(); !tool.empty() && !platform::FileExists(tool))
    errors.Add(run_.UseStandaloneMSTest ? u"Standalone MSTest Path" : u"VisualStudio.NET Options",
               u"There is no " + tool + u".", VSDotNetOptions());
  if (input_.UseMetadataFile) {
    if (!input_.MetadataFile.empty()) LookForValue(errors, u"Metadata File", input_.MetadataFile);
    LookForFile(errors, u"Metadata File", input_.MetadataFile);
    if (input_.SpecifyTestList) LookForValue(errors, u"Test List", input_.TestList);
  } else if (!input_.AssemblyFileName.empty()) {
    LookForValue(errors, u"Assembly Filename", input_.AssemblyFileName);
    LookForContainers(errors);
  }
  LookForFolder(errors);
  if (input_.SpecifyTests) LookForValue(errors, u"Tests", input_.Tests);
  LookForFile(errors, u"Run Configuration File", run_.ConfigFileName);
  if (publishMode_ == TMSTestPublishMode::pbSpecify) LookForTeamBuild(errors);
}

void TKxMSTestAction::AddForeseen(std::u16string_view text, text::TStringList& files) {
  const auto file = ForeseeExpression(text);
  if (file && !file->empty()) files.Add(FullProjectPath(*file));
}

void TKxMSTestAction::GetFilesToWrite(text::TStringList& files) {
  AddForeseen(run_.OutputFileName, files);
}

void TKxMSTestAction::GetFilesToRead(text::TStringList& files) {
  AddForeseen(run_.ConfigFileName, files);
  if (input_.UseMetadataFile) return AddForeseen(input_.MetadataFile, files);
  if (const auto containers = ForeseeExpression(input_.AssemblyFileName))
    for (const auto& container : SplitTestContainers(*containers))
      if (!container.empty()) files.Add(FullProjectPath(container));
}

void TKxMSTestAction::GetRequirements(text::TStringList& words) const {
  words.Add(u"mstest");
}

void TKxMSTestAction::LookForFile(IKxActionValidationError& errors, std::u16string_view page,
                                  std::u16string_view text) {
  const auto file = ForeseeExpression(text);
  if (!file || file->empty()) return;
  if (const std::u16string full = FullProjectPath(*file); !platform::FileExists(full))
    errors.Add(page, u"There is no file " + full + u".");
}

void TKxMSTestAction::LookForFolder(IKxActionValidationError& errors) {
  const auto* run = dynamic_cast<const IKxForeseenRun*>(&errors);
  const auto folder = ForeseeExpression(run_.StartingDirectory);
  if (run == nullptr || run->MayMakeFilesBefore() || !folder || folder->empty()) return;
  if (const std::u16string full = FullProjectPath(*folder); !platform::DirectoryExists(full))
    errors.Add(u"Starting Directory", u"There is no folder " + full + u".");
}

// Where MSTest would look: from the folder in which it runs, or from the project's.
void TKxMSTestAction::LookForContainers(IKxActionValidationError& errors) {
  const auto* run = dynamic_cast<const IKxForeseenRun*>(&errors);
  const auto containers = ForeseeExpression(input_.AssemblyFileName);
  const auto folder = ForeseeExpression(run_.StartingDirectory);
  if (run == nullptr || run->MayMakeFilesBefore() || !containers || !folder) return;
  for (const auto& container : SplitTestContainers(*containers)) {
    const std::u16string full = FullProjectPath(container);
    if (container.empty() || platform::FileExists(full)) continue;
    if (!platform::FileExists(text::ExpandPath(container, FullProjectPath(*folder))))
      errors.Add(u"Assembly Filename", u"There is no file " + full + u".");
  }
}

void TKxMSTestAction::LookForValue(IKxActionValidationError& errors, std::u16string_view page,
                                   std::u16string_view text) {
  if (const auto value = ForeseeExpression(text); value && value->empty())
    errors.Add(page, u"A value is required.");
}

} // namespace kx
