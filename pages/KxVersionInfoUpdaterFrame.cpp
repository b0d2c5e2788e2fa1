#include "pages/KxVersionInfoUpdaterFrame.h"

#include "host/Utilities.h"
#include "host/VersionInfo.h"
#include "pages/PageSupport.h"
#include "text/Text.h"
#include "versioninfo/KxVersionInfoUpdaterAction.h"

#include <algorithm>

namespace kx {

namespace {

constexpr TKxTableField UpdaterFields[] = {
    {.Property = u"ResourceFile",
     .Kind = TKxFieldKind::FilePath,
     .Filter = u"Resource Scripts (*.rc)|*.rc|All Files (*.*)|*.*"},
    {.Property = u"PropertySetName", .HasOffers = true},
    {.Property = u"PropertiesToUpdate", .HasOffers = true},
};

TKxFieldOffers OfferUpdates(std::u16string_view value) {
  text::TStringList selected;
  selected.SetText(value);
  TKxFieldOffers offers;
  const auto offer = [&](std::u16string_view name) {
    offers.Items.push_back({std::u16string(name) + u"=True", std::u16string(name),
                            StringToBoolean(selected.Value(name)).value_or(false)});
  };
  for (const auto& property : Win32VersionProperties())
    if (property.Selectable) offer(property.Name);
  for (const auto name : VSWin32VersionInfoNames)
    if (std::ranges::find(offers.Items, name, &TKxFieldOffer::Label) == offers.Items.end()) offer(name);
  return offers;
}

} // namespace

TKxVersionInfoUpdaterFrame::TKxVersionInfoUpdaterFrame()
    : TKxTablePage(u"Version Info Updater", UpdaterFields) {}

const TKxPageClass& TKxVersionInfoUpdaterFrame::Class() {
  return PageClassOf<TKxVersionInfoUpdaterFrame>(u"TKxVersionInfoUpdaterFrame");
}

TKxFieldOffers TKxVersionInfoUpdaterFrame::Offers(std::u16string_view name, const TKxEvent* /*stop*/) {
  const TKxPageField& field = Field(name);
  if (name == u"PropertiesToUpdate") return OfferUpdates(field.Value);
  TKxFieldOffers offers;
  if (name != u"PropertySetName") return offers;
  auto& action = static_cast<TKxVersionInfoUpdaterAction&>(Edited());
  for (const auto& set : GetWin32PropertySetsStrs(action.GetPropertySetService()))
    offers.Items.push_back({set, set, text::EqualsIgnoreCase(set, field.Value)});
  if (offers.Items.empty()) offers.Error = u"The project has no property sets of this kind.";
  return offers;
}

void RegisterPropertyPage() {
  const TKxPageClass* const page = &TKxVersionInfoUpdaterFrame::Class();
  ActionService().RegisterPropertyPages(TKxVersionInfoUpdaterAction::Class(), {&page, 1});
}

} // namespace kx
