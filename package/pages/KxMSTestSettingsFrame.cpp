#include "package/pages/KxMSTestSettingsFrame.h"

#include "package/buildaction/KxVSDotNetOptions.h"

#include <algorithm>

namespace kx {

namespace {

constexpr std::u16string_view StandaloneItem = u"Standalone MSTest";
constexpr auto FirstVersion = TVSDotNetVersion::vs2005; // the first that had an MSTest

TVSDotNetVersion DefaultVersion() {
  const auto* options = VSDotNetOptions();
  return options == nullptr ? FirstVersion : std::max(options->GetDefaultVSVersion(), FirstVersion);
}

// In the order of the drop-down's items, those of the versions.
TVSDotNetVersion VersionAt(std::size_t item) {
  return static_cast<TVSDotNetVersion>(static_cast<std::size_t>(FirstVersion) + item);
}

} // namespace

const TKxPageClass& TMSTestSettingsFrame::Class() {
  return PageClassOf<TMSTestSettingsFrame>(u"TMSTestSettingsFrame");
}

void TMSTestSettingsFrame::InitFrame() {
  Add({.Name = u"txtConfigFileName",
       .Kind = TKxFieldKind::FilePath,
       .Label = u"Run Configuration File",
       .Property = u"ConfigFileName",
       .Title = u"Select File",
       .Filter = u"Run Config Files (*.testrunconfig)|*.testrunconfig|All Files (*.*)|*.*"});
  Add({.Name = u"txtOutputFileName",
       .Kind = TKxFieldKind::FilePath,
       .Label = u"Results File Path",
       .Property = u"OutputFileName",
       .Title = u"Select File",
       .Filter = u"Output File (*.trx)|*.trx|All Files (*.*)|*.*"});
  Add({.Name = u"RzButtonEditStartingDirectory",
       .Kind = TKxFieldKind::FolderPath,
       .Label = u"Starting Directory",
       .Property = u"StartingDirectory",
       .Title = u"Select Starting Directory"});
  AddHeading(u"MSTest Options");
  Add({.Name = u"chkShowBanner",
       .Kind = TKxFieldKind::CheckBox,
       .Label = u"Show banner at startup",
       .Property = u"ShowBanner"});
  AddHeading(u"Version");
  Add({.Name = u"cmbVSVer",
       .Kind = TKxFieldKind::DropDown,
       .Label = u"MSTest Version",
       .Property = u"VisualStudioVer",
       .IsOwn = true,
       .Places = {u"VisualStudio.NET Options", u"Standalone MSTest Path"}});
}

void TMSTestSettingsFrame::InitPage(TKxPersistent& edited) {
  TActionPage::InitPage(edited);
  std::vector<std::u16string> items;
  for (std::size_t i = 0; VersionAt(i) <= TVSDotNetVersion::vsUnknown; ++i)
    items.push_back(GetVSName(VersionAt(i)));
  items.emplace_back(StandaloneItem);
  SetItems(u"cmbVSVer", std::move(items));
}

void TMSTestSettingsFrame::ReadActionData() {
  TActionPage::ReadActionData();
  const TMSTestRunSettings& run = action_->RunSettings();
  // A version before those offered selects none: its name is not among the items.
  Show(u"cmbVSVer",
       run.UseStandaloneMSTest ? std::u16string(StandaloneItem) : GetVSName(run.VisualStudioVer));
}

void TMSTestSettingsFrame::WriteActionData() {
  TActionPage::WriteActionData();
  TMSTestRunSettings& run = action_->RunSettings();
  const TKxPageField& version = Field(u"cmbVSVer");
  run.UseStandaloneMSTest = version.Value == StandaloneItem;
  if (run.UseStandaloneMSTest)
    run.VisualStudioVer = DefaultVersion();
  else if (const auto item = std::ranges::find(version.Items, version.Value); item != version.Items.end())
    run.VisualStudioVer = VersionAt(static_cast<std::size_t>(item - version.Items.begin()));
}

} // namespace kx
