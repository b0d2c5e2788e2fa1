#include "contract/TablePage.h"

#include "contract/Utilities.h"
#include "foundation/text/Text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kx {

namespace {

bool IsUpper(char16_t c) {
  return c >= u'A' && c <= u'Z';
}
bool IsLower(char16_t c) {
  return c >= u'a' && c <= u'z';
}

// A word begins at a capital behind anything else, and at the last capital of several when a word of two
// letters or more goes on there: "WMI Website Num", "Max CPUs".
bool BeginsWord(std::u16string_view name, std::size_t i) {
  if (i == 0 || !IsUpper(name[i])) return false;
  if (!IsUpper(name[i - 1])) return true;
  return i + 2 < name.size() && IsLower(name[i + 1]) && IsLower(name[i + 2]);
}

constexpr std::array<std::pair<std::u16string_view, std::u16string_view>, 10> ShortWords{
    {{u"Auto", u"Automatically"},
     {u"Cmd", u"Command"},
     {u"Config", u"Configuration"},
     {u"Dir", u"Directory"},
     {u"Env", u"Environment"},
     {u"Ex", u"Expression"},
     {u"Inc", u"Increment"},
     {u"Num", u"Number"},
     {u"Params", u"Parameters"},
     {u"Reg", u"Regular"}}};

std::u16string_view InFull(std::u16string_view word) {
  const auto found = std::ranges::find(ShortWords, word, &decltype(ShortWords)::value_type::first);
  return found == ShortWords.end() ? word : found->second;
}

std::u16string WordsApart(std::u16string_view name) {
  std::u16string words;
  std::size_t begin = 0;
  for (std::size_t i = 1; i <= name.size(); ++i) {
    if (i < name.size() && !BeginsWord(name, i)) continue;
    if (begin > 0) words += u' ';
    words += InFull(name.substr(begin, i - begin));
    begin = i;
  }
  return words;
}

TKxFieldKind KindOf(const TKxTableField& row, const TKxPublishedProperty& property) {
  if (row.Kind) return *row.Kind;
  if (property.Secret) return TKxFieldKind::Secret;
  switch (property.Kind) {
  case TKxPropertyKind::Boolean:
    return TKxFieldKind::CheckBox;
  case TKxPropertyKind::Integer:
    return TKxFieldKind::Integer;
  case TKxPropertyKind::Enumeration:
    return TKxFieldKind::DropDown;
  case TKxPropertyKind::StringList:
    return TKxFieldKind::List;
  case TKxPropertyKind::String:
    break;
  }
  return TKxFieldKind::Text;
}

std::u16string_view ChooserTitle(TKxFieldKind kind) {
  if (kind == TKxFieldKind::FilePath) return u"Select File";
  return kind == TKxFieldKind::FolderPath ? u"Select Directory" : u"";
}

// True and False of a field that means one value of its property.
bool IsFlag(const TKxPageField& field) {
  return field.Kind == TKxFieldKind::CheckBox || field.Kind == TKxFieldKind::Choice;
}

std::u16string ShownValue(const TKxPageField& field, const TKxPublishedProperty& property,
                          const TKxPropertyValue& value) {
  if (IsFlag(field) && !field.Means.empty())
    return BooleanToString(PropertyToText(property, value) == field.Means);
  if (field.Kind != TKxFieldKind::DropDown) return PropertyToText(property, value);
  const auto ordinal = static_cast<std::size_t>(std::get<std::int32_t>(value));
  return ordinal < field.Items.size() ? field.Items[ordinal] : std::u16string();
}

TKxPropertyValue WrittenValue(const TKxPageField& field, const TKxPublishedProperty& property) {
  if (field.Kind == TKxFieldKind::DropDown) {
    const auto item = std::ranges::find(field.Items, field.Value);
    return static_cast<std::int32_t>(item - field.Items.begin());
  }
  if (!IsFlag(field) || field.Means.empty()) return PropertyFromText(property, field.Value);
  const TKxPropertyValue meant = PropertyFromText(property, field.Means);
  return field.IsChecked() ? meant : TKxPropertyValue(!std::get<bool>(meant));
}

} // namespace

const TKxPublishedProperty* TKxBoundPage::BoundTo(const TKxPageField& field) const {
  return field.IsOwn ? nullptr : edited_->PublishedProperties().Find(field.Property);
}

void TKxBoundPage::ReadActionData() {
  read_.clear();
  for (const auto& field : Fields()) {
    if (const auto* property = BoundTo(field)) ReadField(field, *property);
    read_.push_back(field.Value);
  }
  ApplyEnableRules();
}

void TKxBoundPage::ReadField(const TKxPageField& field, const TKxPublishedProperty& property) {
  const std::u16string value = ShownValue(field, property, property.Get(*edited_));
  if (field.Kind == TKxFieldKind::Secret)
    ShowSecret(field.Name, !value.empty());
  else if (IsFlag(field))
    Check(field.Name, value == BooleanToString(true));
  else
    Show(field.Name, value);
}

