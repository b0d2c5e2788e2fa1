#include "package/mstest/KxMSTestAction.h"
#include "contract/FileUpdates.h"
#include "foundation/platform/Files.h"
#include "foundation/text/WindowsPath.h"

namespace kx {

bool TKxMSTestAction::GetStartingDir(std::u16string& folder) {
  if (run_.StartingDirectory.empty()) {
    folder = FolderOfTested();
  } else if (!TryExpandExpression(u"Starting Directory", run_.StartingDirectory, false, folder)) {
    return false;
  }
  workingFolder_ = FullProjectPath(folder);
  return true;
}

// A folder that is not there stops nothing: MSTest itself says best which file it does not find.
std::u16string TKxMSTestAction::FolderOfTested() {
  std::u16string text;
  text::TStringList files;
  if (input_.UseMetadataFile) {
    if (!TryExpandExpression(u"Metadata File", input_.MetadataFile, false, text)) return {};
    files.Add(text);
  } else {
    if (!TryExpandExpression(u"Assembly File", input_.AssemblyFileName, false, text)) return {};
    // Semicolons here, bars on the command line: so it has always been. Where that names no folder, the first
    // container does.
    files.SetDelimitedText(text, u';');
    files = {files[0], SplitTestContainers(text)[0]};
  }
  for (const auto& file : files)
    if (std::u16string folder = text::ExtractFilePath(file);
        platform::DirectoryExists(FullProjectPath(folder)))
      return folder;
  if (!FileUpdates().IsDryRun()) // which may show what a build would make first
    SendMessage(u"Warning : there is no folder " +
                    FullProjectPath(text::ExtractFilePath(files[files.Count() - 1])) + u"; MSTest runs in " +
                    FullProjectPath(u"") + u".",
                TStatusTag::stWarning);
  return {};
}

// What the command line says of a file that a property names: what the property says. MSTest sees a relative
// path from the folder in which it runs; where the file is not there, but in the project's folder, it gets
// the full path.
std::u16string TKxMSTestAction::AsToolSees(const std::u16string& file) {
  const std::u16string full = FullProjectPath(file);
  const bool isThere = platform::FileExists(text::ExpandPath(file, workingFolder_));
  return isThere || !platform::FileExists(full) ? file : full;
}

} // namespace kx
