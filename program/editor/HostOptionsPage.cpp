#include "program/editor/HostOptionsPage.h"

#include "foundation/text/Exceptions.h"
#include "program/runner/DotNetInfo.h"

#include <algorithm>

namespace kx::editor {

namespace {

std::u16string NameOf(const TKnownOption& option) {
  return option.Name.Section + u"." + option.Name.Key;
}

TKxFieldKind KindOf(const TKnownOption& option) {
  switch (option.Kind) {
  case TKnownOption::TKind::Folder:
    return TKxFieldKind::FolderPath;
  case TKnownOption::TKind::File:
    return TKxFieldKind::FilePath;
  default:
    return TKxFieldKind::Text;
  }
}

std::u16string_view HintOf(const TKnownOption& option) {
  if (option.Kind == TKnownOption::TKind::Link)
    return u"The address by which your own editor opens a file at a line, such as "
           u"vscode://file/{file}:{line}:{column} or idea://open?file={file}&line={line}; empty: problems do "
           u"not lead "
           u"to it.";
  return option.Name.Section == DotNetSection
             ? u"The folder that holds MSBuild.exe; empty: what this machine says."
             : u"An applicationHost.config that says where the web servers publish their folders; empty: "
               u"what this "
               u"machine says.";
}

} // namespace

THostOptionsPage::THostOptionsPage(TServiceRegistry& services) : store_(services.Store()) {
  options_ = KnownOptions(services);
  std::erase_if(options_, [&services](const TKnownOption& option) {
    return std::ranges::any_of(services.Options(), [&option](const TRegisteredOptions& row) {
      return row.Class->OptionKey == option.Name.Section;
    });
  });
}

void THostOptionsPage::InitFrame() {
  std::u16string_view section;
  for (const auto& option : options_) {
    if (option.Name.Section != section) AddHeading(option.Name.Section);
    section = option.Name.Section;
    Add({.Name = NameOf(option),
         .Kind = KindOf(option),
         .Label = option.Name.Key,
         .Hint = std::u16string(HintOf(option)),
         .Title = option.Kind == TKnownOption::TKind::Folder ? u"Select Directory" : u"Select File"});
  }
}

void THostOptionsPage::ReadActionData() {
  for (const auto& option : options_)
    Show(NameOf(option), store_.Get(option.Name).value_or(u""));
}

void THostOptionsPage::WriteActionData() {
  for (const auto& option : options_) {
    const std::u16string& value = Value(NameOf(option));
    if (value == store_.Get(option.Name).value_or(u"")) continue;
    static_cast<void>(CheckPlace(option, value)); // a folder that is not there yet may come
    if (value.empty()) {
      store_.Remove(option.Name);
    } else {
      store_.Set(option.Name, value);
    }
  }
}

} // namespace kx::editor
