// The base of all actions, and the one interface through which an action reaches the host that runs it.
#pragma once

#include "contract/Process.h"
#include "contract/PropertySets.h"
#include "contract/PublishedProperties.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/StringList.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace kx {

class TCustomKxAction;
class TKxBaseIterator;
class TKxOptionsObject;

// The status of a message or group. The ordinals are part of the contract.
enum class TStatusTag { stNormal = 0, stSuccess = 1, stWarning = 2, stError = 3 };

enum class TMessageGroupType { mgtGeneral };

// A figure that an action reports. `Flag` is passed on to whoever listens; the package always sends False.
struct TKxMetric {
  std::u16string Category;
  std::u16string Name;
  std::variant<std::int64_t, std::u16string> Value;
  bool Flag = false;
};

// What became of one configuration of an execution.
enum class TKxOutcome { koSucceeded, koFailed, koNothingToDo };

// What a run has to show before it is called a success, by names that the user can set to error, warning or
// off.
namespace KxVerdictRules {
// No tool ran, or the tool says that it built nothing and found nothing up to date.
inline constexpr std::u16string_view NothingBuilt = u"nothing-built";
// Errors were counted although the tool ended with 0.
inline constexpr std::u16string_view ErrorsCounted = u"errors-counted";
inline constexpr std::u16string_view NoTests = u"no-tests";
// There is no results file that this run has written and that can be read.
inline constexpr std::u16string_view ResultsMissing = u"results-missing";
// The solution has no configuration of this name.
inline constexpr std::u16string_view NoConfiguration = u"no-configuration";
// A selection of projects that means none of the solution's, though something was to be done with them.
inline constexpr std::u16string_view EmptySelection = u"empty-selection";
// A loop without a pass.
inline constexpr std::u16string_view EmptyLoop = u"empty-loop";
} // namespace KxVerdictRules

// The running host, as an action sees it. Called on the thread that runs the action, except Stop.
class IKxActionHost {
public:
  virtual ~IKxActionHost() = default;

  // The log: messages stand in the innermost open group.
  virtual void SendMessage(TCustomKxAction& action, std::u16string_view text, TStatusTag status) = 0;
  virtual void StartMessageGroup(TCustomKxAction& action, std::u16string_view title, TMessageGroupType type,
                                 TStatusTag status) = 0;
  virtual void EndMessageGroup(TCustomKxAction& action, std::optional<TStatusTag> status) = 0;
  virtual void SendMetric(TCustomKxAction& action, const TKxMetric& metric) = 0;

  // The parts of an execution that the user is shown as rows of their own: what happens in between belongs to
  // `name` ("Release|Any CPU"). One at a time; one that is still open when the execution ends has failed.
  virtual void StartConfiguration(TCustomKxAction& action, std::u16string_view name) = 0;
  virtual void EndConfiguration(TCustomKxAction& action, TKxOutcome outcome) = 0;
  // Inside a configuration: what the tool says of projects, named by their files in the form that its
  // messages have ("Lib/Lib.csproj"). Side by side or within each other; one that several others need comes
  // several times.
  virtual void StartProject(TCustomKxAction& action, std::u16string_view file) = 0;
  virtual void EndProject(TCustomKxAction& action, std::u16string_view file, bool succeeded) = 0;
  // Something that speaks against calling this execution a success although Execute returns True. `rule` is a
  // name of KxVerdictRules; what follows from it is for the host to decide, and for the user to set.
  virtual void ReportBreach(TCustomKxAction& action, std::u16string_view rule,
                            std::u16string_view message) = 0;

  // Values. Expand raises EExpressionError with a text for the user.
  virtual std::u16string Expand(TCustomKxAction& action, std::u16string_view text) = 0;
  virtual std::optional<std::u16string> GetVariable(std::u16string_view name) = 0;
  virtual void SetVariable(std::u16string_view name, std::u16string_view value) = 0;
  virtual IPropertySetService& PropertySets() = 0;
  // The host's own protection of stored secrets. Decrypt gives empty text for what cannot be read on this
  // machine.
  virtual std::u16string EncryptString(std::u16string_view clear) = 0;
  virtual std::u16string DecryptString(std::u16string_view secret) = 0;

