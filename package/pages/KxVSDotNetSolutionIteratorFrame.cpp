#include "package/pages/KxVSDotNetSolutionIteratorFrame.h"

#include "contract/Utilities.h"
#include "foundation/text/Text.h"

#include <algorithm>
#include <array>

namespace kx {

namespace {

struct TChoiceRow {
  std::u16string_view Name;
  std::u16string_view Label;
  std::u16string_view Value;
};
constexpr std::array<TChoiceRow, 4> Choices{{
    {u"rbName", u"Project Name", u"svName"},
    {u"rbAbsPath", u"Project File Absolute Path", u"svFullPath"},
    {u"rbRelPath", u"Project File Relative Path", u"svRelativePath"},
    {u"rbProjId", u"Project ID", u"svProjectId"},
}};

} // namespace

const TKxPageClass& TSolutionIteratorFrame::Class() {
  return PageClassOf<TSolutionIteratorFrame>(u"TSolutionIteratorFrame");
}

void TSolutionIteratorFrame::InitFrame() {
  Add({.Name = u"txtSolution",
       .Kind = TKxFieldKind::FilePath,
       .Label = u"Solution File :",
       .Property = u"Solution",
       .Title = u"Select Solution",
       .Filter = u"Solution Files (*.sln)|*.sln",
       .DefaultExtension = u".sln",
       .Buttons = {{TKxButtonKind::Custom, u"Refresh Configuration List"}}});
  AddHeading(u"Project Property to Iterate");
  for (const auto& row : Choices)
    Add({.Name = std::u16string(row.Name),
         .Kind = TKxFieldKind::Choice,
         .Label = std::u16string(row.Label),
         .Property = u"IterateValue",
         .Means = std::u16string(row.Value),
         .Group = u"IterateValue"});
  AddHeading(u"Variable To Set");
  Add({.Name = u"cmbVariable",
       .Kind = TKxFieldKind::DropDown,
       .Property = u"LoopVariable",
       .IsOwn = true,
       .TakesNewItems = true});
  AddHeading(u"Order");
  Add({.Name = u"rbDepOrder",
       .Kind = TKxFieldKind::Choice,
       .Label = u"Iterate projects in dependency order",
       .Property = u"SortByDependency",
       .Group = u"Order"});
  Add({.Name = u"RadioButton2",
       .Kind = TKxFieldKind::Choice,
       .Label = u"Iterate projects in solution file order",
       .Property = u"SortByDependency",
       .Means = BooleanToString(false),
       .Group = u"Order"});
  AddHeading(u"Options");
  Add({.Name = u"chkOnlyFoundFiles",
       .Kind = TKxFieldKind::CheckBox,
       .Label = u"Only include projects found on disk",
       .Property = u"IncludeProjectsNotFound",
       .Means = BooleanToString(false)});
  Check(u"RadioButton2");
}

void TSolutionIteratorFrame::InitPage(TKxPersistent& edited) {
  TActionPage::InitPage(edited);
  const text::TStringList names = DesignService().GetVariableNames();
  SetItems(u"cmbVariable", {names.begin(), names.end()});
}

void TSolutionIteratorFrame::ReadActionData() {
  TActionPage::ReadActionData();
  Show(u"cmbVariable", u"");
  for (const auto& name : Field(u"cmbVariable").Items) // letter case means nothing in a variable's name
    if (text::EqualsIgnoreCase(name, action_->GetLoopVariable())) Show(u"cmbVariable", name);
}

void TSolutionIteratorFrame::WriteActionData() {
  TActionPage::WriteActionData();
  if (std::ranges::none_of(Choices, [this](const TChoiceRow& row) { return IsChecked(row.Name); }))
    action_->IterateValue = TVSIterateSolutionValue::svProjectId;
  action_->SetLoopVariable(Value(u"cmbVariable"));
}

} // namespace kx
