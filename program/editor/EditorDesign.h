// What property pages ask of the design environment, answered from what the browser sent along.
#pragma once

#include "contract/Services.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kx::editor {

// The browser shows its chooser before it tells of the click, so the choice is there when the page asks.
class TEditorDesign : public IKxDesignService, public IKxPropertySetDesignServices {
public:
  std::function<text::TStringList()> VariableNames;
  std::optional<std::u16string> Choice;
  std::vector<std::u16string> Messages; // for the user, not shown yet

  text::TStringList GetVariableNames() override {
    return VariableNames ? VariableNames() : text::TStringList();
  }
  std::optional<std::u16string> BrowseForDirectory(std::u16string_view /*title*/,
                                                   std::u16string_view /*start*/) override {
    return Choice;
  }
  std::optional<std::u16string> BrowseForFile(std::u16string_view /*title*/, std::u16string_view /*start*/,
                                              std::u16string_view /*filter*/,
                                              std::u16string_view /*extension*/) override {
    return Choice;
  }
  void ShowMessage(std::u16string_view text) override { Messages.emplace_back(text); }
  bool EditPropertySet(std::u16string_view /*name*/) override {
    return false;
  } // they have a page of their own
};

} // namespace kx::editor
