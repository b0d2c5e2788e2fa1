#include "package/versioninfo/KxVersionInfoUpdaterAction.h"

#include "contract/Utilities.h"
#include "foundation/text/Text.h"
#include "package/versioninfo/KxRCVersionInfo.h"

namespace kx {

const TKxActionClass& TKxVersionInfoUpdaterAction::Class() {
  static const TKxActionClass actionClass{
      u"TKxVersionInfoUpdaterAction",
      []() -> std::unique_ptr<TCustomKxAction> { return std::make_unique<TKxVersionInfoUpdaterAction>(); }};
  return actionClass;
}

const TKxPropertyTable& TKxVersionInfoUpdaterAction::PublishedProperties() const {
  using T = TKxVersionInfoUpdaterAction;
  static const TKxPropertyTable table(
      TKxPropertyRows<T>()
          .Field(u"PropertiesToUpdate", &T::PropertiesToUpdate,
                 u"What takes the value of the property set, one Name=True a line (MajorVersion=True, "
                 u"CompanyName=True); the rest stays as the script has it.")
          .Field(u"ResourceFile", &T::ResourceFile, u"The resource script (*.rc) to stamp.")
          .Field(u"PropertySetName", &T::PropertySetName,
                 u"The property set of the project that holds the new values.")
          .Take());
  return table;
}

bool TKxVersionInfoUpdaterAction::CanUpdateProperty(std::u16string_view name) const {
  return StringToBoolean(PropertiesToUpdate.Value(name)).value_or(false);
}

void TKxVersionInfoUpdaterAction::GetNewValue(std::u16string_view name, std::u16string_view oldValue,
                                              std::u16string& newValue, bool selectable) {
  if (selectable && !CanUpdateProperty(name)) {
    newValue = oldValue;
    return;
  }
  newValue = propertySet_->GetValue(name).value_or(std::u16string());
  if (selectable) SendMessage(u"Updating property : " + std::u16string(name) + u" - to : " + newValue);
}

void TKxVersionInfoUpdaterAction::CheckProperties(TVersionInfoContainer& info) {
  TVersionInfoValues& values = info.Values();
  for (const auto& row : Win32VersionProperties()) {
    const std::u16string newValue = info.NewValue(row.Name, row.Get(values), row.Selectable);
    // A product version that stays must not look like one that was asked for.
    if (!row.Selectable || CanUpdateProperty(row.Name)) row.Set(values, newValue);
  }
  const auto selected = [this](std::u16string_view name) { return CanUpdateProperty(name); };
  if (const auto refused = TVersionInfo::CheckNumbers(values, selected)) throw EKxException(*refused);
  CheckStrings(info);
}

void TKxVersionInfoUpdaterAction::CheckStrings(TVersionInfoContainer& info) {
  TVersionInfoValues& values = info.Values();
  for (std::size_t i = 0; i < PropertiesToUpdate.Count(); ++i) {
    const std::u16string_view name = PropertiesToUpdate.NameOf(i);
    if (!info.HasName(name)) continue;
    if (text::EqualsIgnoreCase(name, u"SpecialBuildDetails") && !values.IsSpecial) continue;
    if (text::EqualsIgnoreCase(name, u"ProductVersion")) continue; // is among the properties
    const std::u16string oldValue(values.Strings.Value(name));
    const std::u16string newValue = info.NewValue(name, oldValue, true);
    if (newValue != oldValue) SetVersionText(values, name, newValue);
  }
}

void TKxVersionInfoUpdaterAction::GetFilesToChange(text::TStringList& files) {
  try {
    const std::u16string file = ExpandExpression(ResourceFile);
    if (!file.empty()) files.Add(FullProjectPath(file));
  } catch (const std::exception&) {
    return; // Execute will say what cannot be expanded
  }
}

void TKxVersionInfoUpdaterAction::LookAhead(IKxActionValidationError& errors) {
  if (PropertySetName.empty())
    errors.Add(u"PropertySetName", u"The name of the property set is blank.");
  else if (GetPropertySetService().Find(PropertySetName) == nullptr)
    errors.Add(u"PropertySetName", u"Unable to find property set: " + PropertySetName);
  const auto file = ForeseeExpression(ResourceFile);
  if (!file) return;
  if (file->empty()) {
    errors.Add(u"ResourceFile", u"A value is required.");
    return;
  }
  try {
    GetVersionInfoParser(std::make_shared<TVersionInfoContainer>(), FullProjectPath(*file))->Parse();
  } catch (const std::exception& error) {
    errors.Add(u"ResourceFile", u"Error Parsing File : " + MessageOf(error));
  }
}

bool TKxVersionInfoUpdaterAction::Execute() {
  propertySet_ = GetPropertySetService().Find(PropertySetName);
  if (propertySet_ == nullptr) {
    SendMessage(u"Unable to find property set: " + PropertySetName, TStatusTag::stError);
    return false;
  }
  const auto info = std::make_shared<TVersionInfoContainer>(
      VSWin32VersionInfoNames,
      [this](std::u16string_view name, std::u16string_view oldValue, std::u16string& newValue,
             bool selectable) { GetNewValue(name, oldValue, newValue, selectable); });
  std::u16string file;
  bool succeeded = TryExpandExpression(u"ResourceFile", ResourceFile, true, file);
  try {
    succeeded = succeeded && Update(*info, *GetVersionInfoParser(info, FullProjectPath(file)));
  } catch (const std::exception& error) {
    SendMessage(u"Error loading resource file : " + MessageOf(error), TStatusTag::stError);
    succeeded = false;
  }
  propertySet_ = nullptr;
  return succeeded;
}

bool TKxVersionInfoUpdaterAction::Update(TVersionInfoContainer& info, IKxVersionInfoParser& script) {
  try {
    script.Parse();
    CheckProperties(info);
  } catch (const std::exception& error) {
    return Refuse(u"Error Parsing File : ", error);
  }
  return Save(info, script);
}

bool TKxVersionInfoUpdaterAction::Save(const TVersionInfoContainer& info, IKxVersionInfoParser& script) {
  const auto warn = [this](const text::TStringList& warnings) {
    for (const auto& warning : warnings)
      SendMessage(warning, TStatusTag::stWarning);
  };
  try {
    warn(script.FindLosses(info));
    script.Save(info);
  } catch (const std::exception& error) {
    return Refuse(u"Error saving resource file : ", error);
  }
  warn(script.GetWarnings());
  return true;
}

bool TKxVersionInfoUpdaterAction::Refuse(std::u16string_view failure, const std::exception& error) {
  SendMessage(std::u16string(failure) + MessageOf(error), TStatusTag::stError);
  if (const auto where = WhereRefused(error)) SendMessage(*where, TStatusTag::stWarning);
  return false;
}

} // namespace kx
