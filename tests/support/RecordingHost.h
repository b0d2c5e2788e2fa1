// A host for tests: everything that an action sends is one list of lines, everything that it asks for can be
// set.
#pragma once

#include "contract/Actions.h"
#include "contract/Services.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

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
  std::function<void()> After = {};  // called when it has ended
};

// What an action had run.
struct TRun {
  std::string Executable;
  std::string Parameters;
  std::string Directory;
};

using TTexts = std::map<std::u16string, std::u16string, text::IgnoreCaseLess>;
std::optional<std::u16string> Find(const TTexts& texts, std::u16string_view name);

class TFakePropertySet : public IPropertySet {
public:
  TFakePropertySet(std::u16string_view name, TTexts values) : name_(name), values_(std::move(values)) {}
  std::u16string GetName() const override { return name_; }
  TPropertySetKind GetKind() const override { return TPropertySetKind::Win32; }
  std::optional<std::u16string> GetValue(std::u16string_view name) const override {
    return tests::Find(values_, name);
  }

private:
  std::u16string name_;
  TTexts values_;
};

// Knows the sets that a test puts into it; those are all of kind Win32.
class TFakePropertySetService : public IPropertySetService {
public:
  std::map<std::u16string, TTexts, text::IgnoreCaseLess> Sets;
  std::shared_ptr<const IPropertySet> Find(std::u16string_view name) const override {
    const auto found = Sets.find(name);
    return found == Sets.end() ? nullptr : std::make_shared<TFakePropertySet>(found->first, found->second);
  }
  text::TStringList GetNames(TPropertySetKind /*kind*/) const override { return {}; }
};

// The log in UTF-8, a line each:
//   "3 text"                 a message with its status
//   "> title"                a group opens
//   "< 1"                    a group closes with a status ("<" without one)
//   "# Compiler Errors 3"    a metric: category, name, value
//   "= Name value"           a variable was set
//   "[ Release|x86"          a configuration begins; "] 0" it ends with an outcome
//   "! no-tests text"        a breach of a rule
//   "$ MSBuild.exe"          a process was run: its file name; the rest is in Runs()
// Secrets are encrypted to "enc(...)". Expressions are %Name% and $(Name): the action's own variables, then
// Variables; an unknown name raises.
class TRecordingHost : public IKxActionHost {
public:
  const std::vector<std::string>& Log() const { return log_; }
  const std::vector<TRun>& Runs() const { return runs_; }
  void ClearLog() {
    log_.clear();
    runs_.clear();
  }

  // Played back in this order; a process beyond the last ends with exit code 0 and no output.
  TRecordingHost& Play(TPlayback playback) {
    playbacks_.push_back(std::move(playback));
    return *this;
  }
  // Raised by the user: the running process and all later ones end with ExitCodeTerminated.
  TKxEvent StopRequest;
  std::vector<std::string> Projects; // begun, ended well, failed
  std::vector<std::string> Stored;   // the properties that an action had stored, one after the other
  bool NumbersAreCounted = false;    // ChangeStored calls nothing
  std::u16string StoringFails;       // when not empty: ChangeStored raises EKxException with it
  TTexts Variables;
  TFakePropertySetService Sets;
  std::function<bool(TKxBaseIterator&)> Children; // one pass of a loop; none: True

  void SendMessage(TCustomKxAction& /*action*/, std::u16string_view text, TStatusTag status) override {
    Note(static_cast<char>('0' + static_cast<int>(status)), text);
  }
  void StartMessageGroup(TCustomKxAction& /*action*/, std::u16string_view title, TMessageGroupType /*type*/,
                         TStatusTag /*status*/) override {
    Note('>', title);
  }
  void EndMessageGroup(TCustomKxAction& /*action*/, std::optional<TStatusTag> status) override {
    log_.push_back(status ? "< " + std::to_string(static_cast<int>(*status)) : "<");
  }
  void SendMetric(TCustomKxAction& action, const TKxMetric& metric) override;
  void StartConfiguration(TCustomKxAction& /*action*/, std::u16string_view name) override { Note('[', name); }
  void EndConfiguration(TCustomKxAction& /*action*/, TKxOutcome outcome) override {
    log_.push_back("] " + std::to_string(static_cast<int>(outcome)));
  }
  void StartProject(TCustomKxAction& /*action*/, std::u16string_view file) override {
    Projects.push_back("> " + text::ToUtf8(file));
  }
  void EndProject(TCustomKxAction& /*action*/, std::u16string_view file, bool succeeded) override {
    Projects.push_back((succeeded ? "< " : "! ") + text::ToUtf8(file));
  }
  void ReportBreach(TCustomKxAction& /*action*/, std::u16string_view rule,
                    std::u16string_view message) override {
    Note('!', std::u16string(rule) + u" " + std::u16string(message));
  }
  void ChangeStored(TCustomKxAction& /*action*/, std::span<const std::u16string_view> properties,
                    const std::function<void()>& change) override {
    if (NumbersAreCounted) return;
    change();
    if (!StoringFails.empty()) throw EKxException(StoringFails);
    for (const auto name : properties)
      Stored.push_back(text::ToUtf8(name));
  }
  std::u16string Expand(TCustomKxAction& action, std::u16string_view text) override;
  std::optional<std::u16string> GetVariable(std::u16string_view name) override {
    return Find(Variables, name);
  }
  void SetVariable(std::u16string_view name, std::u16string_view value) override {
    Note('=', std::u16string(name) + u" " + std::u16string(value));
    Variables.insert_or_assign(std::u16string(name), std::u16string(value));
  }
  IPropertySetService& PropertySets() override { return Sets; }
  std::u16string EncryptString(std::u16string_view clear) override {
    return u"enc(" + std::u16string(clear) + u")";
  }
  std::u16string DecryptString(std::u16string_view secret) override {
    if (!secret.starts_with(u"enc(") || !secret.ends_with(u')')) return {};
    return std::u16string(secret.substr(4, secret.size() - 5));
  }
  std::shared_ptr<IKxProcess> NewProcess(TCustomKxAction& action) override;
  const TKxEvent& Stop() const override { return StopRequest; }
  bool RunChildren(TKxBaseIterator& iterator) override { return !Children || Children(iterator); }
  bool IsValidating() const override { return false; }

private:
  friend class TFakeProcess;
  void Note(char mark, std::u16string_view text);

