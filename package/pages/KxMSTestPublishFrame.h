// The page of the MSTest action on which the user says where its results are published.
#pragma once

#include "package/mstest/KxMSTestAction.h"
#include "package/pages/PageSupport.h"

namespace kx {

// The texts of the build are kept whatever is chosen.
class TMSTestPublishFrame : public TActionPage<TKxMSTestAction> {
public:
  static const TKxPageClass& Class();
  std::u16string PageName() const override { return u"Publish Results"; }
  void InitFrame() override;

protected:
  void ApplyEnableRules() override;
};

} // namespace kx
