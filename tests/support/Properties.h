#pragma once

#include "contract/PublishedProperties.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

#include <functional>

namespace kx::tests {

// The properties of an action by their names and texts.
class TPropertyTexts {
public:
  explicit TPropertyTexts(TKxPersistent& object) : object_(object) {}

  const TKxPublishedProperty& Row(std::u16string_view name) const {
    const auto* row = object_.PublishedProperties().Find(name);
    if (row == nullptr) throw EKxException(u"no property " + std::u16string(name));
    return *row;
  }
  // Of the form Name=Value&Name=Value, with another sign between them where values hold that one.
  void Set(std::u16string_view settings, char16_t separator = u'&') const {
    for (const auto setting : text::Split(settings, separator)) {
      if (setting.empty()) continue;
      const auto& row = Row(setting.substr(0, setting.find(u'=')));
      row.Set(object_, PropertyFromText(row, setting.substr(setting.find(u'=') + 1)));
    }
  }
  std::string Get(std::u16string_view name) const {
    return text::ToUtf8(PropertyToText(Row(name), Row(name).Get(object_)));
  }

private:
  TKxPersistent& object_;
};

// Another value than a property has.
inline TKxPropertyValue Another(const TKxPublishedProperty& property, const TKxPropertyValue& value) {
  if (const auto* flag = std::get_if<bool>(&value)) return !*flag;
  if (std::holds_alternative<std::u16string>(value)) return u"x";
  if (std::holds_alternative<text::TStringList>(value)) return text::TStringList{u"x"};
  const std::int32_t number = std::get<std::int32_t>(value);
  if (property.Enumeration == nullptr) return number + 5;
  return static_cast<std::int32_t>((number + 1) % std::ssize(property.Enumeration->Values));
}

// Gives each property of a new object another value, one at a time. A line for each that changes more than
// itself, or is something else then: "Name: Other=value ".
template <class TObject>
std::string SideEffects(const std::function<void(TObject&)>& prepare = [](TObject&) {}) {
  std::string lines;
  for (const auto& changed : TObject().PublishedProperties().Rows()) {
    if (changed.ReadOnly) continue;
    TObject untouched;
    TObject object;
    prepare(untouched);
    prepare(object);
    const TKxPropertyValue value = Another(changed, changed.Get(object));
    changed.Set(object, value);
    std::u16string effects;
    for (const auto& property : object.PublishedProperties().Rows()) {
      const TKxPropertyValue expected = property.Name == changed.Name ? value : property.Get(untouched);
      if (const auto found = property.Get(object); found != expected)
        effects += std::u16string(property.Name) + u"=" + PropertyToText(property, found) + u" ";
    }
    if (!effects.empty()) lines += "\n" + text::ToUtf8(std::u16string(changed.Name) + u": " + effects);
  }
  return lines;
}

} // namespace kx::tests
