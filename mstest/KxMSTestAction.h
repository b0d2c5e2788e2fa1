// The action MSTEST: runs MSTest.exe on test containers or on a test metadata file, publishes the results to
// a Team Build server where that is asked for, and reports them to the host.
#pragma once

#include "host/ProcessActions.h"
#include "mstest/TestResultsFile.h"
#include "solution/VSNETSLN.h"

#include <memory>
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

// How to run it.
struct TMSTestRunSettings {
  std::u16string ConfigFileName;
  std::u16string OutputFileName; // empty: a temporary file
  TVSDotNetVersion VisualStudioVer = TVSDotNetVersion::vs2005;
  bool UseStandaloneMSTest = false;
  bool ShowBanner = false;
  std::u16string StartingDirectory; // empty: the folder of what is tested
};

class TKxMSTestAction : public TKxExecuteAbstractAction {
public:
  using TReadResults = TKxArrayOfMSTestResult (*)(std::u16string_view fileName);

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

protected:
  std::u16string GetExecutable() override; // empty when the tool's folder is not known
  std::u16string GetStartingDir() override;
  bool GetCommandLine(ICommandLineBuilder& builder) override;
  // The exit code alone decides, unless the results cannot be interpreted.
  bool InterpretResult(int exitCode) override;

private:
  std::u16string ToolFolder() const;

  // The parts of the command line, in its order. False: an expression could not be expanded.
  bool AddTestInput(ICommandLineBuilder& builder);
  bool AddResultsFile(ICommandLineBuilder& builder);
  bool AddRunConfiguration(ICommandLineBuilder& builder);
  bool AddTestLists(ICommandLineBuilder& builder);
  bool AddTests(ICommandLineBuilder& builder);
  bool GetPublishArguments(ICommandLineBuilder& builder);

  bool FindTeamBuild(TTeamBuild& team);   // from the variables of Team Build; True when all are there
  bool ExpandTeamBuild(TTeamBuild& team); // from the action's own settings

  void SendResults(const TKxUnitTestRun& run);

  TReadResults readResults_;
  TMSTestInput input_;
  TMSTestRunSettings run_;
  TMSTestPublishMode publishMode_ = TMSTestPublishMode::pbAuto;
  TTeamBuild team_;

  // Of the last command line.
  std::u16string effectiveResultsFile_;
  bool resultsFileIsTemporary_ = false;
  bool publishedToTeamBuild_ = false;
};

} // namespace kx
