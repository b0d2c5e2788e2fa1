#include "program/runner/Run.h"

#include "foundation/platform/Secrets.h"
#include "foundation/text/Encoding.h"
#include "program/runner/Base64.h"
#include "program/runner/RunEngine.h"

namespace kx {

TProjectRunner::TProjectRunner(const TServiceRegistry& services, TKxEvent& stop, TRunSettings settings)
    : engine_(std::make_unique<TRunEngine>(services, stop, std::move(settings), *this)) {}
TProjectRunner::~TProjectRunner() = default;

TProject& TProjectRunner::Project() {
  return engine_->Project;
}
void TProjectRunner::Choose(TRunChoice choice) {
  engine_->Choice = std::move(choice);
}

void TProjectRunner::AddSink(IRunEventSink& sink) {
  engine_->Log.AddSink(sink);
}

void TProjectRunner::RemoveSink(IRunEventSink& sink) {
  engine_->Log.RemoveSink(sink);
}

void TProjectRunner::WhenFound(std::function<void(std::size_t place, TFinding finding)> onFinding) {
  engine_->OnFinding = std::move(onFinding);
}

void TProjectRunner::StoreIn(TProjectFile& file) {
  engine_->File = &file;
}

std::vector<TValidationEntry> TProjectRunner::Validate() {
  validating_ = true;
  auto entries = ValidateProject(engine_->Project, engine_->Expressions);
  validating_ = false;
  for (auto& entry : entries) {
    engine_->Log.Secrets().Mask(entry.Action);
    engine_->Log.Secrets().Mask(entry.Message);
  }
  return entries;
}

text::TStringList TProjectRunner::FilesToChange() const {
  return kx::FilesToChange(engine_->Project);
}

void TProjectRunner::InPass(const TKxBaseIterator& loop, std::u16string_view value,
                            const std::function<void()>& look) {
  const TVariables::TLoopScope scope(engine_->Variables, loop.GetLoopVariable());
  engine_->Variables.Set(loop.GetLoopVariable(), value);
  look();
}

std::vector<TValidationNote> TProjectRunner::CheckFilesToChange() {
  auto notes = kx::CheckFilesToChange(engine_->Project);
  for (auto& note : notes) {
    engine_->Log.Secrets().Mask(note.Action);
    engine_->Log.Secrets().Mask(note.Message);
  }
  return notes;
}

void TProjectRunner::CountUp() {
  engine_->CountUp();
}

bool TProjectRunner::HasUnstoredNumbers() const {
  return engine_->HasUnstoredNumbers();
}

TRunReport TProjectRunner::Run() {
  return engine_->Run();
}

void TProjectRunner::SendMessage(TCustomKxAction& /*action*/, std::u16string_view text, TStatusTag status) {
  if (engine_->IsRunning()) engine_->Say({std::u16string(text), status});
}

void TProjectRunner::StartMessageGroup(TCustomKxAction& /*action*/, std::u16string_view title,
                                       TMessageGroupType /*type*/, TStatusTag status) {
  if (engine_->IsRunning()) engine_->Log.StartGroup(title, status);
}

void TProjectRunner::EndMessageGroup(TCustomKxAction& /*action*/, std::optional<TStatusTag> status) {
  engine_->EndGroup(status);
}

void TProjectRunner::SendMetric(TCustomKxAction& action, const TKxMetric& metric) {
  engine_->Take(action, metric);
}

void TProjectRunner::StartConfiguration(TCustomKxAction& action, std::u16string_view name) {
  engine_->StartConfiguration(action, name);
}

void TProjectRunner::EndConfiguration(TCustomKxAction& action, TKxOutcome outcome) {
  engine_->EndConfiguration(action, outcome);
}

void TProjectRunner::StartProject(TCustomKxAction& action, std::u16string_view file) {
  if (auto* projects = engine_->OpenProjects(action)) projects->Start(file, TRunClock::now());
}

void TProjectRunner::EndProject(TCustomKxAction& action, std::u16string_view file, bool succeeded) {
  if (auto* projects = engine_->OpenProjects(action)) projects->End(file, succeeded, TRunClock::now());
}

void TProjectRunner::ReportBreach(TCustomKxAction& /*action*/, std::u16string_view rule,
                                  std::u16string_view message) {
  if (engine_->IsRunning()) engine_->ReportBreach(rule, message);
}

std::u16string TProjectRunner::Expand(TCustomKxAction& action, std::u16string_view text) {
  return engine_->Expressions.Expand(action, text);
}

std::optional<std::u16string> TProjectRunner::GetVariable(std::u16string_view name) {
  return engine_->Expressions.VariableValue(engine_->Innermost(), name);
}

void TProjectRunner::SetVariable(std::u16string_view name, std::u16string_view value) {
  engine_->Variables.Set(name, value);
}

IPropertySetService& TProjectRunner::PropertySets() {
  return engine_->Project.PropertySets;
}

void TProjectRunner::ChangeStored(TCustomKxAction& action, std::span<const std::u16string_view> properties,
                                  const std::function<void()>& change) {
  engine_->ChangeStored(action, properties, change);
}

std::u16string TProjectRunner::EncryptString(std::u16string_view clear) {
  if (clear.empty()) return {};
  engine_->Log.Secrets().Keep(clear);
  const auto secret = platform::ProtectSecret(text::ToUtf8(clear), engine_->KeyFile);
  if (!secret) throw EKxException(secret.Message());
  return ToBase64(*secret);
}

std::u16string TProjectRunner::DecryptString(std::u16string_view secret) {
  const auto bytes = FromBase64(secret);
  if (!bytes || bytes->empty()) return {};
  const auto clear = platform::UnprotectSecret(*bytes, engine_->KeyFile);
  if (!clear) return {};
  std::u16string text = text::FromUtf8(*clear);
  engine_->Log.Secrets().Keep(text);
  return text;
}

std::shared_ptr<IKxProcess> TProjectRunner::NewProcess(TCustomKxAction& /*action*/) {
  return engine_->NewProcess();
}

const TKxEvent& TProjectRunner::Stop() const {
  return engine_->Stop();
}

bool TProjectRunner::RunChildren(TKxBaseIterator& iterator) {
  return engine_->RunChildren(iterator);
}

bool TProjectRunner::IsValidating() const {
  return validating_;
}

} // namespace kx
