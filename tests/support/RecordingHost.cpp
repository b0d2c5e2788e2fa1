#include "tests/support/RecordingHost.h"

#include "contract/Iterator.h"
#include "foundation/text/WindowsPath.h"

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
    for (const auto& line : playback.StdOut)
      settings_.OnStdOutData(*this, line);
    for (const auto& line : playback.StdErr)
      settings_.OnStdErrData(*this, line);
    if (!playback.Exception.empty()) throw EKxException(playback.Exception);
    if (!IsStopped()) exitCode_ = playback.ExitCode;
    if (playback.After) playback.After();
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

std::optional<std::u16string> Find(const TTexts& texts, std::u16string_view name) {
  const auto found = texts.find(name);
  return found == texts.end() ? std::nullopt : std::optional(found->second);
}

void TRecordingHost::Note(char mark, std::u16string_view text) {
  log_.push_back(std::string(1, mark) + ' ' + text::ToUtf8(text));
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
      const auto variable = GetVariable(name);
      if (!variable) throw EExpressionError(u"Unknown name: " + std::u16string(name));
      value = *variable;
    }
    result += value;
    text.remove_prefix(end + 1);
  }
  return result;
}

std::shared_ptr<IKxProcess> TRecordingHost::NewProcess(TCustomKxAction& /*action*/) {
  return std::make_shared<TFakeProcess>(*this);
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

} // namespace kx::tests
