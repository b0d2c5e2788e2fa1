// The page of the Build action on which the user says how the folders of web projects are found.
#pragma once

#include "build/KxVSDotNetAction.h"
#include "host/Pages.h"

namespace kx {

// All values are kept and stay editable whichever way is chosen.
class TVSDotNetWebProjectLocationFrame : public TKxPropertyPage {
public:
  static const TKxPageClass& Class();
  std::u16string PageName() const override { return u"Project Detection"; }
  void InitFrame() override;
  void InitPage(TKxPersistent& edited) override { action_ = &static_cast<TKxVSDotNetAction&>(edited); }
  void ReadActionData() override;
  void WriteActionData() override;

private:
  TKxVSDotNetAction* action_ = nullptr;
};

} // namespace kx
