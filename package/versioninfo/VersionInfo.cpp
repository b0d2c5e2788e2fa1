#include "package/versioninfo/VersionInfo.h"

#include "contract/Utilities.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"

#include <algorithm>

namespace kx {

namespace {

constexpr std::u16string_view FileVersionName = u"FileVersion";
constexpr std::u16string_view ProductVersionName = u"ProductVersion";

template <auto Member>
constexpr TKxVersionProperty IntegerRow(std::u16string_view name) {
  return {name, true, [](const TVersionInfoValues& values) { return text::FromInteger(values.*Member); },
          [](TVersionInfoValues& values, std::u16string_view text) {
            const auto number = text::ToInteger(text);
            if (!number) throw EKxException(u"'" + std::u16string(text) + u"' is not a valid integer value");
            values.*Member = *number;
          }};
}

template <auto Member>
constexpr TKxVersionProperty BooleanRow(std::u16string_view name, bool selectable = true) {
  return {name, selectable, [](const TVersionInfoValues& values) { return BooleanToString(values.*Member); },
          [](TVersionInfoValues& values, std::u16string_view text) {
            values.*Member = StringToBoolean(text).value_or(false);
          }};
}

// A text that is not there does not come to be by staying empty.
void SetString(TVersionInfoValues& values, std::u16string_view name, std::u16string_view text) {
  if (values.Strings.Value(name) != text) SetVersionText(values, name, text);
}

constexpr TKxVersionProperty FileVersionStringRow{
    u"FileVersionString", true,
    [](const TVersionInfoValues& values) { return std::u16string(values.Strings.Value(FileVersionName)); },
    [](TVersionInfoValues& values, std::u16string_view text) { SetString(values, FileVersionName, text); }};

constexpr TKxVersionProperty ProductVersionStringRow{
    u"ProductVersionString", true,
    [](const TVersionInfoValues& values) { return std::u16string(values.Strings.Value(ProductVersionName)); },
    [](TVersionInfoValues& values, std::u16string_view text) {
      SetString(values, ProductVersionName, text);
    }};

std::u16string GetProductVersion(const TVersionInfoValues& values) {
  return values.ProductVersion.empty() ? std::u16string(values.Strings.Value(ProductVersionName))
                                       : values.ProductVersion;
}
void SetProductVersionOf(TVersionInfoValues& values, std::u16string_view text) {
  values.ProductVersion = text;
  SetString(values, ProductVersionName, text);
}

} // namespace

std::span<const TKxVersionProperty> Win32VersionProperties() {
  using T = TVersionInfoValues;
  static constexpr std::array<TKxVersionProperty, 17> rows{{
      BooleanRow<&T::AutoUpdateFileVersion>(u"AutoUpdateFileVersionString", false),
      BooleanRow<&T::AutoUpdateProductVersion>(u"AutoUpdateProductVersionString", false),
      BooleanRow<&T::LinkFileAndProductVersion>(u"LinkProductVersion", false),
      IntegerRow<&T::MajorVersion>(u"MajorVersion"),
      IntegerRow<&T::MinorVersion>(u"MinorVersion"),
      IntegerRow<&T::ReleaseVersion>(u"ReleaseVersion"),
      IntegerRow<&T::BuildVersion>(u"BuildVersion"),
      IntegerRow<&T::Locale>(u"Locale"),
      IntegerRow<&T::CodePage>(u"CodePage"),
      BooleanRow<&T::IsDebug>(u"DebugBuild"),
      BooleanRow<&T::IsPreRelease>(u"PreReleaseBuild"),
      BooleanRow<&T::IsSpecial>(u"SpecialBuild"),
      BooleanRow<&T::IsPrivate>(u"PrivateBuild"),
      BooleanRow<&T::IsDLL>(u"DLL"),
      {u"ProductVersion", true, GetProductVersion, SetProductVersionOf},
      ProductVersionStringRow,
      FileVersionStringRow,
  }};
  return rows;
}

void TVersionInfo::LoadFromPropertySet(const IPropertySet& set, IVersionInformation& info) {
  TVersionInfoValues& values = info.Values();
  for (const auto& name : VSWin32VersionInfoNames)
    if (const auto value = set.GetValue(name)) SetVersionText(values, name, *value);
  for (const auto& row : Win32VersionProperties()) {
    const auto value = set.GetValue(row.Name);
    if (!value) continue;
    try {
      row.Set(values, *value);
    } catch (const EKxException& error) {
      throw EKxException(u"Property set " + set.GetName() + u", " + std::u16string(row.Name) + u": " +
                         error.Message());
    }
  }
}

void TVersionInfo::Merge(const TVersionInfoValues& wanted, IVersionInformation& script) {
  TVersionInfoValues merged = wanted;
  merged.Strings = script.Values().Strings;
  merged.AsRead = script.Values().AsRead;
  for (std::size_t i = 0; i < wanted.Strings.Count(); ++i)
    if (!wanted.Strings.NameOf(i).empty())
      SetVersionText(merged, wanted.Strings.NameOf(i), wanted.Strings.ValueOf(i));
  script.Values() = std::move(merged);
}

bool TVersionInfoContainer::HasName(std::u16string_view name) const {
  return std::any_of(names_.begin(), names_.end(),
                     [name](std::u16string_view known) { return text::EqualsIgnoreCase(known, name); });
}

std::u16string TVersionInfoContainer::NewValue(std::u16string_view name, std::u16string_view oldValue,
                                               bool selectable) const {
  std::u16string value(oldValue);
  if (hook_) hook_(name, oldValue, value, selectable);
  return value;
}

const TVersionInfoValues& TVersionInfoContainer::Values() const {
  TakeStrings();
  return values_;
}

TVersionInfoValues& TVersionInfoContainer::Values() {
  TakeStrings();
  return values_;
}

void TVersionInfoContainer::SetProductVersion(std::u16string_view value) {
  SetProductVersionOf(Values(), value);
}

} // namespace kx
