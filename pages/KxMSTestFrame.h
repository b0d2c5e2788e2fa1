// The page of the MSTest action on which the user says what to test.
#pragma once

#include "host/Pages.h"
#include "mstest/KxMSTestAction.h"

namespace kx {

class TMSTestFrame : public TKxPropertyPage {
public:
  static const TKxPageClass& Class();
  std::u16string PageName() const override { return u"Settings"; }
  void InitFrame() override;
  void InitPage(TKxPersistent& edited) override { action_ = &static_cast<TKxMSTestAction&>(edited); }
  void ReadActionData() override;
  // A container that was typed but not accepted joins the list first.
  void WriteActionData() override;

protected:
  void ApplyEnableRules() override;
  void Accept(std::u16string_view name) override;

private:
  TKxMSTestAction* action_ = nullptr;
};

} // namespace kx
