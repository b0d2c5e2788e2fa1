// An editor around one page: its action's host, a design service that answers from members, and verbs.
#pragma once

#include "contract/Pages.h"
#include "package/buildaction/KxVSDotNetOptions.h"
#include "tests/support/Failure.h"
#include "tests/support/RecordingHost.h"

#include <gmock/gmock.h>

namespace kx::tests {

using TEdits = std::vector<std::pair<std::u16string_view, std::u16string_view>>;

class TEditor : public TFakeServices, public IKxDesignService {
public:
  TEditor() {
    RegisterOptions(TVSDotNetOptions::Class());
    TKxServices services = CurrentServices();
    services.Design = this;
    SetServices(services);
  }
  std::u16string Chosen; // what the user picks in the next chooser; empty: gives up
  std::string Asked;     // what that chooser was told
  TRecordingHost Host;

  // Opens the page on the object, makes the edits and accepts; what the page first showed in `field`.
  template <typename TPage>
  std::u16string Edit(TKxPersistent& edited, const TEdits& edits, std::u16string_view field) {
    TPage page;
    Open(page, edited);
    std::u16string shown = page.Field(field).Value;
    for (const auto& [name, value] : edits)
      page.SetValue(name, value);
    page.WriteActionData();
    return shown;
  }
  static void Open(TKxPropertyPage& page, TKxPersistent& edited) {
    page.InitFrame();
    page.InitPage(edited);
    page.ReadActionData();
  }

  text::TStringList GetVariableNames() override { return {u"Root", u"Project"}; }
  std::optional<std::u16string> BrowseForDirectory(std::u16string_view title,
                                                   std::u16string_view start) override {
    return BrowseForFile(title, start, u"folder", {});
  }
  std::optional<std::u16string> BrowseForFile(std::u16string_view title, std::u16string_view start,
                                              std::u16string_view filter,
                                              std::u16string_view extension) override {
    Asked = text::ToUtf8(std::u16string(title) + u" from " + std::u16string(start) + u": " +
                         std::u16string(filter));
    return Chosen.empty() ? std::nullopt : std::optional(KxChosenFile(Chosen, extension));
  }
  void ShowMessage(std::u16string_view /*text*/) override {}
};

// Of the form Field=Value&Field=Value.
inline void Type(TKxPropertyPage& page, std::u16string_view edits) {
  for (const auto edit : text::Split(edits, u'&'))
    page.SetValue(edit.substr(0, edit.find(u'=')), edit.substr(edit.find(u'=') + 1));
}

// The names of the checked or of the enabled fields, in drawing order.
template <typename TTest>
std::vector<std::string> NamesWhere(const TKxPropertyPage& page, const TTest& test) {
  std::vector<std::string> names;
  for (const auto& field : page.Fields())
    if (!field.Name.empty() && test(field)) names.push_back(text::ToUtf8(field.Name));
  return names;
}
inline std::vector<std::string> Checked(const TKxPropertyPage& page) {
  return NamesWhere(page, [](const auto& field) { return field.IsChecked(); });
}
inline std::vector<std::string> Disabled(const TKxPropertyPage& page) {
  return NamesWhere(page, [](const auto& field) { return !field.Enabled; });
}
} // namespace kx::tests
