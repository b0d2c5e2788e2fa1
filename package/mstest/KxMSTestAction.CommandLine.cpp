#include "package/mstest/KxMSTestAction.h"
#include "contract/FileUpdates.h"
#include "contract/Utilities.h"
#include "foundation/platform/Files.h"
#include "foundation/text/StringList.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

namespace kx {

namespace {

constexpr auto QuoteValue = TCommandLineOption::QuoteValue;

text::TStringList SplitDelimited(std::u16string_view text, char16_t delimiter) {
  text::TStringList items;
  items.SetDelimitedText(text, delimiter);
  return items;
}

// A list with line breaks becomes one of quoted items, so that each line keeps its blanks. Text without a
// line break is left as it is: an unquoted path with a blank in it has always been two containers.
std::u16string QuoteLines(std::u16string_view text) {
  if (text.find(u"\r\n") == std::u16string_view::npos) return std::u16string(text);
  std::u16string lines = text::ReplaceAll(text, u"\"", u"");
  lines = text::ReplaceAll(lines, u"|", u"\"|\"");
  return u'"' + text::ReplaceAll(lines, u"\r\n", u"\"|\"") + u'"';
}

} // namespace

text::TStringList SplitTestContainers(std::u16string_view text) {
  return SplitDelimited(QuoteLines(text), u'|');
}

bool TKxMSTestAction::GetCommandLine(ICommandLineBuilder& builder) {
  builder.Reset(0);
  if (!AddTestInput(builder) || !AddResultsFile(builder) || !AddRunConfiguration(builder) ||
      !AddTestLists(builder) || !AddTests(builder))
    return false;
  if (!run_.ShowBanner) builder.Add(u"/nologo", u"", TCommandLineOption::Plain);
  return GetPublishArguments(builder);
}

bool TKxMSTestAction::AddTestInput(ICommandLineBuilder& builder) {
  std::u16string files;
  if (input_.UseMetadataFile) {
    if (!TryExpandExpression(u"Test Metadata File", input_.MetadataFile, true, files)) return false;
    builder.Add(u"/testmetadata:", AsToolSees(files), QuoteValue);
    return true;
  }
  if (!TryExpandExpression(u"Test Container File", input_.AssemblyFileName, true, files)) return false;
  for (const auto& container : SplitTestContainers(files))
    if (!container.empty()) builder.Add(u"/testcontainer:", AsToolSees(container), QuoteValue);
  return true;
}

// MSTest leaves more beside its results than the file, and in a folder that everybody uses others would read
// them.
const std::u16string& TKxMSTestAction::NewTemporaryFolder() {
  auto folder = platform::PrivateFolder::Create();
  if (!folder) throw EKxException(folder.Message());
  temporaryFolder_ = *std::move(folder);
  return temporaryFolder_->Path();
}

bool TKxMSTestAction::AddResultsFile(ICommandLineBuilder& builder) {
  std::u16string file;
  if (!TryExpandExpression(u"Results File", run_.OutputFileName, false, file)) return false;
  temporaryFolder_.reset();
  if (file.empty()) {
    file = TFileInfo::GetTemporaryFileName(NewTemporaryFolder(), u"MSTRE");
    // MSTest does not write over a file; where this one stays, MSTest says so.
    static_cast<void>(platform::RemoveFile(file));
  }
  effectiveResultsFile_ = FullProjectPath(file);
  if (!temporaryFolder_ && !FileUpdates().IsDryRun()) resultsWatch_.emplace(effectiveResultsFile_);
  const bool sameForTool = text::ExpandPath(file, workingFolder_) == effectiveResultsFile_;
  builder.Add(u"/resultsfile:", sameForTool ? file : effectiveResultsFile_, QuoteValue);
  return true;
}

bool TKxMSTestAction::AddRunConfiguration(ICommandLineBuilder& builder) {
  std::u16string file;
  if (!TryExpandExpression(u"Run Configuration File", run_.ConfigFileName, false, file)) return false;
  if (!file.empty()) builder.Add(u"/runconfig:", AsToolSees(file), QuoteValue);
  return true;
}

bool TKxMSTestAction::AddTestLists(ICommandLineBuilder& builder) {
  if (!input_.UseMetadataFile || !input_.SpecifyTestList) return true;
  std::u16string lists;
  if (!TryExpandExpression(u"Test Lists", input_.TestList, true, lists)) return false;
  for (const auto& list : SplitDelimited(lists, u','))
    builder.Add(u"/testlist:", list, QuoteValue);
  return true;
}

bool TKxMSTestAction::AddTests(ICommandLineBuilder& builder) {
  if (!input_.SpecifyTests) return true;
  std::u16string tests;
  if (!TryExpandExpression(u"Test Names", input_.Tests, true, tests)) return false;
  for (const auto& test : SplitDelimited(tests, u','))
    builder.Add(u"/test:", test, QuoteValue);
  return true;
}

} // namespace kx
