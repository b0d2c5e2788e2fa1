#include "package/pages/KxVersionInfoUpdaterFrame.h"

#include "contract/Utilities.h"
#include "foundation/text/Text.h"
#include "package/pages/PageSupport.h"
#include "package/pages/SolutionOffers.h"
#include "package/versioninfo/KxVersionInfoUpdaterAction.h"
#include "package/versioninfo/VersionInfo.h"

#include <algorithm>

namespace kx {

namespace {

constexpr TKxTableField UpdaterFields[] = {
    {.Property = u"ResourceFile",
     .Kind = TKxFieldKind::FilePath,
     .Filter = u"Resource Scripts (*.rc)|*.rc|All Files (*.*)|*.*"},
    {.Property = u"PropertySetName", .OffersTitle = u"Property sets of the project"},
    {.Property = u"PropertiesToUpdate", .OffersTitle = u"Properties that can be updated"},
};

TKxFieldOffers OfferUpdates(std::u16string_view value) {
  text::TStringList selected;
  selected.SetText(value);
  TKxFieldOffers offers;
  const auto offer = [&](std::u16string_view name) {
    TKxFieldOffer row{std::u16string(name) + u"=True", std::u16string(name),
                      StringToBoolean(selected.Value(name)).value_or(false)};
    for (std::size_t i = 0; i < selected.Count(); ++i) // a line that says False, too, has had its day
      if (text::EqualsIgnoreCase(selected.NameOf(i), name)) row.Lines.push_back(selected[i]);
    offers.Items.push_back(std::move(row));
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
  if (name != u"PropertySetName") return {};
  auto& action = static_cast<TKxVersionInfoUpdaterAction&>(Edited());
  return OfferPropertySets(GetWin32PropertySetsStrs(action.GetPropertySetService()), field.Value);
}

void RegisterPropertyPage() {
  const TKxPageClass* const page = &TKxVersionInfoUpdaterFrame::Class();
  ActionService().RegisterPropertyPages(TKxVersionInfoUpdaterAction::Class(), {&page, 1});
}

} // namespace kx
