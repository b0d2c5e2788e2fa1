// The action MSTEST: runs MSTest.exe on test containers or on a test metadata file, publishes the results to
// a Team Build server where that is asked for, and reports them to the host.
#pragma once

#include "contract/ProcessActions.h"
#include "foundation/platform/FileWatch.h"
#include "foundation/platform/PrivateFolder.h"
#include "foundation/text/StringList.h"
#include "package/mstest/TestResultsFile.h"
#include "package/solution/VSNETSLN.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kx {

// Whether results go to a Team Build server: never; when the project runs under Team Build; always, to the
// one that the action names.
enum class TMSTestPublishMode : std::int32_t { pbNone, pbAuto, pbSpecify };
const TKxEnumeration& MSTestPublishModeEnumeration();

// The build that results are published to.
struct TTeamBuild {
  std::u16string Server;
  std::u16string Project;
  std::u16string BuildId;
  std::u16string Platform;
  std::u16string Flavor;
};

// What to test. Texts may hold expressions.
struct TMSTestInput {
  std::u16string AssemblyFileName; // one a line, or separated by bars
  bool UseMetadataFile = false;
  std::u16string MetadataFile;
  bool SpecifyTestList = false;
  std::u16string TestList; // separated by commas, as the next
  bool SpecifyTests = false;
  std::u16string Tests;
};

// The test containers that an expanded text names, as the command line has them. Where it has line breaks,
// each line is one, whatever blanks it holds; otherwise bars and blanks outside quotation marks separate.
text::TStringList SplitTestContainers(std::u16string_view text);

// How to run it.
struct TMSTestRunSettings {
  std::u16string ConfigFileName;
  std::u16string OutputFileName; // empty: a temporary file
  TVSDotNetVersion VisualStudioVer = TVSDotNetVersion::vs2005;
  bool UseStandaloneMSTest = false;
  bool ShowBanner = false;
  std::u16string StartingDirectory; // empty: the folder of what is tested
};

// Relative paths mean the project's folder, also where MSTest runs in another: see AsToolSees.
class TKxMSTestAction : public TKxExecuteAbstractAction {
public:
  using TReadResults = TKxArrayOfMSTestResult (*)(std::u16string_view fileName, std::u16string& reason);

  TKxMSTestAction() : TKxMSTestAction(InterpretMSTestOutput) {}
  explicit TKxMSTestAction(TReadResults readResults);
  static const TKxActionClass& Class();

  TMSTestInput& Input() { return input_; }
  TMSTestRunSettings& RunSettings() { return run_; }
  TMSTestPublishMode& PublishMode() { return publishMode_; }
  TTeamBuild& Team() { return team_; } // for pbSpecify

  const TKxPropertyTable& PublishedProperties() const override;
  std::u16string GetActionName() const override { return u"Run MSTest"; }
  std::u16string GetActionKeywords() const override { return u"VisualStudio VS.Net"; }
  std::u16string GetFormattedDescription() const override;
  std::u16string GetQuickHelpFilename() const override { return u"Plugins\\MSTest.html"; }
  int GetHelpTopicID() const override { return 3500; }
  bool Validate(IKxActionValidationError& errors) override;
  void LookAhead(IKxActionValidationError& errors) override;
  void GetFilesToRead(text::TStringList& files) override;
  void GetFilesToWrite(text::TStringList& files) override;
  void GetRequirements(text::TStringList& words) const override;
  bool Execute() override;

protected:
  std::u16string GetExecutable() override; // empty when the tool's folder is not known
  bool GetStartingDir(std::u16string& folder) override;
  bool GetCommandLine(ICommandLineBuilder& builder) override;
  // The exit code alone decides, unless the results cannot be interpreted. What speaks against it (no results
  // of this run, no tests, failed ones) is reported as a breach.
  bool InterpretResult(int exitCode) override;
  void InterpretStopped() override; // reports what there is

private:
  std::u16string ToolFolder() const;
  void AddForeseen(std::u16string_view text, text::TStringList& files);
  void LookForFile(IKxActionValidationError& errors, std::u16string_view page, std::u16string_view text);
  void LookForValue(IKxActionValidationError& errors, std::u16string_view page, std::u16string_view text);
  void LookForFolder(IKxActionValidationError& errors);
  void LookForContainers(IKxActionValidationError& errors);
  void LookForTeamBuild(IKxActionValidationError& errors);
  std::u16string FolderOfTested(); // empty: the project's
  std::u16string AsToolSees(const std::u16string& file);

  // The parts of the command line, in its order. False: an expression could not be expanded.
  bool AddTestInput(ICommandLineBuilder& builder);
  bool AddResultsFile(ICommandLineBuilder& builder);
  const std::u16string& NewTemporaryFolder();
  bool AddRunConfiguration(ICommandLineBuilder& builder);
  bool AddTestLists(ICommandLineBuilder& builder);
  bool AddTests(ICommandLineBuilder& builder);
  bool GetPublishArguments(ICommandLineBuilder& builder);

  bool FindTeamBuild(TTeamBuild& team);   // from the variables of Team Build; True when all are there
  bool ExpandTeamBuild(TTeamBuild& team); // from the action's own settings

  // The results that this run has written; none, and the reason, where there are none to be read. A temporary
  // file is deleted.
  TKxArrayOfMSTestResult TakeResults(std::u16string& problem);
  TKxUnitTestRun SendResults(TKxArrayOfMSTestResult results);
  void SendCounts(const TKxUnitTestRun& run);
  void CheckVerdict(const TKxUnitTestRun& run, int exitCode);

  TReadResults readResults_;
  TMSTestInput input_;
  TMSTestRunSettings run_;
  TMSTestPublishMode publishMode_ = TMSTestPublishMode::pbAuto;
  TTeamBuild team_;

  // Of the last command line.
  std::u16string workingFolder_;                           // the full path of the folder in which MSTest runs
  std::u16string effectiveResultsFile_;                    // its full path
  std::optional<platform::FileWatch> resultsWatch_;        // of a file that the user named, while MSTest runs
  std::optional<platform::PrivateFolder> temporaryFolder_; // of the results file, when the user named none
  bool publishedToTeamBuild_ = false;
};

} // namespace kx
