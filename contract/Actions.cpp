#include "contract/Actions.h"

#include "contract/Utilities.h"
#include "foundation/platform/Files.h"
#include "foundation/text/WindowsPath.h"

namespace kx {

TCustomKxAction::TCustomKxAction() = default;
TCustomKxAction::~TCustomKxAction() = default;

bool TCustomKxAction::Validate(IKxActionValidationError& /*errors*/) {
  return true;
}

void TCustomKxAction::CollectLocalVariables(text::TStringList& /*names*/, bool /*withTypes*/,
                                            bool /*withDescriptions*/) const {}

bool TCustomKxAction::GetLocalVariableValue(std::u16string_view /*name*/, std::u16string& /*value*/) const {
  return false;
}

std::u16string TCustomKxAction::GetDescription() const {
  return description_.empty() ? GetActionName() : description_;
}

IKxActionHost& TCustomKxAction::Host() const {
  if (host_ == nullptr) throw EKxException(u"The action " + GetActionName() + u" has no host.");
  return *host_;
}

void TCustomKxAction::SendMessage(std::u16string_view text, TStatusTag status) {
  Host().SendMessage(*this, text, status);
}

void TCustomKxAction::WarnOfPlace(const std::exception& error) {
  const std::u16string place = PlaceOf(error);
  if (!place.empty()) SendMessage(u"Warning : reading stopped in " + place + u".", TStatusTag::stWarning);
}

void TCustomKxAction::StartMessageGroup(std::u16string_view title, TMessageGroupType type,
                                        TStatusTag status) {
  Host().StartMessageGroup(*this, title, type, status);
}

void TCustomKxAction::EndMessageGroup(std::optional<TStatusTag> status) {
  Host().EndMessageGroup(*this, status);
}

void TCustomKxAction::SendMetricInt(std::u16string_view category, std::u16string_view name,
                                    std::int64_t value, bool flag) {
  Host().SendMetric(*this, {std::u16string(category), std::u16string(name), value, flag});
}

void TCustomKxAction::SendMetricString(std::u16string_view category, std::u16string_view name,
                                       std::u16string_view value, bool flag) {
  Host().SendMetric(*this, {std::u16string(category), std::u16string(name), std::u16string(value), flag});
}

void TCustomKxAction::StartConfiguration(std::u16string_view name) {
  Host().StartConfiguration(*this, name);
}

void TCustomKxAction::EndConfiguration(TKxOutcome outcome) {
  Host().EndConfiguration(*this, outcome);
}

void TCustomKxAction::StartProject(std::u16string_view file) {
  Host().StartProject(*this, file);
}

void TCustomKxAction::EndProject(std::u16string_view file, bool succeeded) {
  Host().EndProject(*this, file, succeeded);
}

void TCustomKxAction::ReportBreach(std::u16string_view rule, std::u16string_view message) {
  Host().ReportBreach(*this, rule, message);
}

void TCustomKxAction::ChangeStored(std::span<const std::u16string_view> properties,
                                   const std::function<void()>& change) {
  Host().ChangeStored(*this, properties, change);
}

std::u16string TCustomKxAction::ExpandExpression(std::u16string_view text) {
  return Host().Expand(*this, text);
}

std::optional<std::u16string> TCustomKxAction::ForeseeExpression(std::u16string_view text) {
  try {
    return ExpandExpression(text);
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

bool TCustomKxAction::TryExpandExpression(std::u16string_view label, std::u16string_view text, bool required,
                                          std::u16string& result) {
  std::u16string reason;
  try {
    result = ExpandExpression(text);
    if (!required || !result.empty()) return true;
    reason = u"a value is required.";
  } catch (const std::exception& error) {
    reason = MessageOf(error);
  }
  SendMessage(std::u16string(label) + u" : " + reason, TStatusTag::stError);
  return false;
}

std::u16string TCustomKxAction::GetVariableValue(std::u16string_view name) {
  return Host().GetVariable(name).value_or(std::u16string());
}

std::u16string TCustomKxAction::FullProjectPath(std::u16string_view path) {
  if (text::IsAbsolutePath(path)) return std::u16string(path);
  std::u16string folder = GetVariableValue(u"ProjectDir");
  if (folder.empty()) folder = platform::CurrentDirectory();
  return TPathUtils::ExpandRelativePath(path, folder);
}

IPropertySetService& TCustomKxAction::GetPropertySetService() {
  return Host().PropertySets();
}

std::u16string TCustomKxAction::EncryptString(std::u16string_view clear) {
  return Host().EncryptString(clear);
}

std::u16string TCustomKxAction::DecryptString(std::u16string_view secret) const {
  return Host().DecryptString(secret);
}

bool TCustomKxAction::IsValidating() const {
  return Host().IsValidating();
}

void TCustomKxAction::Sleep(std::uint32_t milliseconds) {
  Host().Stop().WaitFor(std::chrono::milliseconds(milliseconds));
}

void TCustomKxAction::RegisterDynamicProperty(std::u16string_view name) {
  dynamicProperties_.emplace(name);
}

void TCustomKxAction::UnRegisterDynamicProperty(std::u16string_view name) {
  std::erase_if(dynamicProperties_, [name](const auto& known) { return known == name; });
}

TKxMessageGroup::TKxMessageGroup(TCustomKxAction& action, std::u16string_view title) : action_(action) {
  action_.StartMessageGroup(title);
}

TKxMessageGroup::~TKxMessageGroup() {
  Close(false);
}

bool TKxMessageGroup::Close(bool succeeded) {
  if (open_) action_.EndMessageGroup(succeeded ? TStatusTag::stSuccess : TStatusTag::stError);
  open_ = false;
  return succeeded;
}

void TKxMessageGroup::CloseNormal() {
  if (open_) action_.EndMessageGroup(TStatusTag::stNormal);
  open_ = false;
}

} // namespace kx
