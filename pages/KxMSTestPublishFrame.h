// The page of the MSTest action on which the user says where its results are published.
#pragma once

#include "host/Pages.h"
#include "mstest/KxMSTestAction.h"

namespace kx {

// The texts of the build are kept whatever is chosen.
class TMSTestPublishFrame : public TKxPropertyPage {
public:
  static const TKxPageClass& Class();
  std::u16string PageName() const override { return u"Publish Results"; }
  void InitFrame() override;
  void InitPage(TKxPersistent& edited) override { action_ = &static_cast<TKxMSTestAction&>(edited); }
  void ReadActionData() override;
  void WriteActionData() override;

protected:
  void ApplyEnableRules() override;

private:
  TKxMSTestAction* action_ = nullptr;
};

} // namespace kx