  // For numbers that an action counts up: `change` changes these stored properties of it from the values that
  // the project has by now, whoever has counted them meanwhile, and they are stored before this returns.
  // Raises EKxException when they cannot be: then they have the values of before, and must not be used.
  virtual void ChangeStored(TCustomKxAction& action, std::span<const std::u16string_view> properties,
                            const std::function<void()>& change) = 0;

  // Running.
  virtual std::shared_ptr<IKxProcess> NewProcess(TCustomKxAction& action) = 0;
  virtual const TKxEvent& Stop() const = 0; // raised once the user has asked the run to stop
  virtual bool RunChildren(TKxBaseIterator& iterator) = 0;
  virtual bool IsValidating() const = 0;
};

// Collects what an action finds wrong with its settings.
class IKxActionValidationError {
public:
  virtual ~IKxActionValidationError() = default;
  // `page` names the field or page; with `options` the host can offer the options page. Not owned.
  virtual void Add(std::u16string_view page, std::u16string_view message,
                   TKxOptionsObject* options = nullptr) = 0;
};

// Base of every action. Made by the host from a registered class, attached to the host at once, then loaded,
// run any number of times and destroyed by the host. An action is used on one thread; TerminateAction alone
// may come from another.
class TCustomKxAction : public TKxPersistent {
public:
  TCustomKxAction();
  ~TCustomKxAction() override;
  TCustomKxAction(const TCustomKxAction&) = delete;
  TCustomKxAction& operator=(const TCustomKxAction&) = delete;

  void Attach(IKxActionHost& host) { host_ = &host; } // the host outlives the action
  bool IsAttached() const { return host_ != nullptr; }

  // What the host asks of an action.
  virtual std::u16string GetActionName() const = 0; // the type's display name
  virtual std::u16string GetActionKeywords() const { return {}; }
  virtual std::u16string GetFormattedDescription() const { return GetDescription(); }
  virtual std::u16string GetQuickHelpFilename() const { return {}; }
  virtual int GetHelpTopicID() const { return 0; }
  virtual bool RequiresSync() const { return true; }
  virtual bool CanTerminate() const { return false; }
  virtual void TerminateAction() {}                        // from any thread
  virtual bool Validate(IKxActionValidationError& errors); // True when nothing was added
  // What a run would stumble over later although Validate accepts it: a missing file, a name that the
  // solution does not have. Changes nothing, logs nothing, raises nothing. What depends on values that only a
  // run has (ForeseeExpression) is passed over.
  virtual void LookAhead(IKxActionValidationError& /*errors*/) {}
  virtual bool Execute() = 0; // any exception fails the action too
  // Counts up and stores (ChangeStored) the numbers that Execute would; it counts nothing then. For runs in
  // which several actions count at the same time. Raises EKxException when they cannot be stored.
  virtual void CountUp() {}
  // The full paths of the user's files that Execute would change, as far as the settings tell; for looking
  // ahead, so nothing is logged. Never raises.
  virtual void GetFilesToChange(text::TStringList& /*files*/) {}
  // In the same way the full paths of what Execute reads to know what there is to do (solutions, projects,
  // lists of tests), and of what its tools write where the user says it (results).
  virtual void GetFilesToRead(text::TStringList& /*files*/) {}
  virtual void GetFilesToWrite(text::TStringList& /*files*/) {}
  // What a machine must have for Execute, in words that whoever keeps machines gives them: "vs2008",
  // "mstest". Never raises.
  virtual void GetRequirements(text::TStringList& /*words*/) const {}