  std::vector<std::string> log_;
  std::vector<TRun> runs_;
  std::deque<TPlayback> playbacks_;
};

// Collects validation entries as lines "page: message", with " [options]" behind those that offer the
// options.
class TRecordingValidation : public IKxActionValidationError {
public:
  std::vector<std::string> Entries;
  void Add(std::u16string_view page, std::u16string_view message, TKxOptionsObject* options) override {
    const char* offer = options != nullptr ? " [options]" : "";
    Entries.push_back(text::ToUtf8(page) + ": " + text::ToUtf8(message) + offer);
  }
};

// A section of an options store in memory.
class TFakeOptionsStore : public IKxOptionsReader, public IKxOptionsWriter {
public:
  TTexts Values;
  text::TStringList Written; // "key=value" in the order of writing

  std::u16string ReadString(std::u16string_view key, std::u16string_view otherwise) const override {
    return Find(Values, key).value_or(std::u16string(otherwise));
  }
  std::int32_t ReadInteger(std::u16string_view key, std::int32_t otherwise) const override {
    return text::ToIntegerOr(ReadString(key, u""), otherwise);
  }
  void WriteString(std::u16string_view key, std::u16string_view value) override {
    Written.Add(std::u16string(key) + u"=" + std::u16string(value));
  }
  void WriteInteger(std::u16string_view key, std::int32_t value) override {
    WriteString(key, text::FromInteger(value));
  }
};

// The services of a host for as long as it lives; one at a time. Registrations are kept as lines ("action
// DEVENV Compilers TKxVSDotNetAction", "function TKxVSDotNetAction GetProjectID", ...); a registered options
// class has its one object here, as the constructor of the class made it.
class TFakeServices : public IKxActionService,
                      public IKxCoreScriptingService,
                      public IKxOptionsService,
                      public IKxDotNetInfo {
public:
  TFakeServices() {
    SetServices({.Actions = this, .Scripting = this, .Options = this, .Design = nullptr, .DotNet = this});
  }
  ~TFakeServices() override { SetServices({}); }
  TFakeServices(const TFakeServices&) = delete;
  TFakeServices& operator=(const TFakeServices&) = delete;

  std::vector<std::string> Registered;
  TTexts Frameworks; // "v3.5" to the folder of MSBuild.exe

  void RegisterAction(std::u16string_view identifier, std::u16string_view category,
                      const TKxActionClass& actionClass) override;
  void RegisterPropertyEditor(TKxPropertyKind kind, const TKxActionClass& actionClass,
                              std::u16string_view property, const TKxPropertyEditorClass& editor) override;
  void RegisterPropertyPages(const TKxActionClass& actionClass,
                             std::span<const TKxPageClass* const> pages) override;
  void RegisterImage(std::u16string_view name, std::string_view /*svg*/) override { Note({u"image", name}); }
  void RegisterFunction(const TKxActionClass& actionClass, std::u16string_view name,
                        TKxScriptFunction /*function*/) override {
    Note({u"function", actionClass.ClassName, name});
  }
  void RegisterConstant(std::u16string_view name, std::int32_t value) override {
    Note({u"constant", name, text::FromInteger(value)});
  }
  void RegisterEnumeration(const TKxEnumeration& type) override { Note({u"enumeration", type.Name}); }
  void RegisterOptions(const TKxOptionsClass& optionsClass) override;
  void RegisterOptionsPage(const TKxOptionsClass& optionsClass, const TKxPageClass& page) override;
  TKxOptionsObject* GetOptions(std::u16string_view name, std::u16string_view category) override;
  std::optional<std::u16string> GetFrameworkDirectory(std::u16string_view version) override {
    return Find(Frameworks, version);
  }

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