void TKxBoundPage::WriteActionData() {
  RequireNoErrors();
  for (std::size_t i = 0; i < Fields().size(); ++i) {
    const TKxPageField& field = Fields()[i];
    const auto* property = BoundTo(field);
    if (property == nullptr) continue;
    if (const auto secret = TakeNewSecret(field.Name)) property->Set(*edited_, *secret);
    const bool isChanged = field.Value != read_[i];
    read_[i] = field.Value;
    const bool isLeft = field.Kind == TKxFieldKind::Choice && !field.IsChecked(); // for another of its group
    if (isLeft || field.Kind == TKxFieldKind::Secret || !(isChanged || WritesUnchanged())) continue;
    property->Set(*edited_, WrittenValue(field, *property));
  }
}

std::u16string DisplayName(const TKxPersistent& object, std::u16string_view property) {
  text::TStringList aliases;
  object.GetPropertyAlias(aliases);
  const std::u16string_view alias = aliases.Value(property);
  const bool saysNothing = alias.empty() || alias == property;
  return saysNothing ? WordsApart(property) : std::u16string(alias);
}

std::u16string PropertyHelp(const TKxPersistent& object, const TKxPublishedProperty& property) {
  text::TStringList help;
  object.GetPropertyHelp(help);
  const std::u16string_view own = help.Value(property.Name);
  return std::u16string(own.empty() ? property.Help : own);
}

std::u16string TKxTablePage::ItemText(const TKxEnumeration& enumeration, std::size_t ordinal) const {
  const std::u16string_view name = enumeration.Values[ordinal];
  const auto prefix = std::ranges::find_if(name, IsUpper);
  return prefix == name.end() ? std::u16string(name)
                              : WordsApart(name.substr(static_cast<std::size_t>(prefix - name.begin())));
}

void TKxTablePage::InitPage(TKxPersistent& edited) {
  TKxBoundPage::InitPage(edited);
  RemoveFields();
  if (layout_.empty()) AddGeneralForm();
  for (const auto& row : layout_) {
    if (!row.Heading.empty()) {
      AddHeading(row.Heading);
    } else if (const auto* property = edited.PublishedProperties().Find(row.Property)) {
      AddField(row, *property);
    } else {
      throw EKxException(u"The page " + DoubleQuoteString(pageName_) +
                         u" edits a property that is not there: " + std::u16string(row.Property) + u".");
    }
  }
}

// Properties stand where the object's list of names puts them; those it does not list come last.
void TKxTablePage::AddGeneralForm() {
  text::TStringList hidden;
  text::TStringList order;
  Edited().GetHiddenProperties(hidden);
  Edited().GetPropertyAlias(order);
  const TKxPropertyTable& table = Edited().PublishedProperties();
  const auto shown = [&](const TKxPublishedProperty* property) {
    return property != nullptr && !property->ReadOnly && !hidden.IndexOf(property->Name);
  };
  for (std::size_t i = 0; i < order.Count(); ++i) {
    const std::u16string_view line = order[i];
    if (line.starts_with(u'[') && line.ends_with(u']'))
      AddHeading(line.substr(1, line.size() - 2));
    else if (const auto* property = table.Find(order.NameOf(i)); shown(property))
      AddField({.Property = property->Name}, *property);
  }
  bool first = true;
  for (const auto& property : table.Rows()) {
    if (!shown(&property) || order.IndexOfName(property.Name)) continue;
    if (first && !order.IsEmpty()) AddHeading(u"Other Properties");
    first = false;
    AddField({.Property = property.Name}, property);
  }
}

void TKxTablePage::AddField(const TKxTableField& row, const TKxPublishedProperty& property) {
  TKxPageField field{.Name = std::u16string(property.Name),
                     .Kind = KindOf(row, property),
                     .Label =
                         row.Label.empty() ? DisplayName(Edited(), property.Name) : std::u16string(row.Label),
                     .Property = std::u16string(property.Name),
                     .Hint = PropertyHelp(Edited(), property),
                     .Places = {row.Places.begin(), row.Places.end()},
                     .Filter = std::u16string(row.Filter),
                     .IsSeenFromProject = row.IsSeenFromProject,
                     .OffersTitle = std::u16string(row.OffersTitle)};
  if (!row.EnabledAt.empty())
    field.Needs =
        u"Needs " + DoubleQuoteString(Field(row.EnabledBy).Label) + u": " + EnablingItem(row) + u".";
  field.Title = ChooserTitle(field.Kind);
  if (property.Enumeration != nullptr)
    for (std::size_t i = 0; i < property.Enumeration->Values.size(); ++i)
      field.Items.push_back(ItemText(*property.Enumeration, i));
  Add(std::move(field));
}

std::u16string TKxTablePage::EnablingItem(const TKxTableField& row) const {
  const auto& values = *Edited().PublishedProperties().Find(row.EnabledBy)->Enumeration;
  return Field(row.EnabledBy).Items[static_cast<std::size_t>(values.OrdinalOf(row.EnabledAt).value())];
}

bool TKxTablePage::IsEnabled(const TKxTableField& row) const {
  const TKxPageField& by = Field(row.EnabledBy);
  return by.Enabled && (row.EnabledAt.empty() ? by.IsChecked() : by.Value == EnablingItem(row));
}

void TKxTablePage::ApplyEnableRules() {
  for (const auto& row : layout_)
    if (!row.EnabledBy.empty()) Enable(row.Property, IsEnabled(row));
}

} // namespace kx
