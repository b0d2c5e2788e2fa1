// Runs the actions of a project: the embedded host as the actions see it.
#pragma once

#include "program/runner/Events.h"
#include "program/runner/Expressions.h"
#include "program/runner/Project.h"
#include "program/runner/SecretMask.h"
#include "program/runner/Validation.h"
#include "program/runner/Variables.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

class TProjectFile;
class TRunEngine;

struct TRunSettings {
  std::vector<TProjectVariable> Variables; // of the command line, before those of the project
  std::u16string KeyFile;                  // holds the key of stored secrets where the system has none
  bool DryRun = false;      // processes are not started, and changes of files are shown instead of made
  TRuleSettings Rules = {}; // of the command line, before those of the project
  std::u16string CommandLine = {};           // of the program, for the report
  std::shared_ptr<TSecretMask> Secrets = {}; // what is masked beside the secrets of the actions; may be null
};

// Which of a project's actions a run is of, and how it takes their needs.
struct TRunChoice {
  // Places in TProject::Actions(), ascending; the others are not run and do not appear. Nothing: all of them.
  std::optional<std::vector<std::size_t>> Only = {};
  int OnlyPass = 0;          // of the loops in Only: the one pass that is run, from 1; 0: all of them
  bool WithoutNeeds = false; // whoever runs this has seen to them: the order is that of the file
  bool KeepGoing = false;    // a failure holds up only what needs it
  bool NumbersAreCounted =
      false; // CountUp has done it, here or in another process: the run counts nothing up
};

// Owns the project, since its actions are attached to this host. Fill Project() (by hand or by TProjectFile),
// then run it, any number of times. One thread; only the stop signal may be raised from elsewhere.
class TProjectRunner : public IKxActionHost {
public:
  // The registry and the signal outlive the runner.
  TProjectRunner(const TServiceRegistry& services, TKxEvent& stop, TRunSettings settings);
  ~TProjectRunner() override;

  TProject& Project();
  void Choose(TRunChoice choice);    // for the runs from now on
  void AddSink(IRunEventSink& sink); // outlives the runner, or is removed
  void RemoveSink(IRunEventSink& sink);
  // Called during a run, on its thread, with each thing that is wrong and its place among all of the report,
  // when it comes, comes again or gets a step, before the event that it is of. It has no fingerprint yet.
  void WhenFound(std::function<void(std::size_t place, TFinding finding)> onFinding);
  // What actions count up is stored there before they use it (not in a dry run); without it in memory only.
  void StoreIn(TProjectFile& file); // outlives the runner

  // Everything that can be found wrong without running (ValidateProject). Runs nothing, raises nothing.
  std::vector<TValidationEntry> Validate();
  // The files that the actions would change, as far as it can be told beforehand.
  text::TStringList FilesToChange() const;
  // Calls `look` while the loop's variable has this value, as in one of its passes.
  void InPass(const TKxBaseIterator& loop, std::u16string_view value, const std::function<void()>& look);
  // What stands in the way of the files that the actions would change, as far as it can be told beforehand.
  std::vector<TValidationNote> CheckFilesToChange();

  // Counts up and stores what a run would, once for each action that its settings (Only) and its condition
  // let run. For runs whose actions have no order of their own; Run calls it for them itself. Raises
  // EKxException when the numbers cannot be stored.
  void CountUp();
  bool HasUnstoredNumbers() const; // counted up, and in no file (StoreIn) for other processes to read

  // Runs the actions in the order that their needs and the file give them. Each is asked for its settings
  // first; what it finds wrong fails it, and it is not executed. The first action that fails ends the run,
  // unless the project says otherwise (TOnFailure). A stop request made before this call is forgotten; one
  // made during it ends the current action, and nothing more is started.
  TRunReport Run();

  void SendMessage(TCustomKxAction& action, std::u16string_view text, TStatusTag status) override;
  void StartMessageGroup(TCustomKxAction& action, std::u16string_view title, TMessageGroupType type,
                         TStatusTag status) override;
  void EndMessageGroup(TCustomKxAction& action, std::optional<TStatusTag> status) override;
  void SendMetric(TCustomKxAction& action, const TKxMetric& metric) override;
  void StartConfiguration(TCustomKxAction& action, std::u16string_view name) override;
  void EndConfiguration(TCustomKxAction& action, TKxOutcome outcome) override;
  void StartProject(TCustomKxAction& action, std::u16string_view file) override;
  void EndProject(TCustomKxAction& action, std::u16string_view file, bool succeeded) override;
  void ReportBreach(TCustomKxAction& action, std::u16string_view rule, std::u16string_view message) override;
  std::u16string Expand(TCustomKxAction& action, std::u16string_view text) override;
  std::optional<std::u16string> GetVariable(std::u16string_view name) override;
  void SetVariable(std::u16string_view name, std::u16string_view value) override;
  IPropertySetService& PropertySets() override;
  std::u16string EncryptString(std::u16string_view clear) override;
  void ChangeStored(TCustomKxAction& action, std::span<const std::u16string_view> properties,
                    const std::function<void()>& change) override;
  std::u16string DecryptString(std::u16string_view secret) override;
  std::shared_ptr<IKxProcess> NewProcess(TCustomKxAction& action) override;
  const TKxEvent& Stop() const override;
  bool RunChildren(TKxBaseIterator& iterator) override;
  bool IsValidating() const override;

private:
  std::unique_ptr<TRunEngine> engine_;
  bool validating_ = false;
};

} // namespace kx
