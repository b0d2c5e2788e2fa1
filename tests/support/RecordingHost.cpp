#include "tests/support/RecordingHost.h"

#include "host/Iterator.h"
#include "text/Encoding.h"
#include "text/Text.h"
#include "text/WindowsPath.h"

#include <algorithm>

namespace kx::tests {

// Plays back what the host was told to; a raised stop request wins over everything.
class TFakeProcess : public IKxProcess {
public:
  explicit TFakeProcess(TRecordingHost& host) : host_(host) {}

  TKxProcessSettings& Settings() override { return settings_; }
  int GetExitCode() const override { return exitCode_; }

  void Run() override {
    exitCode_ = ExitCodeTerminated;
    if (IsStopped()) return;
    host_.Note('$', text::ExtractFileName(settings_.Executable));
    host_.runs_.push_back({text::ToUtf8(settings_.Executable), text::ToUtf8(settings_.Parameters),
                           text::ToUtf8(settings_.StartingDirectory)});
    TPlayback playback;
    if (!host_.playbacks_.empty()) {
      playback = std::move(host_.playbacks_.front());
      host_.playbacks_.pop_front();
    }
    if (playback.During) playback.During();
    if (!playback.Exception.empty()) throw EKxException(playback.Exception);
    for (const auto& line : playback.StdOut)
      settings_.OnStdOutData(*this, line);
    for (const auto& line : playback.StdErr)
      settings_.OnStdErrData(*this, line);
    if (!IsStopped()) exitCode_ = playback.ExitCode;
  }

private:
  bool IsStopped() const {
    const TKxEvent* own = settings_.TerminateEvent;
    return host_.StopRequest.IsRaised() || (own != nullptr && own->IsRaised());
  }

