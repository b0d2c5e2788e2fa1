// What the page classes share.
#pragma once

#include "host/Pages.h"

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

} // namespace kx
