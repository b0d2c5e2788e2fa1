// The properties that an action or an options object publishes, as one table per class in declaration order.
// Saving, loading, the command line, the listings and the editors are loops over it.
#pragma once

#include "foundation/text/StringList.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace kx {

class TKxPropertyTable;

// What users edit and stores keep: an action, or the options of a package.
class TKxPersistent {
public:
  virtual ~TKxPersistent() = default;
  virtual const TKxPropertyTable& PublishedProperties() const = 0;

  // For editors. Hidden are the properties that the general form leaves out; pages may show them.
  virtual void GetHiddenProperties(text::TStringList& names) const;
  virtual void GetPropertyAlias(text::TStringList& aliases) const; // lines Name=Alias and [Group]
  virtual void GetPropertyHelp(text::TStringList& help) const;     // lines Name=Text
};

// An enumeration as scripts and project files know it: the position of a name is its ordinal, the stored
// value.
struct TKxEnumeration {
  std::u16string_view Name;
  std::span<const std::u16string_view> Values;
  std::optional<std::int32_t> OrdinalOf(std::u16string_view value) const; // letter case ignored
};

enum class TKxPropertyKind { Boolean, Integer, Enumeration, String, StringList };

// Booleans; integers and the ordinals of enumerations; texts; lists.
using TKxPropertyValue = std::variant<bool, std::int32_t, std::u16string, text::TStringList>;

struct TKxPublishedProperty {
  std::u16string_view Name;
  TKxPropertyKind Kind = TKxPropertyKind::String;
  const TKxEnumeration* Enumeration = nullptr;
  bool Stored = true;         // written into the project file
  bool ReadOnly = false;      // computed; never written anywhere
  bool Secret = false;        // its value is never shown
  bool DefaultVaries = false; // from machine to machine: projects say the value even where it is the default
  std::u16string_view Help;
  // A getter may normalise what it returns, so it takes the object as it is. None of them raises.
  std::function<TKxPropertyValue(TKxPersistent&)> Get;
  std::function<void(TKxPersistent&, const TKxPropertyValue&)> Set;
};

class TKxPropertyTable {
public:
  TKxPropertyTable() = default;
  explicit TKxPropertyTable(std::vector<TKxPublishedProperty> rows) : rows_(std::move(rows)) {}

  std::span<const TKxPublishedProperty> Rows() const { return rows_; }
  const TKxPublishedProperty* Find(std::u16string_view name) const; // letter case ignored; null when missing

private:
  std::vector<TKxPublishedProperty> rows_;
};

// The text of a value as project files and command lines hold it: True/False, decimal numbers, enumeration
// names, the lines of a list each ended by CR LF.
std::u16string PropertyToText(const TKxPublishedProperty& property, const TKxPropertyValue& value);
// The reverse; enumerations by name or ordinal, Booleans as True/False/1/0/yes/no. Raises EKxException that
// names the property and what it takes.
TKxPropertyValue PropertyFromText(const TKxPublishedProperty& property, std::u16string_view text);

// Writes a table row by row: rows.Field(u"Solution", &TAction::Solution, u"...").
// A row reads and writes a member, which a pointer to it names or a function leads to (TAction& -> T&), or a
// getter and a setter.
template <typename TAction>
class TKxPropertyRows {
public:
  template <typename TField>
  TKxPropertyRows& Field(std::u16string_view name, TField field, std::u16string_view help) {
    using T = std::remove_cvref_t<std::invoke_result_t<TField, TAction&>>;
    return Row<T>(
        name, [field](TAction& action) -> T { return std::invoke(field, action); },
        [field](TAction& action, T value) { std::invoke(field, action) = std::move(value); }, nullptr, help);
  }
  template <typename TField>
  TKxPropertyRows& Field(std::u16string_view name, TField field, const TKxEnumeration& values,
                         std::u16string_view help) {
    using T = std::remove_cvref_t<std::invoke_result_t<TField, TAction&>>;
    return Row<T>(
        name, [field](TAction& action) -> T { return std::invoke(field, action); },
        [field](TAction& action, T value) { std::invoke(field, action) = value; }, &values, help);
  }
  template <typename TGet, typename TSet>
  TKxPropertyRows& Accessors(std::u16string_view name, TGet get, TSet set, std::u16string_view help) {
    using T = std::remove_cvref_t<std::invoke_result_t<TGet, TAction&>>;
    return Row<T>(
        name, [get](TAction& action) -> T { return std::invoke(get, action); },
        [set](TAction& action, T value) { std::invoke(set, action, std::move(value)); }, nullptr, help);
  }
  template <typename TGet>
  TKxPropertyRows& Computed(std::u16string_view name, TGet get, std::u16string_view help) {
    using T = std::remove_cvref_t<std::invoke_result_t<TGet, TAction&>>;
    Row<T>(
        name, [get](TAction& action) -> T { return std::invoke(get, action); }, [](TAction&, const T&) {},
        nullptr, help);
    rows_.back().ReadOnly = true;
    return NotStored();
  }
  TKxPropertyRows& NotStored() {
    rows_.back().Stored = false;
    return *this;
  }
  TKxPropertyRows& Secret() {
    rows_.back().Secret = true;
    return *this;
  }
  TKxPropertyRows& DefaultVaries() {
    rows_.back().DefaultVaries = true;
    return *this;
  }
  std::vector<TKxPublishedProperty> Take() { return std::move(rows_); }

private:
  template <typename T>
  static constexpr TKxPropertyKind KindOf() {
    if constexpr (std::is_same_v<T, bool>) {
      return TKxPropertyKind::Boolean;
    } else if constexpr (std::is_enum_v<T>) {
      return TKxPropertyKind::Enumeration;
    } else if constexpr (std::is_integral_v<T>) {
      return TKxPropertyKind::Integer;
    } else if constexpr (std::is_same_v<T, text::TStringList>) {
      return TKxPropertyKind::StringList;
    } else {
      static_assert(std::is_same_v<T, std::u16string>);
      return TKxPropertyKind::String;
    }
  }

  template <typename T, typename TGet, typename TSet>
  TKxPropertyRows& Row(std::u16string_view name, TGet get, TSet set, const TKxEnumeration* values,
                       std::u16string_view help) {
    // Enumerations travel as their ordinals.
    using TValue = std::conditional_t<std::is_enum_v<T>, std::int32_t, T>;
    TKxPublishedProperty row;
    row.Name = name;
    row.Kind = KindOf<T>();
    row.Enumeration = values;
    row.Help = help;
    row.Get = [get](TKxPersistent& object) {
      return TKxPropertyValue(static_cast<TValue>(get(static_cast<TAction&>(object))));
    };
    row.Set = [set](TKxPersistent& object, const TKxPropertyValue& value) {
      set(static_cast<TAction&>(object), static_cast<T>(std::get<TValue>(value)));
    };
    rows_.push_back(std::move(row));
    return *this;
  }

  std::vector<TKxPublishedProperty> rows_;
};

} // namespace kx
