// The page of the action that stamps one resource script.
#pragma once

#include "contract/TablePage.h"

namespace kx {

// Offers the property sets of the project, and the properties that can be updated as lines Name=True.
class TKxVersionInfoUpdaterFrame : public TKxTablePage {
public:
  static const TKxPageClass& Class();
  TKxVersionInfoUpdaterFrame();
  TKxFieldOffers Offers(std::u16string_view name, const TKxEvent* stop = nullptr) override;
};

// Called once, when the package registers for a design environment.
void RegisterPropertyPage();

} // namespace kx
