// Runs the actions of a project: the embedded host as the actions see it.
#pragma once

#include "runner/Events.h"
#include "runner/Expressions.h"
#include "runner/Project.h"
#include "runner/Variables.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

struct TRunSettings {
  std::vector<TProjectVariable> Variables; // of the command line, before those of the project
  std::u16string KeyFile;                  // holds the key of stored secrets where the system has none
  bool DryRun = false; // processes are not started, and changes of files are shown instead of made
};

struct TRunReport {
  bool Succeeded = false;
  bool Stopped = false;                    // a stop request came before the end
  std::vector<TActionResult> Actions = {}; // in the order in which they ended
};

// A file that an action would change when it is run, but could not.
struct TValidationNote {
  std::u16string Action; // its name in the project
  std::u16string Message;
};

struct TValidationEntry {
  std::u16string Action; // its name in the project
  std::u16string Page;
  std::u16string Message;
  const TKxOptionsClass* Options = nullptr; // the options that mend it, when the action knows
  const TActionNode* Node = nullptr;        // the action
};

// Owns the project, since its actions are attached to this host. Fill Project() (by hand or by TProjectFile),
// then run it, any number of times. One thread; only the stop signal may be raised from elsewhere.
class TProjectRunner : public IKxActionHost {
public:
  // The registry and the signal outlive the runner.
  TProjectRunner(const TServiceRegistry& services, TKxEvent& stop, TRunSettings settings);
  ~TProjectRunner() override;

  TProject& Project();
  void AddSink(IRunEventSink& sink); // outlives the runner

  // Asks every action, nested ones too; runs nothing. Raises nothing: an action that throws has an entry
  // more.
  std::vector<TValidationEntry> Validate();
  // What stands in the way of the files that the actions would change, as far as it can be told beforehand.
  std::vector<TValidationNote> CheckFilesToChange();

  // Runs the actions in order. The first that fails ends the run, unless it says ContinueOnError: then the
  // run goes on, and its result stays True. A stop request made before this call is forgotten; one made
  // during it ends the current action, and nothing more is started.
  TRunReport Run();

  void SendMessage(TCustomKxAction& action, std::u16string_view text, TStatusTag status) override;
  void StartMessageGroup(TCustomKxAction& action, std::u16string_view title, TMessageGroupType type,
                         TStatusTag status) override;
  void EndMessageGroup(TCustomKxAction& action, std::optional<TStatusTag> status) override;
  void SendMetric(TCustomKxAction& action, const TKxMetric& metric) override;
  void StartConfiguration(TCustomKxAction& action, std::u16string_view name) override;
  void EndConfiguration(TCustomKxAction& action, TKxOutcome outcome) override;
  void ReportBreach(TCustomKxAction& action, std::u16string_view rule, std::u16string_view message) override;
  std::u16string Expand(TCustomKxAction& action, std::u16string_view text) override;
  std::optional<std::u16string> GetVariable(std::u16string_view name) override;
  void SetVariable(std::u16string_view name, std::u16string_view value) override;
  IPropertySetService& PropertySets() override;
  std::u16string EncryptString(std::u16string_view clear) override;
  std::u16string DecryptString(std::u16string_view secret) override;
  std::shared_ptr<IKxProcess> NewProcess(TCustomKxAction& action) override;
  const TKxEvent& Stop() const override;
  bool RunChildren(TKxBaseIterator& iterator) override;
  bool IsValidating() const override;

private:
  struct TState;
  std::unique_ptr<TState> state_;
};

} // namespace kx
