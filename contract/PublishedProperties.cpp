#include "contract/PublishedProperties.h"

#include "contract/Utilities.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"

#include <algorithm>

namespace kx {

namespace {

std::u16string Listed(std::span<const std::u16string_view> names) {
  std::u16string list;
  for (const auto name : names)
    list += (list.empty() ? u"" : u", ") + std::u16string(name);
  return list;
}

[[noreturn]] void Refuse(const TKxPublishedProperty& property, std::u16string_view text,
                         std::u16string_view wanted) {
  throw EKxException(std::u16string(property.Name) + u" takes " + std::u16string(wanted) + u", not " +
                     DoubleQuoteString(text) + u".");
}

bool BooleanFromText(const TKxPublishedProperty& property, std::u16string_view text) {
  if (const auto value = StringToBoolean(text)) return *value;
  Refuse(property, text, u"True or False");
}

std::int32_t OrdinalFromText(const TKxPublishedProperty& property, std::u16string_view text) {
  if (const auto ordinal = property.Enumeration->OrdinalOf(text)) return *ordinal;
  const auto count = static_cast<std::int32_t>(property.Enumeration->Values.size());
  if (const auto number = text::ToInteger(text); number && *number >= 0 && *number < count) return *number;
  Refuse(property, text, u"one of " + Listed(property.Enumeration->Values));
}

} // namespace

void TKxPersistent::GetHiddenProperties(text::TStringList& /*names*/) const {}
void TKxPersistent::GetPropertyAlias(text::TStringList& /*aliases*/) const {}
void TKxPersistent::GetPropertyHelp(text::TStringList& /*help*/) const {}

std::optional<std::int32_t> TKxEnumeration::OrdinalOf(std::u16string_view value) const {
  for (std::size_t i = 0; i < Values.size(); ++i)
    if (text::EqualsIgnoreCase(Values[i], value)) return static_cast<std::int32_t>(i);
  return std::nullopt;
}

const TKxPublishedProperty* TKxPropertyTable::Find(std::u16string_view name) const {
  const auto found = std::find_if(rows_.begin(), rows_.end(), [name](const TKxPublishedProperty& row) {
    return text::EqualsIgnoreCase(row.Name, name);
  });
  return found == rows_.end() ? nullptr : &*found;
}

std::u16string PropertyToText(const TKxPublishedProperty& property, const TKxPropertyValue& value) {
  switch (property.Kind) {
  case TKxPropertyKind::Boolean:
    return BooleanToString(std::get<bool>(value));
  case TKxPropertyKind::Integer:
    return text::FromInteger(std::get<std::int32_t>(value));
  case TKxPropertyKind::Enumeration: {
    const auto ordinal = static_cast<std::size_t>(std::get<std::int32_t>(value));
    return ordinal < property.Enumeration->Values.size()
               ? std::u16string(property.Enumeration->Values[ordinal])
               : text::FromInteger(std::get<std::int32_t>(value));
  }
  case TKxPropertyKind::String:
    return std::get<std::u16string>(value);
  case TKxPropertyKind::StringList:
    return std::get<text::TStringList>(value).GetText();
  }
  return {};
}

TKxPropertyValue PropertyFromText(const TKxPublishedProperty& property, std::u16string_view text) {
  switch (property.Kind) {
  case TKxPropertyKind::Boolean:
    return BooleanFromText(property, text::Trim(text));
  case TKxPropertyKind::Integer:
    if (const auto number = text::ToInteger(text::Trim(text))) return *number;
    Refuse(property, text, u"a number");
  case TKxPropertyKind::Enumeration:
    return OrdinalFromText(property, text::Trim(text));
  case TKxPropertyKind::StringList: {
    text::TStringList list;
    list.SetText(text);
    return list;
  }
  case TKxPropertyKind::String:
    break;
  }
  return std::u16string(text);
}

} // namespace kx