  TRecordingHost& host_;
  TKxProcessSettings settings_;
  int exitCode_ = 0;
};

TFakePropertySet::TFakePropertySet(std::u16string name, TPropertySetKind kind,
                                   std::map<std::u16string, std::u16string, text::IgnoreCaseLess> values)
    : name_(std::move(name)), kind_(kind), values_(std::move(values)) {}

std::optional<std::u16string> TFakePropertySet::GetValue(std::u16string_view name) const {
  const auto found = values_.find(name);
  return found == values_.end() ? std::nullopt : std::optional(found->second);
}

std::shared_ptr<const IPropertySet> TFakePropertySetService::Find(std::u16string_view name) const {
  const auto found = std::find_if(sets_.begin(), sets_.end(), [name](const auto& set) {
    return text::EqualsIgnoreCase(set->GetName(), name);
  });
  return found == sets_.end() ? nullptr : *found;
}

text::TStringList TFakePropertySetService::GetNames(TPropertySetKind kind) const {
  text::TStringList names;
  for (const auto& set : sets_)
    if (set->GetKind() == kind) names.Add(set->GetName());
  return names;
}

void TRecordingHost::Note(char mark, std::u16string_view text) {
  log_.push_back(std::string(1, mark) + ' ' + text::ToUtf8(text));
}

void TRecordingHost::ClearLog() {
  log_.clear();
  runs_.clear();
}

TRecordingHost& TRecordingHost::Play(TPlayback playback) {
  playbacks_.push_back(std::move(playback));
  return *this;
}

void TRecordingHost::SendMessage(TCustomKxAction& /*action*/, std::u16string_view text, TStatusTag status) {
  Note(static_cast<char>('0' + static_cast<int>(status)), text);
}

void TRecordingHost::StartMessageGroup(TCustomKxAction& /*action*/, std::u16string_view title,
                                       TMessageGroupType /*type*/, TStatusTag /*status*/) {
  Note('>', title);
  ++openGroups_;
}

void TRecordingHost::EndMessageGroup(TCustomKxAction& /*action*/, std::optional<TStatusTag> status) {
  log_.push_back(status ? "< " + std::to_string(static_cast<int>(*status)) : "<");
  --openGroups_;
}

void TRecordingHost::SendMetric(TCustomKxAction& /*action*/, const TKxMetric& metric) {
  const auto* number = std::get_if<std::int64_t>(&metric.Value);
  const std::u16string value =
      number != nullptr ? text::FromInteger(*number) : std::get<std::u16string>(metric.Value);
  Note('#', metric.Category + u" " + metric.Name + u" " + value);
}

std::u16string TRecordingHost::Expand(TCustomKxAction& action, std::u16string_view text) {
  std::u16string result;
  while (!text.empty()) {
    const bool percent = text.front() == u'%';
    const bool dollar = text.starts_with(u"$(");
    const auto end = percent ? text.find(u'%', 1) : text.find(u')');
    if ((!percent && !dollar) || end == std::u16string_view::npos) {
      result += text.front();
      text.remove_prefix(1);
      continue;
    }
    const auto name = percent ? text.substr(1, end - 1) : text.substr(2, end - 2);
    std::u16string value;
    if (!action.GetLocalVariableValue(name, value)) {
      const auto found = Variables.find(name);
      if (found == Variables.end()) throw EExpressionError(u"Unknown name: " + std::u16string(name));
      value = found->second;
    }
    result += value;
    text.remove_prefix(end + 1);
  }
  return result;
}

std::optional<std::u16string> TRecordingHost::GetVariable(std::u16string_view name) {
  const auto found = Variables.find(name);
  return found == Variables.end() ? std::nullopt : std::optional(found->second);
}

void TRecordingHost::SetVariable(std::u16string_view name, std::u16string_view value) {
  Note('=', std::u16string(name) + u" " + std::u16string(value));
  Variables.insert_or_assign(std::u16string(name), std::u16string(value));
}

std::u16string TRecordingHost::EncryptString(std::u16string_view clear) {
  return u"enc(" + std::u16string(clear) + u")";
}

std::u16string TRecordingHost::DecryptString(std::u16string_view secret) {
  if (!secret.starts_with(u"enc(") || !secret.ends_with(u')')) return {};
  return std::u16string(secret.substr(4, secret.size() - 5));
}

std::shared_ptr<IKxProcess> TRecordingHost::NewProcess(TCustomKxAction& /*action*/) {
  return std::make_shared<TFakeProcess>(*this);
}

bool TRecordingHost::RunChildren(TKxBaseIterator& iterator) {
  return !Children || Children(iterator);
}

void TRecordingValidation::Add(std::u16string_view page, std::u16string_view message,
                               TKxOptionsObject* options) {
  Entries.push_back(text::ToUtf8(page) + ": " + text::ToUtf8(message) +
                    (options != nullptr ? " [options]" : ""));
}

std::u16string TFakeOptionsStore::ReadString(std::u16string_view key, std::u16string_view otherwise) const {
  const auto found = Values.find(key);
  return found == Values.end() ? std::u16string(otherwise) : found->second;
}

std::int32_t TFakeOptionsStore::ReadInteger(std::u16string_view key, std::int32_t otherwise) const {
  return text::ToIntegerOr(ReadString(key, u""), otherwise);
}

void TFakeOptionsStore::WriteString(std::u16string_view key, std::u16string_view value) {
  Written.push_back(text::ToUtf8(key) + "=" + text::ToUtf8(value));
  Values.insert_or_assign(std::u16string(key), std::u16string(value));
}

void TFakeOptionsStore::WriteInteger(std::u16string_view key, std::int32_t value) {
  WriteString(key, text::FromInteger(value));
}

TFakeServices::TFakeServices() {
  SetServices({.Actions = this, .Scripting = this, .Options = this, .Design = nullptr, .DotNet = this});
}

TFakeServices::~TFakeServices() {
  SetServices({});
}

void TFakeServices::Note(std::initializer_list<std::u16string_view> words) {
  std::string line;
  for (const auto word : words)
    line += (line.empty() ? "" : " ") + text::ToUtf8(word);
  Registered.push_back(std::move(line));
}

void TFakeServices::RegisterAction(std::u16string_view identifier, std::u16string_view category,
                                   const TKxActionClass& actionClass) {
  Note({u"action", identifier, category, actionClass.ClassName});
}

void TFakeServices::RegisterPropertyEditor(TKxPropertyKind /*kind*/, const TKxActionClass& actionClass,
                                           std::u16string_view property,
                                           const TKxPropertyEditorClass& editor) {
  Note({u"editor", actionClass.ClassName, property, editor.ClassName});
}

void TFakeServices::RegisterPropertyPages(const TKxActionClass& actionClass,
                                          std::span<const TKxPageClass* const> pages) {
  for (const auto* page : pages)
    Note({u"page", actionClass.ClassName, page->ClassName});
}

void TFakeServices::RegisterImage(std::u16string_view name, std::string_view /*svg*/) {
  Note({u"image", name});
}

void TFakeServices::RegisterFunction(const TKxActionClass& actionClass, std::u16string_view name,
                                     TKxScriptFunction function) {
  Note({u"function", actionClass.ClassName, name});
  Functions.insert_or_assign(std::u16string(name), function);
}

void TFakeServices::RegisterConstant(std::u16string_view name, std::int32_t value) {
  Note({u"constant", name, text::FromInteger(value)});
}

void TFakeServices::RegisterEnumeration(const TKxEnumeration& enumeration) {
  Note({u"enumeration", enumeration.Name});
}

void TFakeServices::RegisterOptions(const TKxOptionsClass& optionsClass) {
  Note({u"options", optionsClass.ImageName, optionsClass.Category, optionsClass.Name});
  options_.push_back(
      {std::u16string(optionsClass.Name), std::u16string(optionsClass.Category), optionsClass.Create()});
}

void TFakeServices::RegisterOptionsPage(const TKxOptionsClass& optionsClass, const TKxPageClass& page) {
  Note({u"options page", optionsClass.Name, page.ClassName});
}

TKxOptionsObject* TFakeServices::GetOptions(std::u16string_view name, std::u16string_view category) {
  for (const auto& options : options_)
    if (options.Name == name && options.Category == category) return options.Object.get();
  return nullptr;
}

std::optional<std::u16string> TFakeServices::GetFrameworkDirectory(std::u16string_view version) {
  const auto found = Frameworks.find(std::u16string(version));
  return found == Frameworks.end() ? std::nullopt : std::optional(found->second);
}

} // namespace kx::tests
