// A host for tests: everything that an action sends is one list of lines, everything that it asks for can be
// set.
#pragma once

#include "host/Actions.h"
#include "host/Services.h"
#include "text/Text.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kx::tests {

// What a fake process plays back when it is run.
struct TPlayback {
  std::vector<std::u16string> StdOut = {};
  int ExitCode = 0;
  std::vector<std::u16string> StdErr = {};
  std::u16string Exception = {};     // when not empty: Run raises EKxException with it
  std::function<void()> During = {}; // called before the output
};

// What an action had run.
struct TRun {
  std::string Executable;
  std::string Parameters;
  std::string Directory;
};

class TFakePropertySet : public IPropertySet {
public:
  TFakePropertySet(std::u16string name, TPropertySetKind kind,
                   std::map<std::u16string, std::u16string, text::IgnoreCaseLess> values);
  std::u16string GetName() const override { return name_; }
  TPropertySetKind GetKind() const override { return kind_; }
  std::optional<std::u16string> GetValue(std::u16string_view name) const override;

private:
  std::u16string name_;
  TPropertySetKind kind_;
  std::map<std::u16string, std::u16string, text::IgnoreCaseLess> values_;
};

class TFakePropertySetService : public IPropertySetService {
public:
  void Add(std::shared_ptr<const IPropertySet> set) { sets_.push_back(std::move(set)); }
  std::shared_ptr<const IPropertySet> Find(std::u16string_view name) const override;
  text::TStringList GetNames(TPropertySetKind kind) const override;

private:
  std::vector<std::shared_ptr<const IPropertySet>> sets_;
};

// The log in UTF-8, a line each:
//   "3 text"                 a message with its status
//   "> title"                a group opens
//   "< 1"                    a group closes with a status ("<" without one)
//   "# Compiler Errors 3"    a metric: category, name, value
//   "= Name value"           a variable was set
//   "$ MSBuild.exe"          a process was run: its file name; the rest is in Runs()
// Secrets are encrypted to "enc(...)". Expressions are %Name% and $(Name): the action's own variables, then
// Variables; an unknown name raises.
class TRecordingHost : public IKxActionHost {
public:
  const std::vector<std::string>& Log() const { return log_; }
  const std::vector<TRun>& Runs() const { return runs_; }
  int OpenGroups() const { return openGroups_; }
  void ClearLog();

  // Played back in this order; a process beyond the last ends with exit code 0 and no output.
  TRecordingHost& Play(TPlayback playback);
  // Raised by the user: the running process and all later ones end with ExitCodeTerminated.
  TKxEvent StopRequest;
  std::map<std::u16string, std::u16string, text::IgnoreCaseLess> Variables;
  TFakePropertySetService Sets;
  std::function<bool(TKxBaseIterator&)> Children; // one pass of a loop; none: True
  bool Validating = false;

  void SendMessage(TCustomKxAction& action, std::u16string_view text, TStatusTag status) override;
  void StartMessageGroup(TCustomKxAction& action, std::u16string_view title, TMessageGroupType type,
                         TStatusTag status) override;
  void EndMessageGroup(TCustomKxAction& action, std::optional<TStatusTag> status) override;
  void SendMetric(TCustomKxAction& action, const TKxMetric& metric) override;
  std::u16string Expand(TCustomKxAction& action, std::u16string_view text) override;
  std::optional<std::u16string> GetVariable(std::u16string_view name) override;
  void SetVariable(std::u16string_view name, std::u16string_view value) override;
  IPropertySetService& PropertySets() override { return Sets; }
  std::u16string EncryptString(std::u16string_view clear) override;
  std::u16string DecryptString(std::u16string_view secret) override;
  std::shared_ptr<IKxProcess> NewProcess(TCustomKxAction& action) override;
  const TKxEvent& Stop() const override { return StopRequest; }
  bool RunChildren(TKxBaseIterator& iterator) override;
  bool IsValidating() const override { return Validating; }

private:
  friend class TFakeProcess;
  void Note(char mark, std::u16string_view text);

  std::vector<std::string> log_;
  std::vector<TRun> runs_;
  std::deque<TPlayback> playbacks_;
  int openGroups_ = 0;
};

// Collects validation entries as lines "page: message", with " [options]" behind those that offer the
// options.
class TRecordingValidation : public IKxActionValidationError {
public:
  std::vector<std::string> Entries;
  void Add(std::u16string_view page, std::u16string_view message, TKxOptionsObject* options) override;
};

// A section of an options store in memory.
class TFakeOptionsStore : public IKxOptionsReader, public IKxOptionsWriter {
public:
  std::map<std::u16string, std::u16string, text::IgnoreCaseLess> Values;
  std::vector<std::string> Written; // "key=value" in the order of writing

  std::u16string ReadString(std::u16string_view key, std::u16string_view otherwise) const override;
  std::int32_t ReadInteger(std::u16string_view key, std::int32_t otherwise) const override;
  void WriteString(std::u16string_view key, std::u16string_view value) override;
  void WriteInteger(std::u16string_view key, std::int32_t value) override;
};

// The services of a host for as long as it lives; one at a time. Registrations are kept as lines ("action
// DEVENV Compilers TKxVSDotNetAction", "function TKxVSDotNetAction GetProjectID", ...); a registered options
// class has its one object here, as the constructor of the class made it.
class TFakeServices : public IKxActionService,
                      public IKxCoreScriptingService,
                      public IKxOptionsService,
                      public IKxDotNetInfo {
public:
  TFakeServices();
  ~TFakeServices() override;
  TFakeServices(const TFakeServices&) = delete;
  TFakeServices& operator=(const TFakeServices&) = delete;

  std::vector<std::string> Registered;
  std::map<std::u16string, std::u16string> Frameworks; // "v3.5" to the folder of MSBuild.exe
  std::map<std::u16string, TKxScriptFunction> Functions;

  void RegisterAction(std::u16string_view identifier, std::u16string_view category,
                      const TKxActionClass& actionClass) override;
  void RegisterPropertyEditor(TKxPropertyKind kind, const TKxActionClass& actionClass,
                              std::u16string_view property, const TKxPropertyEditorClass& editor) override;
  void RegisterPropertyPages(const TKxActionClass& actionClass,
                             std::span<const TKxPageClass* const> pages) override;
  void RegisterImage(std::u16string_view name, std::string_view svg) override;
  void RegisterFunction(const TKxActionClass& actionClass, std::u16string_view name,
                        TKxScriptFunction function) override;
  void RegisterConstant(std::u16string_view name, std::int32_t value) override;
  void RegisterEnumeration(const TKxEnumeration& enumeration) override;
  void RegisterOptions(const TKxOptionsClass& optionsClass) override;
  void RegisterOptionsPage(const TKxOptionsClass& optionsClass, const TKxPageClass& page) override;
  TKxOptionsObject* GetOptions(std::u16string_view name, std::u16string_view category) override;
  std::optional<std::u16string> GetFrameworkDirectory(std::u16string_view version) override;

private:
  void Note(std::initializer_list<std::u16string_view> words);

  struct TOptions {
    std::u16string Name;
    std::u16string Category;
    std::unique_ptr<TKxOptionsObject> Object;
  };
  std::vector<TOptions> options_;
};

} // namespace kx::tests
