// The page of the MSTest action on which the user says what to test.
#pragma once

#include "package/mstest/KxMSTestAction.h"
#include "package/pages/PageSupport.h"

#include <set>
#include <string>

namespace kx {

class TMSTestFrame : public TActionPage<TKxMSTestAction> {
public:
  static const TKxPageClass& Class();
  std::u16string PageName() const override { return u"Settings"; }
  void InitFrame() override;
  void ReadActionData() override;
  // A container that was typed but not accepted joins the list first.
  void WriteActionData() override;

protected:
  void ApplyEnableRules() override;
  void Accept(std::u16string_view name) override;

private:
  std::set<std::u16string> bare_; // references that the action has without quotation marks, and keeps so
};

} // namespace kx
