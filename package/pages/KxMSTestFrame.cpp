#include "package/pages/KxMSTestFrame.h"

#include "contract/Utilities.h"
#include "foundation/text/Text.h"

#include <algorithm>

namespace kx {

namespace {

// No path holds a bar: one inside quotation marks separates too.
text::TStringList ContainerLines(std::u16string_view property) {
  text::TStringList lines;
  for (const auto& item : SplitTestContainers(property))
    for (const auto line : text::Split(item, u'|'))
      lines.Add(line);
  return lines;
}

std::u16string Quoted(std::u16string_view line) {
  const bool isQuoted = line.size() > 1 && line.starts_with(u'"') && line.ends_with(u'"'); // a pasted path
  return isQuoted ? std::u16string(line) : u'"' + std::u16string(line) + u'"';
}

// "%Tests%", "$(Tests)": its value may be several containers, unless it stands in quotation marks.
bool IsReference(std::u16string_view line) {
  constexpr auto npos = std::u16string_view::npos;
  if (line.starts_with(u"$(")) return line.ends_with(u')') && line.find(u'$', 1) == npos;
  return line.size() > 2 && line.starts_with(u'%') && line.find(u'%', 1) == line.size() - 1;
}

} // namespace

const TKxPageClass& TMSTestFrame::Class() {
  return PageClassOf<TMSTestFrame>(u"TMSTestFrame");
}

void TMSTestFrame::InitFrame() {
  const std::u16string source = u"Test Source:";
  AddHeading(source);
  Add({.Name = u"RadioButton1",
       .Kind = TKxFieldKind::Choice,
       .Label = u"Test Container file(s) or assembly(s):",
       .Property = u"UseMetadataFile",
       .Means = BooleanToString(false),
       .Group = source});
  Add({.Name = u"txtAssemblyFilename",
       .Kind = TKxFieldKind::FilePath,
       .Title = u"Select File",
       .Filter = u"Assemblies (*.dll, *.exe)|*.dll;*.exe|All Files (*.*)|*.*",
       .Buttons = {{TKxButtonKind::Accept, u"Add to the list"}}});
  Add({.Name = u"MemoAssemblies",
       .Kind = TKxFieldKind::List,
       .Property = u"AssemblyFileName",
       .IsOwn = true});
  Add({.Name = u"rbUseTestMetadata",
       .Kind = TKxFieldKind::Choice,
       .Label = u"Test Metadata File:",
       .Property = u"UseMetadataFile",
       .Group = source});
  Add({.Name = u"edtTestMetadata",
       .Kind = TKxFieldKind::FilePath,
       .Property = u"MetadataFile",
       .Title = u"Select File",
       .Filter = u"Test Metadata Files (.vsmdi)|*.vsmdi|All Files (*.*)|*.*"});
  AddHeading(u"Tests To Run:");
  Add({.Name = u"chkSpecifyTestList",
       .Kind = TKxFieldKind::CheckBox,
       .Label = u"Specify Test Lists:",
       .Property = u"SpecifyTestList"});
  Add({.Name = u"txtTestList", .Property = u"TestList"});
  Add({.Name = u"chkSpecifyTests",
       .Kind = TKxFieldKind::CheckBox,
       .Label = u"Specify Tests:",
       .Property = u"SpecifyTests"});
  Add({.Name = u"txtTests",
       .Property = u"Tests",
       .Hint = u"(Separate multiple tests or test lists with commas.)"});
  Check(u"RadioButton1");
}

void TMSTestFrame::ReadActionData() {
  TActionPage::ReadActionData();
  const TMSTestInput& input = action_->Input();
  const text::TStringList lines = ContainerLines(input.AssemblyFileName);
  Show(u"MemoAssemblies", lines.GetText());
  bare_.clear();
  for (const auto& line : lines)
    if (IsReference(line) && input.AssemblyFileName.find(Quoted(line)) == std::u16string::npos)
      bare_.insert(line);
  Show(u"txtAssemblyFilename", u"");
}

void TMSTestFrame::Accept(std::u16string_view /*name*/) {
  const std::u16string container = Value(u"txtAssemblyFilename");
  Show(u"txtAssemblyFilename", u""); // what is taken can be removed from the list again
  text::TStringList lines;
  lines.SetText(Value(u"MemoAssemblies"));
  // Letter case counts here, so IndexOf will not do.
  if (container.empty() || std::ranges::find(lines, container) != lines.end()) return;
  lines.Add(container);
  Show(u"MemoAssemblies", lines.GetText());
}

void TMSTestFrame::WriteActionData() {
  TActionPage::WriteActionData();
  Accept(u"txtAssemblyFilename");
  text::TStringList lines;
  lines.SetText(Value(u"MemoAssemblies"));
  std::u16string containers;
  for (const auto& line : lines)
    if (!line.empty())
      containers += (containers.empty() ? u"" : u"|") + (bare_.contains(line) ? line : Quoted(line));
  action_->Input().AssemblyFileName = containers;
}

void TMSTestFrame::ApplyEnableRules() {
  const bool metadata = IsChecked(u"rbUseTestMetadata");
  Enable(u"edtTestMetadata", metadata);
  Enable(u"txtAssemblyFilename", !metadata);
  Enable(u"chkSpecifyTestList", metadata);
  Enable(u"txtTestList", metadata && IsChecked(u"chkSpecifyTestList"));
  Enable(u"txtTests", IsChecked(u"chkSpecifyTests"));
}

} // namespace kx
