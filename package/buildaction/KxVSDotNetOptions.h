// Machine-wide settings: where each Visual Studio and a stand-alone MSTest are installed.
#pragma once

#include "contract/Options.h"
#include "package/solution/VSNETSLN.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace kx {

// A location is the folder that holds the Visual Studio executable. One that the store lacks is filled from
// the registry when the options are loaded, and marks them modified. Nothing here raises: what is not known
// is empty.
class TVSDotNetOptions : public TKxOptionsObject {
public:
  // Reads a text value below HKEY_LOCAL_MACHINE.
  using TRegistryRead = std::optional<std::u16string> (*)(std::u16string_view key, std::u16string_view value);

  TVSDotNetOptions();
  explicit TVSDotNetOptions(TRegistryRead registry) : registry_(registry) {}

  static std::u16string_view GetName() { return u"Visual Studio.Net"; }
  static std::u16string_view GetOptionKey() { return u"VisualStudioDotNet"; }
  static std::u16string_view GetCategory() { return u"Compilers"; }
  static const TKxOptionsClass& Class();

  const TKxPropertyTable& PublishedProperties() const override;
  void GetPropertyAlias(text::TStringList& aliases) const override;
  void LoadOptions(const IKxOptionsReader& reader) override;
  void SaveOptions(IKxOptionsWriter& writer) override;
  std::vector<TKxOptionDescription> DescribeOptions() const override;

  // As stored. vsUnknown and anything beyond has no location.
  const std::u16string& GetDevEnv2002Location() const { return locations_[0]; }
  const std::u16string& GetDevEnv2003Location() const { return locations_[1]; }
  const std::u16string& GetDevEnv2005Location() const { return locations_[2]; }
  const std::u16string& GetDevEnv2008Location() const { return locations_[3]; }
  const std::u16string& GetDevEnv2010Location() const { return locations_[4]; }
  TVSDotNetVersion GetDefaultVSVersion() const { return defaultVersion_; }
  const std::u16string& GetStandaloneMSTestDir() const { return standaloneMSTestDir_; }

  // Setting what is already there leaves the options unmodified; letter case counts.
  void SetDevEnv2002Location(std::u16string_view value) { Assign(locations_[0], value); }
  void SetDevEnv2003Location(std::u16string_view value) { Assign(locations_[1], value); }
  void SetDevEnv2005Location(std::u16string_view value) { Assign(locations_[2], value); }
  void SetDevEnv2008Location(std::u16string_view value) { Assign(locations_[3], value); }
  void SetDevEnv2010Location(std::u16string_view value) { Assign(locations_[4], value); }
  void SetDefaultVSVersion(TVSDotNetVersion value);
  void SetStandaloneMSTestDir(std::u16string_view value) { Assign(standaloneMSTestDir_, value); }

  std::u16string GetDevEnvLocation(TVSDotNetVersion version) const; // trimmed
  // The name under which users set that location ("VisualStudioDotNet.MSDevPath2008"); empty where there is
  // none.
  static std::u16string GetLocationOption(TVSDotNetVersion version);
  // The newest version that has a location; vs2005 when none has.
  TVSDotNetVersion GetHighestInstalledVSVersion() const;

private:
  void Assign(std::u16string& field, std::u16string_view value);

  TRegistryRead registry_;
  std::array<std::u16string, VSDotNetVersions.size()> locations_;
  TVSDotNetVersion defaultVersion_ = TVSDotNetVersion::vs2002;
  std::u16string standaloneMSTestDir_;
};

// The display name of a version.
std::u16string GetVSName(TVSDotNetVersion version);

// The one object of the running host; null when it has none. Not owned by the caller.
TVSDotNetOptions* VSDotNetOptions();

// Called once, when the package registers.
void RegisterOptions();

} // namespace kx
