#include "package/buildaction/KxVSDotNetOptions.h"

#include "contract/Services.h"
#include "foundation/platform/Registry.h"
#include "foundation/text/Text.h"

namespace kx {

namespace {

constexpr std::u16string_view DefaultVersionKey = u"DefVSVersion";
constexpr std::u16string_view StandaloneMSTestKey = u"StandaloneMSTestDir";

} // namespace

TVSDotNetOptions::TVSDotNetOptions() : registry_(&platform::ReadLocalMachineString) {}

const TKxOptionsClass& TVSDotNetOptions::Class() {
  static const TKxOptionsClass optionsClass{
      GetName(), GetOptionKey(), GetCategory(), u"DEVENV",
      []() -> std::unique_ptr<TKxOptionsObject> { return std::make_unique<TVSDotNetOptions>(); }};
  return optionsClass;
}

const TKxPropertyTable& TVSDotNetOptions::PublishedProperties() const {
  using T = TVSDotNetOptions;
  constexpr std::u16string_view location = u"The folder that holds its executable (Common7\\IDE); empty: "
                                           u"what the registry says when the options are "
                                           u"read.";
  static const TKxPropertyTable table = [&] {
    TKxPropertyRows<T> rows;
    for (std::size_t i = 0; i < VSDotNetVersions.size(); ++i)
      rows.Accessors(
          VSDotNetVersions[i].Property, [i](const T& options) { return options.locations_[i]; },
          [i](T& options, std::u16string_view value) { options.Assign(options.locations_[i], value); },
          location);
    rows.Accessors(u"DefaultVSVersion", &T::GetDefaultVSVersion, &T::SetDefaultVSVersion,
                   u"The version that new actions use.")
        .Accessors(u"StandaloneMSTestDir", &T::GetStandaloneMSTestDir, &T::SetStandaloneMSTestDir,
                   u"The folder that holds the MSTest.exe of no Visual Studio.");
    auto all = rows.Take();
    for (auto& row : all)
      if (row.Kind == TKxPropertyKind::Enumeration) row.Enumeration = &VSDotNetVersionEnumeration;
    return TKxPropertyTable(std::move(all));
  }();
  return table;
}

void TVSDotNetOptions::GetPropertyAlias(text::TStringList& aliases) const {
  for (const TVSDotNetVersionRow& version : VSDotNetVersions)
    aliases.Add(std::u16string(version.Property) + u"=" + std::u16string(version.DisplayName));
  aliases.Add(u"DefaultVSVersion=Default Version");
  aliases.Add(u"StandaloneMSTestDir=Standalone MSTest");
}

void TVSDotNetOptions::LoadOptions(const IKxOptionsReader& reader) {
  TKxOptionsObject::LoadOptions(reader);
  for (std::size_t i = 0; i < VSDotNetVersions.size(); ++i) {
    locations_[i] = reader.ReadString(VSDotNetVersions[i].OptionKey, u"");
    if (!locations_[i].empty()) continue;
    const std::u16string key =
        u"SOFTWARE\\Microsoft\\VisualStudio\\" + std::u16string(VSDotNetVersions[i].Registry);
    Assign(locations_[i], registry_(key, u"InstallDir").value_or(std::u16string()));
  }
  const std::int32_t version = reader.ReadInteger(DefaultVersionKey, -1);
  defaultVersion_ = version <= -1 ? GetHighestInstalledVSVersion() : static_cast<TVSDotNetVersion>(version);
  standaloneMSTestDir_ = reader.ReadString(StandaloneMSTestKey, u"");
}

void TVSDotNetOptions::SaveOptions(IKxOptionsWriter& writer) {
  TKxOptionsObject::SaveOptions(writer);
  for (std::size_t i = 0; i < VSDotNetVersions.size(); ++i)
    writer.WriteString(VSDotNetVersions[i].OptionKey, locations_[i]);
  writer.WriteInteger(DefaultVersionKey, static_cast<std::int32_t>(defaultVersion_));
  writer.WriteString(StandaloneMSTestKey, standaloneMSTestDir_);
}

std::vector<TKxOptionDescription> TVSDotNetOptions::DescribeOptions() const {
  std::vector<TKxOptionDescription> options;
  options.reserve(VSDotNetVersions.size() + 2);
  for (const TVSDotNetVersionRow& row : VSDotNetVersions)
    options.push_back({.Key = row.OptionKey, .IsFolder = true});
  options.push_back({.Key = DefaultVersionKey, .Enumeration = &VSDotNetVersionEnumeration});
  options.push_back({.Key = StandaloneMSTestKey, .IsFolder = true});
  return options;
}

void TVSDotNetOptions::SetDefaultVSVersion(TVSDotNetVersion value) {
  if (value == defaultVersion_) return;
  defaultVersion_ = value;
  SetModified();
}

void TVSDotNetOptions::Assign(std::u16string& field, std::u16string_view value) {
  if (field == value) return;
  field = value;
  SetModified();
}

std::u16string TVSDotNetOptions::GetDevEnvLocation(TVSDotNetVersion version) const {
  const auto index = static_cast<std::size_t>(version);
  return index < locations_.size() ? std::u16string(text::Trim(locations_[index])) : std::u16string();
}

std::u16string TVSDotNetOptions::GetLocationOption(TVSDotNetVersion version) {
  const auto* row = RowOf(version);
  if (row == nullptr) return {};
  return std::u16string(GetOptionKey()) + u"." + std::u16string(row->OptionKey);
}

TVSDotNetVersion TVSDotNetOptions::GetHighestInstalledVSVersion() const {
  for (auto i = static_cast<std::int32_t>(TVSDotNetVersion::vsUnknown); i >= 0; --i)
    if (const auto version = static_cast<TVSDotNetVersion>(i); !GetDevEnvLocation(version).empty())
      return version;
  return TVSDotNetVersion::vs2005;
}

std::u16string GetVSName(TVSDotNetVersion version) {
  const auto* row = RowOf(version);
  return std::u16string(row == nullptr ? u"Visual Studio" : row->DisplayName);
}

TVSDotNetOptions* VSDotNetOptions() {
  IKxOptionsService* service = CurrentServices().Options;
  if (service == nullptr) return nullptr;
  return static_cast<TVSDotNetOptions*>(
      service->GetOptions(TVSDotNetOptions::GetName(), TVSDotNetOptions::GetCategory()));
}

void RegisterOptions() {
  OptionsService().RegisterOptions(TVSDotNetOptions::Class());
  CoreScriptingService().RegisterEnumeration(VSDotNetVersionEnumeration);
}

} // namespace kx
