// What the page classes share.
#pragma once

#include "contract/TablePage.h"

#include <memory>
#include <string_view>

namespace kx {

// The one static object of a page class.
template <typename TPage>
const TKxPageClass& PageClassOf(std::u16string_view className) {
  static const TKxPageClass pageClass{
      className, []() -> std::unique_ptr<TKxPropertyPage> { return std::make_unique<TPage>(); }};
  return pageClass;
}

// A page of the actions of one class, which it is given as such.
template <typename TAction>
class TActionPage : public TKxBoundPage {
public:
  void InitPage(TKxPersistent& edited) override {
    TKxBoundPage::InitPage(edited);
    action_ = &static_cast<TAction&>(edited);
  }

protected:
  TAction* action_ = nullptr; // outlives its use by the page
};

} // namespace kx