  // Variables of the action's own; the names with a type ("NAME=btString") or a description behind them.
  virtual void CollectLocalVariables(text::TStringList& names, bool withTypes, bool withDescriptions) const;
  virtual bool GetLocalVariableValue(std::u16string_view name, std::u16string& value) const;
  // The action's own hook in the expansion: gets a reference as the user wrote it ("%NAME%", "$(NAME)") and
  // gives its value, or the text unchanged.
  virtual std::u16string ActionExpandExpression(std::u16string_view text) const {
    return std::u16string(text);
  }

  // What the project says about this action.
  std::u16string GetDescription() const; // the user's own, else the action's name
  void SetDescription(std::u16string_view description) { description_ = description; }
  bool IsDynamicProperty(std::u16string_view name) const { return dynamicProperties_.contains(name); }

  // What an action asks of the host.
  void SendMessage(std::u16string_view text, TStatusTag status = TStatusTag::stNormal);
  // Where a reader stopped, when the error knows it: its own message may say neither file nor line.
  void WarnOfPlace(const std::exception& error);
  void StartMessageGroup(std::u16string_view title, TMessageGroupType type = TMessageGroupType::mgtGeneral,
                         TStatusTag status = TStatusTag::stNormal);
  void EndMessageGroup(std::optional<TStatusTag> status = std::nullopt);
  void SendMetricInt(std::u16string_view category, std::u16string_view name, std::int64_t value,
                     bool flag = false);
  void SendMetricString(std::u16string_view category, std::u16string_view name, std::u16string_view value,
                        bool flag = false);
  void StartConfiguration(std::u16string_view name);
  void EndConfiguration(TKxOutcome outcome);
  void StartProject(std::u16string_view file);
  void EndProject(std::u16string_view file, bool succeeded);
  void ReportBreach(std::u16string_view rule, std::u16string_view message);
  std::u16string ExpandExpression(std::u16string_view text); // raises EExpressionError
  // Nothing for a text whose value only a run has (a loop variable), and for one that cannot be expanded,
  // which the host reports itself. Logs nothing.
  std::optional<std::u16string> ForeseeExpression(std::u16string_view text);
  // False, with the reason in the log under `label`, when the text cannot be expanded, or when the result is
  // empty although `required`. Never raises.
  bool TryExpandExpression(std::u16string_view label, std::u16string_view text, bool required,
                           std::u16string& result);
  std::u16string GetVariableValue(std::u16string_view name); // empty for an unknown name
  // The full path of what a property names: a relative one is seen from the project's folder, without a
  // project file from the current folder.
  std::u16string FullProjectPath(std::u16string_view path);
  IPropertySetService& GetPropertySetService();
  std::u16string EncryptString(std::u16string_view clear);
  std::u16string DecryptString(std::u16string_view secret) const;
  void ChangeStored(std::span<const std::u16string_view> properties, const std::function<void()>& change);
  bool IsValidating() const;
  void Sleep(std::uint32_t milliseconds); // ends early on a stop request

  // A dynamic property takes part in the host's property system while the action is edited.
  void RegisterDynamicProperty(std::u16string_view name);
  void UnRegisterDynamicProperty(std::u16string_view name);

protected:
  IKxActionHost& Host() const; // raises EKxException when the action is not attached

private:
  IKxActionHost* host_ = nullptr;
  std::u16string description_;
  std::set<std::u16string, std::less<>> dynamicProperties_;
};

// Opens a message group and closes it on every path: as an error unless Succeed or Close was called.
class TKxMessageGroup {
public:
  TKxMessageGroup(TCustomKxAction& action, std::u16string_view title);
  ~TKxMessageGroup();
  TKxMessageGroup(const TKxMessageGroup&) = delete;
  TKxMessageGroup& operator=(const TKxMessageGroup&) = delete;

  // Closes with success or error, and returns `succeeded`.
  bool Close(bool succeeded);
  void CloseNormal();

private:
  TCustomKxAction& action_;
  bool open_ = true;
};

// A type of action as it is registered. One static object a class; the host compares addresses.
struct TKxActionClass {
  std::u16string_view ClassName;
  std::unique_ptr<TCustomKxAction> (*Create)();
};

} // namespace kx
