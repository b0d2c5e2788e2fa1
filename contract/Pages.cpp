#include "contract/Pages.h"

#include "contract/Utilities.h"
#include "foundation/platform/Files.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>

namespace kx {

namespace {

bool Take(std::optional<std::u16string> choice, std::u16string& path) {
  if (!choice) return false;
  path = std::move(*choice);
  return true;
}

bool IsFlag(const TKxPageField& field) {
  return field.Kind == TKxFieldKind::Choice || field.Kind == TKxFieldKind::CheckBox;
}

bool HasItem(const TKxPageField& field, std::u16string_view item) {
  return std::ranges::find(field.Items, item) != field.Items.end();
}

} // namespace

const TKxPageField& TKxPropertyPage::Field(std::u16string_view name) const {
  const auto found =
      std::ranges::find_if(fields_, [&](const auto& field) { return field.Name == name && !name.empty(); });
  if (found == fields_.end())
    throw EKxException(u"The page " + DoubleQuoteString(PageName()) + u" has no field " +
                       DoubleQuoteString(name) + u".");
  return *found;
}

TKxPageField& TKxPropertyPage::Find(std::u16string_view name) {
  return fields_[static_cast<std::size_t>(&Field(name) - fields_.data())];
}

// What the user sees of a field: one without a label stands under another's.
std::u16string TKxPropertyPage::Caption(const TKxPageField& field) const {
  auto at = static_cast<std::size_t>(&field - fields_.data());
  while (at > 0 && fields_[at].Label.empty())
    --at;
  return DoubleQuoteString(fields_[at].Label);
}

void TKxPropertyPage::Add(TKxPageField field) {
  if (IsFlag(field)) field.Value = BooleanToString(false);
  if (field.Kind == TKxFieldKind::FilePath || field.Kind == TKxFieldKind::FolderPath)
    field.Buttons.insert(field.Buttons.begin(), {TKxButtonKind::Browse, field.Title});
  fields_.push_back(std::move(field));
}

void TKxPropertyPage::RemoveFields() {
  fields_.clear();
  newSecrets_.clear();
}

void TKxPropertyPage::SetValue(std::u16string_view name, std::u16string_view value) {
  TKxPageField& field = Find(name);
  if (!field.Enabled) throw EKxException(u"The field " + Caption(field) + u" is disabled.");
  Assign(field, value);
  ApplyEnableRules();
}

void TKxPropertyPage::Assign(TKxPageField& field, std::u16string_view value) {
  switch (field.Kind) {
  case TKxFieldKind::Choice:
  case TKxFieldKind::CheckBox: {
    const auto checked = StringToBoolean(value);
    if (!checked) throw EKxException(Caption(field) + u" is either True or False.");
    Check(field.Name, *checked);
    break;
  }
  case TKxFieldKind::DropDown:
    if (!value.empty() && !HasItem(field, value)) {
      if (!field.TakesNewItems)
        throw EKxException(Caption(field) + u" has no item " + DoubleQuoteString(value) + u".");
      field.Items.emplace_back(value);
    }
    field.Value = value;
    break;
  case TKxFieldKind::Secret:
    newSecrets_.insert_or_assign(field.Name, std::u16string(value));
    field.IsChanged = true;
    field.IsSet = !value.empty();
    break;
  default:
    Show(field.Name, value);
  }
}

void TKxPropertyPage::Show(std::u16string_view name, std::u16string_view value) {
  TKxPageField& field = Find(name);
  field.Error.clear();
  if (field.Kind == TKxFieldKind::List) {
    text::TStringList lines;
    lines.SetText(value);
    field.Value = lines.GetText();
    return;
  }
  field.Value = field.Kind == TKxFieldKind::DropDown && !HasItem(field, value) ? u"" : value;
  if (field.Kind == TKxFieldKind::Integer && !text::ToInteger(text::Trim(value)))
    field.Error = Caption(field) + u" takes a whole number, not " + DoubleQuoteString(value) + u".";
}

void TKxPropertyPage::Check(std::u16string_view name, bool checked) {
  TKxPageField& field = Find(name);
  if (checked && field.Kind == TKxFieldKind::Choice)
    for (auto& other : fields_)
      if (other.Kind == TKxFieldKind::Choice && other.Group == field.Group)
        other.Value = BooleanToString(false);
  field.Value = BooleanToString(checked);
}

void TKxPropertyPage::ShowSecret(std::u16string_view name, bool isSet) {
  TKxPageField& field = Find(name);
  newSecrets_.erase(field.Name);
  field.IsSet = isSet;
  field.IsChanged = false;
}

void TKxPropertyPage::RequireNoErrors() const {
  for (const auto& field : fields_)
    if (!field.Error.empty()) throw EKxException(field.Error);
}

std::int32_t TKxPropertyPage::Number(std::u16string_view name) const {
  return text::ToIntegerOr(text::Trim(Value(name)), 0);
}

std::optional<std::u16string> TKxPropertyPage::TakeNewSecret(std::u16string_view name) {
  const auto found = newSecrets_.find(name);
  if (found == newSecrets_.end()) return std::nullopt;
  std::u16string secret = std::move(found->second);
  ShowSecret(name, !secret.empty());
  return secret;
}

void TKxPropertyPage::Click(std::u16string_view name, TKxButtonKind button) {
  TKxPageField& field = Find(name);
  const bool known = std::ranges::any_of(field.Buttons, [&](const auto& row) { return row.Kind == button; });
  if (!known) throw EKxException(u"The field " + Caption(field) + u" has no such button.");
  if (!field.Enabled) throw EKxException(u"The field " + Caption(field) + u" is disabled.");
  if (button == TKxButtonKind::Browse) Browse(field);
  if (button == TKxButtonKind::Accept) Accept(name);
  ApplyEnableRules();
}

void TKxPropertyPage::Browse(TKxPageField& field) {
  std::u16string path = field.Value;
  if (field.Kind == TKxFieldKind::FolderPath) {
    if (!KxBrowseForDirectory(field.Title, path)) return;
  } else {
    if (!KxBrowseForFile(field.Title, path, field.Filter, field.DefaultExtension)) return;
  }
  Assign(field, path);
}

TKxFieldOffers TKxPropertyPage::Offers(std::u16string_view name, const TKxEvent* /*stop*/) {
  static_cast<void>(Field(name));
  return {};
}

const TKxPropertyEditorClass& TShowActionPropertiesEditor::Class() {
  static const TKxPropertyEditorClass editor{u"TShowActionPropertiesEditor", &GetPage};
  return editor;
}

bool KxBrowseForDirectory(std::u16string_view title, std::u16string& path) {
  return Take(DesignService().BrowseForDirectory(title, path), path);
}

bool KxBrowseForFile(std::u16string_view title, std::u16string& path, std::u16string_view filter,
                     std::u16string_view extension) {
  return Take(DesignService().BrowseForFile(title, path, filter, extension), path);
}

std::u16string KxChosenFile(std::u16string path, std::u16string_view extension) {
  if (platform::DirectoryExists(path))
    throw EKxException(DoubleQuoteString(path) + u" is a folder. Choose a file.");
  if (text::ExtractFileExt(path).empty() && !platform::FileExists(path)) path += extension;
  return path;
}

void ShowMessage(std::u16string_view text) {
  DesignService().ShowMessage(text);
}

} // namespace kx
