// Property pages as models: no toolkit in them. A design environment draws the fields and calls back.
#pragma once

#include "host/Actions.h"

namespace kx {

// The page contract. InitFrame once after creation, InitPage for each action shown, then ReadActionData;
// OnPageActivate and OnPageDeActivate as the user comes and goes; WriteActionData when the user accepts.
class TKxPropertyPage {
public:
  virtual ~TKxPropertyPage() = default;
  virtual std::u16string PageName() const = 0;
  virtual void InitFrame() {}
  virtual void InitPage(TCustomKxAction& action) = 0; // the action outlives its use by the page
  virtual void OnPageActivate() {}
  virtual void OnPageDeActivate() {}
  virtual void ReadActionData() = 0;
  virtual void WriteActionData() = 0;
};

// Choosers of the design service. True when the user chose; `path` is where to start, then the choice.
bool KxBrowseForDirectory(std::u16string_view title, std::u16string& path);
bool KxBrowseForFile(std::u16string_view title, std::u16string& path, std::u16string_view filter);
void ShowMessage(std::u16string_view text);

} // namespace kx
