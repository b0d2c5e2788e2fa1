#include "package/pages/KxMSTestPublishFrame.h"

#include <array>

namespace kx {

namespace {

struct TChoiceRow {
  std::u16string_view Name;
  std::u16string_view Label;
  std::u16string_view Mode;
};
constexpr std::array<TChoiceRow, 3> Choices{{
    {u"rbNoPublish", u"Don't publish results", u"pbNone"},
    {u"rbAutoPublish", u"Automatically publish results when running under Team Build", u"pbAuto"},
    {u"rbPublishSpecific", u"Publish results using the following settings:", u"pbSpecify"},
}};

struct TTextRow {
  std::u16string_view Name;
  std::u16string_view Label;
  std::u16string_view Property;
  std::u16string_view CheckedAs; // by validation
};
constexpr std::array<TTextRow, 5> Texts{{
    {u"txtTeamServer", u"Team Server:", u"TeamServer", u"Team Server Name"},
    {u"txtTeamProject", u"Team Project:", u"TeamProject", u"Team Project Name"},
    {u"txtBuildID", u"Build ID:", u"BuildId", u"Team Build Id"},
    {u"txtPlatform", u"Build Platform:", u"BuildPlatform", u"Build Platform"},
    {u"txtFlavor", u"Build Flavor:", u"BuildFlavor", u"Build Flavor"},
}};

} // namespace

const TKxPageClass& TMSTestPublishFrame::Class() {
  return PageClassOf<TMSTestPublishFrame>(u"TMSTestPublishFrame");
}

void TMSTestPublishFrame::InitFrame() {
  AddHeading(u"Publish Results to Team System:");
  for (const auto& row : Choices)
    Add({.Name = std::u16string(row.Name),
         .Kind = TKxFieldKind::Choice,
         .Label = std::u16string(row.Label),
         .Property = u"PublishMode",
         .Means = std::u16string(row.Mode),
         .Group = u"PublishMode"});
  for (const auto& row : Texts)
    Add({.Name = std::u16string(row.Name),
         .Label = std::u16string(row.Label),
         .Property = std::u16string(row.Property),
         .Places = {row.CheckedAs}});
}

void TMSTestPublishFrame::ApplyEnableRules() {
  for (const auto& row : Texts)
    Enable(row.Name, IsChecked(u"rbPublishSpecific"));
}

} // namespace kx
