#include "package/pages/KxVSDotNetSolutionIteratorFrame.h"

#include "foundation/text/Text.h"

#include <array>

namespace kx {

namespace {

struct TChoiceRow {
  std::u16string_view Name;
  std::u16string_view Label;
  TVSIterateSolutionValue Value;
};
constexpr std::array<TChoiceRow, 4> Choices{{
    {u"rbName", u"Project Name", TVSIterateSolutionValue::svName},
    {u"rbAbsPath", u"Project File Absolute Path", TVSIterateSolutionValue::svFullPath},
    {u"rbRelPath", u"Project File Relative Path", TVSIterateSolutionValue::svRelativePath},
    {u"rbProjId", u"Project ID", TVSIterateSolutionValue::svProjectId},
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
         .Group = u"IterateValue"});
  AddHeading(u"Variable To Set");
  Add({.Name = u"cmbVariable",
       .Kind = TKxFieldKind::DropDown,
       .Property = u"LoopVariable",
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
       .Group = u"Order"});
  AddHeading(u"Options");
  Add({.Name = u"chkOnlyFoundFiles",
       .Kind = TKxFieldKind::CheckBox,
       .Label = u"Only include projects found on disk",
       .Property = u"IncludeProjectsNotFound"});
  Check(u"RadioButton2");
}

void TSolutionIteratorFrame::InitPage(TKxPersistent& edited) {
  TActionPage::InitPage(edited);
  const text::TStringList names = DesignService().GetVariableNames();
  SetItems(u"cmbVariable", {names.begin(), names.end()});
}

void TSolutionIteratorFrame::ReadActionData() {
  Show(u"txtSolution", action_->Solution);
  for (const auto& row : Choices)
    Check(row.Name, row.Value == action_->IterateValue);
  Show(u"cmbVariable", u"");
  for (const auto& name : Field(u"cmbVariable").Items) // letter case means nothing in a variable's name
    if (text::EqualsIgnoreCase(name, action_->GetLoopVariable())) Show(u"cmbVariable", name);
  Check(action_->SortByDependency ? u"rbDepOrder" : u"RadioButton2");
  Check(u"chkOnlyFoundFiles", !action_->IncludeProjectsNotFound);
}

void TSolutionIteratorFrame::WriteActionData() {
  action_->Solution = Value(u"txtSolution");
  action_->IterateValue = TVSIterateSolutionValue::svProjectId; // when nothing is checked
  for (const auto& row : Choices)
    if (IsChecked(row.Name)) action_->IterateValue = row.Value;
  action_->SetLoopVariable(Value(u"cmbVariable"));
  action_->SortByDependency = IsChecked(u"rbDepOrder");
  action_->IncludeProjectsNotFound = !IsChecked(u"chkOnlyFoundFiles");
}

} // namespace kx
