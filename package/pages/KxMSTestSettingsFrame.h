// The page of the MSTest action on which the user says how to run it.
#pragma once

#include "package/mstest/KxMSTestAction.h"
#include "package/pages/PageSupport.h"

namespace kx {

class TMSTestSettingsFrame : public TActionPage<TKxMSTestAction> {
public:
  static const TKxPageClass& Class();
  std::u16string PageName() const override { return u"Settings"; }
  void InitFrame() override;
  void InitPage(TKxPersistent& edited) override;
  void ReadActionData() override;
  // The stand-alone MSTest goes with the default version of the options: the one chosen before is forgotten.
  void WriteActionData() override;
};

} // namespace kx
